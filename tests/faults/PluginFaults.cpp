#include "assets/Asset.h"
#include "faults/FaultReport.h"
#include "folding/AggregatorWrapper.h"
#include "host/CallModule.h"
#include "host/Host.h"
#include "host/HostOptions.h"
#include "host/IHostView.h"
#include "host/MainThreadExecutor.h"
#include "host/PluginReport.h"
#include "kalvento/CommandLine.h"
#include "modules/ConsumerBase.h"
#include "modules/PluginBase.h"
#include "modules/ProviderBase.h"
#include "platform/CodePage.h"
#include "settings/KalventoPaths.h"
#include "settings/Settings.h"
#include "velo/Log.h"

#include <algorithm>
#include <bit>
#include <chrono>
#include <cstdio>
#include <functional>
#include <iostream>
#include <map>
#include <mutex>
#include <string>
#include <vector>

// Providers that break their promises, loaded beside an honest one: what each did, and what the consumers saw. Whatever
// the others do, the honest one's candles are those of one fold of all its rows, nothing comes behind a stop from
// providers of the kit, each fault is reported with its provider's name, and the host comes to its end.

namespace {

using kalvento::host::CallModule;
using kalvento::host::EPluginStateFailed;
using kalvento::host::EPluginStateRunning;

// How often each name came up in the log.
class NamesInLog {
public:
    NamesInLog()
        : m_sink(VeloTools::Log::Instance().AddSink(
              [this](std::string_view, int, std::string_view a_message) { Take(a_message); }))
    {}
    ~NamesInLog() { VeloTools::Log::Instance().RemoveSink(m_sink); }
    void Await(const std::wstring& a_name)
    {
        const std::lock_guard lock(m_mutex);
        m_lines.try_emplace(CodePage::WideToCp1250(a_name));
    }
    unsigned int Count(const std::wstring& a_name)
    {
        const std::lock_guard lock(m_mutex);
        return m_lines[CodePage::WideToCp1250(a_name)];
    }

private:
    void Take(std::string_view a_message)
    {
        const std::lock_guard lock(m_mutex);
        for (auto& [name, count] : m_lines)
            count += a_message.find(name) != std::string_view::npos ? 1U : 0U;
    }
    std::mutex m_mutex;
    std::map<std::string, unsigned int> m_lines;
    const VeloTools::Log::SinkId m_sink;
};

class View : public kalvento::host::IHostView {
public:
    void AssetsChanged(ProviderBase& a_provider) override
    {
        fromDropped += a_provider.GetName().starts_with(L"faulty_") ? 1U : 0U;
    }
    unsigned int fromDropped = 0;
};

void RunFor(kalvento::host::Host& a_host, std::chrono::milliseconds a_time)
{
    a_host.GetExecutor().RunUntil([] { return false; }, std::chrono::steady_clock::now() + a_time);
}

std::uint64_t ExpectedSum()
{
    History rows = TickMaker::Rows(0, FaultReport::S_rows);
    AggregatorWrapper folder({DSProp(Price), DSProp(Volume)}, ELastRecordTime, FaultReport::S_interval,
                             FaultReport::S_multiplicity);
    return folder.AgregateHistory(rows) ? FaultReport::SumOf(rows) : 0;
}

bool IsOfTheKit(const std::wstring& a_name)
{
    return a_name == L"Honest" || a_name.starts_with(L"Store: ");
}

bool MustBeReported(const std::wstring& a_name)
{
    return a_name.find(L"aises ") != std::wstring::npos || a_name.find(L"spoilt") != std::wstring::npos;
}

class Run {
public:
    explicit Run(unsigned int a_seconds)
    {
        kalvento::host::HostOptions options;
        options.pluginFolder = std::filesystem::path(KALVENTO_FAULT_PLUGINS).wstring();
        options.pluginOptions["fault_consumers"]["Report"] = std::bit_cast<std::uint64_t>(&m_report);
        for (const char* plugin : {"honest_provider", "faulty_stores"})
            options.pluginOptions[plugin]["Seconds"] = a_seconds;
        kalvento::host::Host host(m_view, std::move(options));
        host.Start();
        CheckStart(host);
        m_view.fromDropped = 0; // they ran, until their last module failed
        Subscribe(host);
        Await(host, [this, &host] { return AreCandlesComplete(host); });

        // Some go on delivering: what comes under a number that was stopped is noted down by the consumer.
        for (ConsumerBase* const consumer : host.GetConsumers())
            CallModule(*consumer, L"StopWork", [&] { consumer->StopWork(); });
        RunFor(host, std::chrono::milliseconds(300));
        Expect(m_view.fromDropped == 0, "the view was told of assets of a dropped plug-in");
        host.Stop();
        Expect(!PluginBase::IsAppMediatorValid(), "the mediator is known after the end");
    }

    int Tell()
    {
        std::printf("%-40s %10s %9s %9s %9s\n", "provider", "callbacks", "candles", "breaches", "log lines");
        for (const std::wstring& name : m_providers)
            TellProvider(name);
        for (const std::string& failure : m_failures)
            std::printf("FAILED: %s\n", failure.c_str());
        if (m_failures.empty())
            std::printf("the honest were served, and each fault was reported by name\n");
        return m_failures.empty() ? 0 : 1;
    }

private:
    void Expect(bool a_kept, const std::string& a_failure)
    {
        if (!a_kept)
            m_failures.push_back(a_failure);
    }
    void CheckStart(const kalvento::host::Host& a_host)
    {
        for (const auto& report : a_host.GetReports()) {
            const std::string name = CodePage::WideToUtf8(report.name);
            const bool fails = name == "faulty_create" || name == "faulty_init" || name == "faulty_consumer";
            Expect(report.state == (fails ? EPluginStateFailed : EPluginStateRunning),
                   "plug-in " + name +
                       " is in another state than it should: " + std::to_string(report.state));
            if (report.state != EPluginStateRunning)
                std::printf("plug-in %s, %s: %s\n", name.c_str(), CodePage::WideToUtf8(report.phase).c_str(),
                            CodePage::WideToUtf8(report.reason).c_str());
        }
        Expect(a_host.GetReports().size() == 7, "not all plug-ins are there");
    }
    void Subscribe(kalvento::host::Host& a_host)
    {
        for (ProviderBase* const provider : a_host.GetProviders()) {
            m_providers.push_back(provider->GetName());
            m_log.Await(provider->GetName());
        }
        for (ProviderBase* const provider : a_host.GetProviders())
            CallModule(*provider, L"SwitchConnection", [&] { provider->SwitchConnection(true); });
        Await(a_host, [&] {
            return std::ranges::all_of(a_host.GetProviders(), [](const ProviderBase* provider) {
                return !IsOfTheKit(provider->GetName()) || provider->GetAssets().size() >= 2;
            });
        });
        for (ProviderBase* const provider : a_host.GetProviders())
            CallModule(*provider, L"GetAssets", [&] {
                for (const auto& asset : provider->GetAssets())
                    for (ConsumerBase* const consumer : a_host.GetConsumers())
                        CallModule(*consumer, L"AddInstrument", [&] { consumer->AddInstrument({}, *asset); });
            });
    }
    bool AreCandlesComplete(const kalvento::host::Host& a_host)
    {
        Settings ignored;
        for (const ConsumerBase* const consumer : a_host.GetConsumers())
            consumer->SerialiseState(ignored);
        const std::lock_guard lock(m_report.mutex);
        return std::ranges::all_of(m_report.seen, [&](const auto& seen) {
            return !IsOfTheKit(seen.first.first) || seen.second.sum == m_expected;
        });
    }
    // Or for a minute.
    static void Await(kalvento::host::Host& a_host, const std::function<bool()>& a_done)
    {
        for (int round = 0; round < 600 && !a_done(); ++round)
            RunFor(a_host, std::chrono::milliseconds(100));
    }
    void TellProvider(const std::wstring& a_name)
    {
        const std::string name = CodePage::WideToUtf8(a_name);
        FaultReport::Seen all;
        unsigned int instruments = 0;
        for (const auto& [key, seen] : m_report.seen) {
            if (key.first != a_name)
                continue;
            ++instruments;
            all.callbacks += seen.callbacks;
            all.candles += seen.candles;
            all.breaches.insert(all.breaches.end(), seen.breaches.begin(), seen.breaches.end());
            if (IsOfTheKit(a_name))
                Expect(seen.sum == m_expected,
                       name + ", " + key.second + ": the candles are not those of one fold");
        }
        const unsigned int lines = m_log.Count(a_name);
        std::printf("%-40s %10llu %9llu %9zu %9u\n", name.c_str(),
                    static_cast<unsigned long long>(all.callbacks),
                    static_cast<unsigned long long>(all.candles), all.breaches.size(), lines);
        if (MustBeReported(a_name))
            Expect(lines > 0, name + ": the log doesn't name it");
        if (!IsOfTheKit(a_name))
            return;
        Expect(instruments == 2, name + ": not both instruments were served");
        Expect(all.breaches.empty(), name + ": " + (all.breaches.empty() ? "" : all.breaches.front()));
    }

    const std::uint64_t m_expected = ExpectedSum();
    FaultReport m_report;
    NamesInLog m_log;
    View m_view;
    std::vector<std::wstring> m_providers;
    std::vector<std::string> m_failures;
};

} // namespace

int main(int a_count, char** a_arguments)
{
    unsigned int seconds = 3;
    kalvento::tool::CommandLine line(
        "Loads providers that break their promises beside an honest one, and tells what came of it.",
        "plugin_faults");
    line.GetProgram().AddOption("--seconds", seconds, "How long rows come (default: 3)").Between(1U, 3600U);
    const auto outcome = line.Parse({a_arguments + 1, a_arguments + a_count}, std::cout, std::cerr);
    if (outcome != kalvento::tool::CommandLine::EParsed)
        return outcome == kalvento::tool::CommandLine::EToldUser ? 0 : 2;

    KalventoPaths::Initialize(L"Kalvento");
    // Thousands of lines, all of them meant; the table is what there is to read.
    std::string folder = (std::filesystem::temp_directory_path() / "kalvento-faults-XXXXXX").string();
    if (mkdtemp(folder.data()) != nullptr)
        VeloTools::Log::Instance().SetLogFolder(folder);
    const int result = Run(seconds).Tell();
    VeloTools::Log::Instance().SetLogFolder({});
    std::error_code ignored;
    if (result == 0)
        std::filesystem::remove_all(folder, ignored);
    else
        std::printf("log: %s\n", folder.c_str());
    return result;
}
