#include "assets/Asset.h"
#include "faults/FaultReport.h"
#include "folding/FoldingTestTools.h"
#include "host/CallModule.h"
#include "host/Host.h"
#include "host/HostOptions.h"
#include "host/IHostView.h"
#include "host/MainThreadExecutor.h"
#include "host/PluginReport.h"
#include "modules/ConsumerBase.h"
#include "modules/PluginBase.h"
#include "modules/ProviderBase.h"
#include "platform/CodePage.h"
#include "settings/KalventoPaths.h"
#include "settings/Settings.h"
#include "support/LogWatch.h"
#include "support/TemporaryFolder.h"

#include <unistd.h>

// Providers that break their promises, loaded beside an honest one. Whatever the others do, the honest one's candles are
// those of one fold of all its rows, nothing comes behind a stop from providers of the kit, each fault is reported with its
// provider's name, and the host comes to its end.

namespace {

using kalvento::host::CallModule;

class View : public kalvento::host::IHostView {
public:
    void AssetsChanged(ProviderBase& a_provider) override
    {
        fromDropped += a_provider.GetName().starts_with(L"faulty_") ? 1U : 0U;
    }
    unsigned int fromDropped = 0;
};

bool IsOfTheKit(const std::wstring& a_name)
{
    return a_name == L"Honest" || a_name.starts_with(L"Store: ");
}

class PluginFaultsTest : public testing::Test {
protected:
    PluginFaultsTest()
    {
        KalventoPaths::Initialize(L"Kalvento");
        VeloTools::Log::Instance().SetLogFolder(m_logFolder.GetPath().string());
        kalvento::host::HostOptions options;
        options.pluginFolder = std::filesystem::path(KALVENTO_FAULT_PLUGINS).wstring();
        options.pluginOptions["fault_consumers"]["Process"] = ::getpid();
        options.memoryFolder = m_logFolder.GetPath().wstring();
        options.pluginOptions["fault_consumers"]["Report"] = std::bit_cast<std::uint64_t>(&m_report);
        m_host.emplace(m_view, std::move(options));
        m_host->Start();
    }
    ~PluginFaultsTest() override
    {
        m_host.reset();
        VeloTools::Log::Instance().SetLogFolder({});
    }
    void RunFor(std::chrono::milliseconds a_time)
    {
        m_host->GetExecutor().RunUntil([] { return false; }, std::chrono::steady_clock::now() + a_time);
    }
    // Or for a minute.
    void Await(const std::function<bool()>& a_done)
    {
        for (int round = 0; round < 600 && !a_done(); ++round)
            RunFor(std::chrono::milliseconds(100));
    }
    void Subscribe()
    {
        for (ProviderBase* const provider : m_host->GetProviders())
            CallModule(*provider, L"SwitchConnection", [&] { provider->SwitchConnection(true); });
        Await([&] {
            return std::ranges::all_of(m_host->GetProviders(), [](const ProviderBase* provider) {
                return !IsOfTheKit(provider->GetName()) || provider->GetAssets().size() >= 2;
            });
        });
        for (ProviderBase* const provider : m_host->GetProviders())
            CallModule(*provider, L"GetAssets", [&] {
                for (const auto& asset : provider->GetAssets())
                    for (ConsumerBase* const consumer : m_host->GetConsumers())
                        CallModule(*consumer, L"AddInstrument", [&] { consumer->AddInstrument({}, *asset); });
            });
    }
    bool AreCandlesComplete(std::size_t a_expected)
    {
        Settings ignored;
        for (const ConsumerBase* const consumer : m_host->GetConsumers())
            consumer->SerialiseState(ignored);
        const std::lock_guard lock(m_report.mutex);
        return std::ranges::all_of(m_report.seen, [&](const auto& seen) {
            return !IsOfTheKit(seen.first.first) || seen.second.sum == a_expected;
        });
    }

    const TemporaryFolder m_logFolder;
    FaultReport m_report;
    View m_view;
    std::optional<kalvento::host::Host> m_host;
};

} // namespace

TEST_F(PluginFaultsTest, TheHonestAreServedAndEachFaultIsReportedByName)
{
    ASSERT_EQ(m_host->GetReports().size(), 7U);
    for (const auto& report : m_host->GetReports()) {
        const bool fails = report.name.starts_with(L"faulty_") && report.name != L"faulty_stores" &&
                           report.name != L"faulty_providers";
        EXPECT_EQ(report.state,
                  fails ? kalvento::host::EPluginStateFailed : kalvento::host::EPluginStateRunning)
            << CodePage::WideToUtf8(report.name + L": " + report.reason);
    }
    m_view.fromDropped = 0; // they ran, until their last module failed
    const LogWatch log;     // thousands of lines, all of them meant
    std::vector<std::wstring> names;
    for (const ProviderBase* const provider : m_host->GetProviders())
        names.push_back(provider->GetName());
    const std::size_t expected = FaultReport::SumOf(
        kalvento::tests::Folded(TickMaker::Rows(0, FaultReport::S_rows), {DSProp(Price), DSProp(Volume)},
                                {FaultReport::S_interval, FaultReport::S_multiplicity}));
    Subscribe();
    Await([&] { return AreCandlesComplete(expected); });

    // Some go on delivering: what comes under a number that was stopped is noted down by the consumer.
    for (ConsumerBase* const consumer : m_host->GetConsumers())
        CallModule(*consumer, L"StopWork", [&] { consumer->StopWork(); });
    RunFor(std::chrono::milliseconds(300));
    EXPECT_EQ(m_view.fromDropped, 0U) << "the view was told of assets of a dropped plug-in";
    m_host->Stop();
    EXPECT_FALSE(PluginBase::IsAppMediatorValid()) << "the mediator is known after the end";

    std::map<std::wstring, unsigned int> served;
    for (const auto& [key, seen] : m_report.seen) {
        SCOPED_TRACE(CodePage::WideToUtf8(key.first) + ", " + key.second);
        if (!IsOfTheKit(key.first))
            continue;
        ++served[key.first];
        EXPECT_EQ(seen.sum, expected) << "the candles are not those of one fold";
        EXPECT_EQ(seen.breaches, std::vector<std::string>());
    }
    for (const std::wstring& name : names) {
        SCOPED_TRACE(CodePage::WideToUtf8(name));
        EXPECT_EQ(served[name], IsOfTheKit(name) ? 2U : 0U);
        if (name.find(L"aises ") != std::wstring::npos || name.find(L"spoilt") != std::wstring::npos) {
            EXPECT_TRUE(log.Has(CodePage::WideToCp1250(name))) << "not in the log";
        }
    }
}
