// Two consumers of everything: one that checks the order of what comes and builds candles, and the one of the terminal, which
// prints into a text.
#include "assets/Asset.h"
#include "console_consumer/ConsoleConsumer.h"
#include "contract_kit/CheckingConsumer.h"
#include "faults/FaultReport.h"
#include "folding/SubscriptionCandles.h"
#include "modules/ConsumerBase.h"
#include "modules/IModuleRegistry.h"
#include "modules/PluginDescription.h"
#include "modules/ProviderBase.h"
#include "modules/Subscribe.h"
#include "platform/CodePage.h"
#include "settings/Settings.h"
#include "velo/Log.h"
#include "velo/LogAllExceptions.h"

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <sstream>
#include <string>
#include <utility>

namespace {

class FaultConsumer : public ConsumerBase {
public:
    explicit FaultConsumer(FaultReport& a_report)
        : ConsumerBase(EGenericModuleNone, L"Checking", {}), m_report(a_report)
    {}
    ~FaultConsumer() override { Report(); }

    unsigned int AddInstrument(HWND /*a_window*/, const Asset& a_asset) override
    {
        const auto number = static_cast<unsigned int>(m_subscriptions.size() + 1);
        RequestParams request(ParamsBase::S_kindDataHistory | ParamsBase::S_kindDataSynchro |
                                  ParamsBase::S_kindDataRecord | ParamsBase::S_kindDataCS,
                              FaultReport::S_interval, FaultReport::S_multiplicity, NDateTime(1990, 1, 1),
                              NDateTime(2099, 12, 31), true);
        {
            const std::lock_guard lock(m_mutex);
            m_subscriptions.try_emplace(number, a_asset);
        }
        m_check.Open(number, request);
        bool started = false;
        Guard(a_asset, [&] {
            started = a_asset.GetProvider()->StartSubscription({this, number, a_asset, request});
        });
        return started ? number : 0;
    }
    void OnStopWork() override
    {
        for (const auto& [number, subscription] : m_subscriptions) {
            const Asset& asset = subscription.asset;
            Guard(asset, [&, number = number] {
                asset.GetProvider()->StopSubscription({this, number, asset, std::nullopt});
            });
            m_check.Close(number);
        }
    }
    // What has come so far. Any thread.
    void SerialiseState(Settings& /*a_settings*/) const override { Report(); }
    HICON GetTitleBarIconHandle() override { return nullptr; }

    void SymbolDeleted(unsigned int a_number, const std::string& a_isin) override
    {
        Count(a_number);
        m_check.SymbolDeleted(a_number, a_isin);
    }
    void ProcessOperations(unsigned int a_number, const HistoryOperations& a_operations) override
    {
        Count(a_number);
        m_check.ProcessOperations(a_number, a_operations);
    }
    void ProcessHistory(unsigned int a_number, History&& a_history) override
    {
        Count(a_number, [&](SubscriptionCandles& a_model) { a_model.AddHistory(History(a_history)); });
        m_check.ProcessHistory(a_number, std::move(a_history));
    }
    void ProcessHistoryEnd(unsigned int a_number) override
    {
        Count(a_number, [](SubscriptionCandles& a_model) { a_model.HistoryEnd(); });
        m_check.ProcessHistoryEnd(a_number);
    }
    void ProcessSynchronization(unsigned int a_number, Synchronization&& a_block) override
    {
        Count(a_number,
              [&](SubscriptionCandles& a_model) { a_model.SetSynchronization(Synchronization(a_block)); });
        m_check.ProcessSynchronization(a_number, std::move(a_block));
    }
    void ProcessRecord(unsigned int a_number, const Record& a_record) override
    {
        Count(a_number, [&](SubscriptionCandles& a_model) { a_model.AddRecord(a_record); });
        m_check.ProcessRecord(a_number, a_record);
    }
    void ProcessCurrentState(unsigned int a_number, const CurrentState& a_state) override
    {
        Count(a_number);
        m_check.ProcessCurrentState(a_number, a_state);
    }
    void ProcessOffers(unsigned int a_number, const Offers& a_offers) override
    {
        Count(a_number);
        m_check.ProcessOffers(a_number, a_offers);
    }
    void ProcessLatestRecords(unsigned int a_number, const LatestRecords& a_records) override
    {
        Count(a_number);
        m_check.ProcessLatestRecords(a_number, a_records);
    }
    void RequestRefused(unsigned int a_number, std::wstring_view a_reason) override
    {
        Count(a_number);
        m_check.RequestRefused(a_number, a_reason);
    }
    void RequestEnded(unsigned int a_number) override
    {
        Count(a_number);
        m_check.RequestEnded(a_number);
    }

private:
    struct Subscription {
        explicit Subscription(const Asset& a_asset)
            : asset(a_asset), provider(a_asset.GetProvider()->GetName())
        {}
        Asset asset;
        std::wstring provider;
        std::uint64_t callbacks = 0;
        SubscriptionCandles model{
            {DSProp(Price), DSProp(Volume)}, FaultReport::S_interval, FaultReport::S_multiplicity};
    };

    static void Guard(const Asset& a_asset, const std::function<void()>& a_call)
    {
        try {
            a_call();
        } catch (...) {
            VeloTools::Log::Instance().Write("FaultConsumer::Guard", __LINE__,
                                             CodePage::WideToCp1250(a_asset.GetProvider()->GetName()));
            LogAllExceptions("FaultConsumer::Guard", __LINE__);
        }
    }
    void Count(unsigned int a_number, const std::function<void(SubscriptionCandles&)>& a_fold = {})
    {
        const std::lock_guard lock(m_mutex);
        const auto found = m_subscriptions.find(a_number);
        if (found == m_subscriptions.end())
            return;
        ++found->second.callbacks;
        if (a_fold)
            a_fold(found->second.model);
    }
    void Report() const
    {
        const std::vector<std::string> breaches = m_check.Violations();
        const std::lock_guard lock(m_mutex);
        const std::lock_guard reporting(m_report.mutex);
        for (const auto& [number, subscription] : m_subscriptions) {
            FaultReport::Seen& seen = m_report.seen[{subscription.provider, subscription.asset.GetIsin()}];
            seen.callbacks = subscription.callbacks;
            seen.candles = subscription.model.GetCount();
            seen.sum = FaultReport::SumOf(subscription.model.GetLastCandles(seen.candles));
            seen.breaches.clear();
            for (const std::string& breach : breaches)
                if (breach.starts_with(std::to_string(number) + ':'))
                    seen.breaches.push_back(breach);
        }
    }

    FaultReport& m_report;
    mutable CheckingConsumer m_check;
    mutable std::mutex m_mutex;
    std::map<unsigned int, Subscription> m_subscriptions; // grows on the main thread only
};

class PrintingConsole : private std::ostringstream, public ConsoleConsumer {
public:
    explicit PrintingConsole(const kalvento::host::ScreenOptions& a_options)
        : ConsoleConsumer(a_options, static_cast<std::ostringstream&>(*this))
    {}
};

void CreateModules(IModuleRegistry& a_registry, const Settings& a_options)
{
    const std::uint64_t report = a_options["Report"];
    a_registry.AddConsumer(std::make_unique<FaultConsumer>(*std::bit_cast<FaultReport*>(report)));
    kalvento::host::ScreenOptions console;
    console.plain = console.book = console.trades = true;
    a_registry.AddConsumer(std::make_unique<PrintingConsole>(console));
}

} // namespace

KALVENTO_PLUGIN(FAULT_PLUGIN, "1.0", &CreateModules)
