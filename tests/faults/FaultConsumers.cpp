// Two consumers of everything: one that checks the order of what comes and builds candles, and the one of the terminal,
// which prints into a text.
#include "assets/Asset.h"
#include "console_consumer/ConsoleConsumer.h"
#include "faults/FaultReport.h"
#include "modules/IModuleRegistry.h"
#include "modules/PluginDescription.h"
#include "modules/ProviderBase.h"
#include "modules/Subscribe.h"
#include "platform/CodePage.h"
#include "settings/Settings.h"
#include "support/CandlesConsumer.h"
#include "support/IdleConsumer.h"
#include "support/Testing.h"
#include "velo/Log.h"
#include "velo/LogAllExceptions.h"

#include <unistd.h>

namespace {

class FaultConsumer : public IdleConsumer {
public:
    explicit FaultConsumer(FaultReport& a_report) : IdleConsumer(L"Checking"), m_report(a_report) {}
    ~FaultConsumer() override { Report(); }

    unsigned int AddInstrument(HWND /*a_window*/, const Asset& a_asset) override
    {
        const auto number = static_cast<unsigned int>(m_subscriptions.size() + 1);
        RequestParams request(ParamsBase::S_kindDataHistory | ParamsBase::S_kindDataSynchro |
                                  ParamsBase::S_kindDataRecord | ParamsBase::S_kindDataCS,
                              FaultReport::S_interval, FaultReport::S_multiplicity, NDateTime(1990, 1, 1),
                              NDateTime(2099, 12, 31), true);
        Subscription& subscription = m_subscriptions.try_emplace(number, a_asset).first->second;
        subscription.consumer.Open(number, request);
        bool started = false;
        Guard(a_asset, [&] {
            started =
                a_asset.GetProvider()->StartSubscription({&subscription.consumer, number, a_asset, request});
        });
        return started ? number : 0;
    }
    void OnStopWork() override
    {
        for (auto& [number, subscription] : m_subscriptions) {
            const Asset& asset = subscription.asset;
            Guard(asset, [&, number = number, consumer = &subscription.consumer] {
                asset.GetProvider()->StopSubscription({consumer, number, asset, std::nullopt});
            });
            subscription.consumer.Close(number);
        }
    }
    // What has come so far.
    void SerialiseState(Settings& /*a_settings*/) const override { Report(); }

private:
    struct Subscription {
        explicit Subscription(const Asset& a_asset)
            : asset(a_asset), provider(a_asset.GetProvider()->GetName())
        {}
        Asset asset;
        std::wstring provider;
        CandlesConsumer consumer{{DSProp(Price), DSProp(Volume)},
                                 {FaultReport::S_interval, FaultReport::S_multiplicity}};
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
    void Report() const
    {
        const std::lock_guard reporting(m_report.mutex);
        for (auto& [number, subscription] : m_subscriptions)
            m_report.seen[{subscription.provider, subscription.asset.GetIsin()}] = {
                FaultReport::SumOf(subscription.consumer.Candles()), subscription.consumer.Violations()};
    }

    FaultReport& m_report;
    mutable std::map<unsigned int, Subscription>
        m_subscriptions; // main thread; its nodes stay in their places
};

class PrintingConsole : private std::ostringstream, public ConsoleConsumer {
public:
    explicit PrintingConsole(const kalvento::host::ScreenOptions& a_options)
        : ConsoleConsumer(a_options, static_cast<std::ostringstream&>(*this))
    {}
};

void CreateModules(IModuleRegistry& a_registry, const Settings& a_options)
{
    // In a trial the program's report is out of reach.
    static FaultReport S_unread;
    const std::uint64_t report = a_options["Report"];
    const bool isHere = static_cast<int>(a_options["Process"]) == ::getpid();
    a_registry.AddConsumer(
        std::make_unique<FaultConsumer>(isHere ? *std::bit_cast<FaultReport*>(report) : S_unread));
    kalvento::host::ScreenOptions console;
    console.plain = console.book = console.trades = true;
    a_registry.AddConsumer(std::make_unique<PrintingConsole>(console));
}

} // namespace

KALVENTO_PLUGIN(FAULT_PLUGIN, "1.0", &CreateModules)
