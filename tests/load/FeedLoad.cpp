#include "assets/Asset.h"
#include "host/Host.h"
#include "host/HostOptions.h"
#include "host/IHostView.h"
#include "host/MainThreadExecutor.h"
#include "host/PluginReport.h"
#include "kalvento/CommandLine.h"
#include "modules/ConsumerBase.h"
#include "modules/ProviderBase.h"
#include "settings/KalventoPaths.h"
#include "settings/Settings.h"
#include "support/Testing.h"

#include <iostream>
#include <unistd.h>

// A whole market through a provider's plug-in to three consumers, all of them loaded as the terminal loads them: how
// long a row takes from the store to the consumer's candle, whether each came once, and whether memory stays where it
// was.

namespace {

double ResidentMegabytes()
{
    std::uint64_t size = 0;
    std::uint64_t resident = 0;
    std::ifstream("/proc/self/statm") >> size >> resident;
    return static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1e6;
}

void RunFor(kalvento::host::Host& a_host, std::chrono::milliseconds a_time)
{
    a_host.GetExecutor().RunUntil([] { return false; }, std::chrono::steady_clock::now() + a_time);
}

// Serves the main thread until it is so, or for half a minute.
void Await(kalvento::host::Host& a_host, const std::function<bool()>& a_done)
{
    for (int round = 0; round < 600 && !a_done(); ++round)
        RunFor(a_host, std::chrono::milliseconds(50));
}

std::uint64_t Measured(const ConsumerBase& a_consumer, const char* a_key)
{
    Settings measured;
    a_consumer.SerialiseState(measured);
    return static_cast<const Settings&>(measured)[a_key];
}

std::string Utf8(const std::wstring& a_text)
{
    return std::filesystem::path(a_text).string();
}

} // namespace

int main(int a_count, char** a_arguments)
{
    unsigned int instruments = 500;
    unsigned int rate = 50000;
    unsigned int seconds = 60;
    kalvento::tool::CommandLine line(
        "Sends a market's rows through the host to three consumers and tells how long they took.",
        "feed_load");
    line.GetProgram()
        .AddOption("--instruments", instruments, "Instruments (default: 500)")
        .Between(1U, 100000U);
    line.GetProgram()
        .AddOption("--rate", rate, "Rows a second, of all instruments together (default: 50000)")
        .Between(1U, 10000000U);
    line.GetProgram().AddOption("--seconds", seconds, "How long (default: 60)").Between(1U, 3600U);
    const auto outcome = line.Parse({a_arguments + 1, a_arguments + a_count}, std::cout, std::cerr);
    if (outcome != kalvento::tool::CommandLine::EParsed)
        return outcome == kalvento::tool::CommandLine::EToldUser ? 0 : 2;

    KalventoPaths::Initialize(L"Kalvento");
    kalvento::host::HostOptions options;
    options.pluginFolder = std::filesystem::path(KALVENTO_LOAD_PLUGINS).wstring();
    Settings& market = options.pluginOptions["load_provider"];
    market["Instruments"] = instruments;
    market["Rate"] = rate;
    market["Seconds"] = seconds;
    class View : public kalvento::host::IHostView {
    } view;
    kalvento::host::Host host(view, std::move(options));
    host.Start();
    for (const auto& report : host.GetReports())
        if (report.state != kalvento::host::EPluginStateRunning)
            std::fprintf(stderr, "%s: %s\n", Utf8(report.name).c_str(), Utf8(report.reason).c_str());
    if (host.GetProviders().size() != 1 || host.GetConsumers().size() != 3)
        return 1;
    ProviderBase& provider = *host.GetProviders().front();
    provider.SwitchConnection(true);
    Await(host, [&] { return provider.GetAssets().size() == instruments; });
    for (ConsumerBase* consumer : host.GetConsumers())
        for (const auto& asset : provider.GetAssets())
            if (consumer->AddInstrument(nullptr, *asset) == 0)
                return 1;
    const auto all = [&](const char* a_key, std::uint64_t a_least) {
        return std::ranges::all_of(host.GetConsumers(), [&](const ConsumerBase* a_consumer) {
            return Measured(*a_consumer, a_key) >= a_least;
        });
    };
    Await(host, [&] { return all("Synchronized", instruments); });
    provider.SetAuthorizationToken("begin");

    const unsigned int warmUp = std::min(seconds, 5U);
    RunFor(host, std::chrono::seconds(warmUp));
    const double before = ResidentMegabytes();
    RunFor(host, std::chrono::seconds(seconds - warmUp));
    const std::uint64_t total = std::uint64_t(rate) / 2 * seconds * 2;
    Await(host, [&] { return all("Rows", total); });
    const double after = ResidentMegabytes();

    // All rows are told; consumers end their subscriptions, and say what they measured.
    bool sound = true;
    std::printf("%u instruments, %u rows a second, %u seconds\n", instruments, rate, seconds);
    std::printf("%-26s %12s %10s %10s %10s %8s\n", "consumer", "rows", "p50 us", "p99 us", "max us",
                "faults");
    for (ConsumerBase* consumer : host.GetConsumers()) {
        consumer->StopWork();
        Settings measured;
        consumer->SerialiseState(measured);
        const Settings& told = measured;
        const std::uint64_t rows = told["Rows"];
        const std::uint64_t faults = told["Faults"];
        const std::uint64_t synchronized = told["Synchronized"];
        const double half = told["Half"];
        const double most = told["Most"];
        const double longest = told["All"];
        std::printf("%-26s %12llu %10.1f %10.1f %10.1f %8llu\n", Utf8(consumer->GetName()).c_str(),
                    static_cast<unsigned long long>(rows), half / 1e3, most / 1e3, longest / 1e3,
                    static_cast<unsigned long long>(faults));
        sound = sound && faults == 0 && rows == total && synchronized == instruments;
    }
    std::printf("memory: %.1f MB after %u seconds, %.1f MB at the end\n", before, warmUp, after);
    std::printf("%s\n", sound ? "each row came once" : "ROWS ARE MISSING OR CAME TWICE");
    host.Stop();
    return sound ? 0 : 1;
}
