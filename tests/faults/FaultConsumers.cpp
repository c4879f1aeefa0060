// Two consumers of everything: one that checks the order of what comes and builds candles, and the one of the terminal,
// which prints into a text.
#include "assets/Asset.h"
#include "console_consumer/ConsoleConsumer.h"
#include "contract_kit/CheckingConsumer.h"
#include "faults/FaultReport.h"
#include "folding/SubscriptionCandles.h"
#include "modules/IModuleRegistry.h"
#include "modules/PluginDescription.h"
#include "modules/ProviderBase.h"
#include "modules/Subscribe.h"
#include "platform/CodePage.h"
#include "settings/Settings.h"
#include "support/IdleConsumer.h"
#include "support/Testing.h"
#include "velo/Log.h"
#include "velo/LogAllExceptions.h"

namespace {

/// Checks the order of what comes under each number, and builds candles of it.
class FoldingConsumer : public CheckingConsumer {
public:
    struct Subscription {
        explicit Subscription(const Asset& a_asset)
            : asset(a_asset), provider(a_asset.GetProvider()->GetName())
        {}
        Asset asset;
        std::wstring provider;
        SubscriptionCandles model{
            {DSProp(Price), DSProp(Volume)}, FaultReport::S_interval, FaultReport::S_multiplicity};
    };

    void ProcessHistory(unsigned int a_number, History&& a_history) override
    {
        Fold(a_number, [&](SubscriptionCandles& a_model) { a_model.AddHistory(History(a_history)); });
        CheckingConsumer::ProcessHistory(a_number, std::move(a_history));
    }
    void ProcessHistoryEnd(unsigned int a_number) override
    {
        Fold(a_number, [](SubscriptionCandles& a_model) { a_model.HistoryEnd(); });
        CheckingConsumer::ProcessHistoryEnd(a_number);
    }
    void ProcessSynchronization(unsigned int a_number, Synchronization&& a_block) override
    {
        Fold(a_number,
             [&](SubscriptionCandles& a_model) { a_model.SetSynchronization(Synchronization(a_block)); });
        CheckingConsumer::ProcessSynchronization(a_number, std::move(a_block));
    }
    void ProcessRecord(unsigned int a_number, const Record& a_record) override
    {
        Fold(a_number, [&](SubscriptionCandles& a_model) { a_model.AddRecord(a_record); });
        CheckingConsumer::ProcessRecord(a_number, a_record);
    }

    std::mutex foldMutex;
    std::map<unsigned int, Subscription> subscriptions; // grows on the main thread only, under foldMutex

private:
    void Fold(unsigned int a_number, const std::function<void(SubscriptionCandles&)>& a_fold)
    {
        const std::lock_guard lock(foldMutex);
        if (const auto found = subscriptions.find(a_number); found != subscriptions.end())
            a_fold(found->second.model);
    }
};

class FaultConsumer : public IdleConsumer {
public:
    explicit FaultConsumer(FaultReport& a_report) : IdleConsumer(L"Checking"), m_report(a_report) {}
    ~FaultConsumer() override { Report(); }

    unsigned int AddInstrument(HWND /*a_window*/, const Asset& a_asset) override
    {
        const auto number = static_cast<unsigned int>(m_consumer.subscriptions.size() + 1);
        RequestParams request(ParamsBase::S_kindDataHistory | ParamsBase::S_kindDataSynchro |
                                  ParamsBase::S_kindDataRecord | ParamsBase::S_kindDataCS,
                              FaultReport::S_interval, FaultReport::S_multiplicity, NDateTime(1990, 1, 1),
                              NDateTime(2099, 12, 31), true);
        {
            const std::lock_guard lock(m_consumer.foldMutex);
            m_consumer.subscriptions.try_emplace(number, a_asset);
        }
        m_consumer.Open(number, request);
        bool started = false;
        Guard(a_asset, [&] {
            started = a_asset.GetProvider()->StartSubscription({&m_consumer, number, a_asset, request});
        });
        return started ? number : 0;
    }
    void OnStopWork() override
    {
        for (const auto& [number, subscription] : m_consumer.subscriptions) {
            const Asset& asset = subscription.asset;
            Guard(asset, [&, number = number] {
                asset.GetProvider()->StopSubscription({&m_consumer, number, asset, std::nullopt});
            });
            m_consumer.Close(number);
        }
    }
    // What has come so far. Any thread.
    void SerialiseState(Settings& /*a_settings*/) const override { Report(); }

private:
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
    void Report() const
    {
        const std::vector<std::string> breaches = m_consumer.Violations();
        const std::lock_guard lock(m_consumer.foldMutex);
        const std::lock_guard reporting(m_report.mutex);
        for (const auto& [number, subscription] : m_consumer.subscriptions) {
            FaultReport::Seen& seen = m_report.seen[{subscription.provider, subscription.asset.GetIsin()}];
            seen.sum = FaultReport::SumOf(subscription.model.GetLastCandles(subscription.model.GetCount()));
            seen.breaches.clear();
            for (const std::string& breach : breaches)
                if (breach.starts_with(std::to_string(number) + ':'))
                    seen.breaches.push_back(breach);
        }
    }

    FaultReport& m_report;
    mutable FoldingConsumer m_consumer;
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
