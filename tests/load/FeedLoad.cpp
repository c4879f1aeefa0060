#include "assets/Asset.h"
#include "host/Host.h"
#include "host/HostOptions.h"
#include "host/IHostView.h"
#include "host/MainThreadExecutor.h"
#include "host/PluginReport.h"
#include "kalvento/CommandLine.h"
#include "modules/ConsumerBase.h"
#include "modules/ProviderBase.h"
#include "platform/CodePage.h"
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

struct Load {
    unsigned int instruments = 500;
    unsigned int rate = 50000;
    unsigned int seconds = 60;

    std::uint64_t CountRows() const { return std::uint64_t(rate) / 2 * seconds * 2; } // made by two threads
};

// The exit code where there is nothing to run.
std::optional<int> ReadOptions(int a_count, char** a_arguments, Load& a_load)
{
    kalvento::tool::CommandLine line(
        "Sends a market's rows through the host to three consumers and tells how long they took.",
        "feed_load");
    auto program = line.GetProgram();
    program.AddOption("--instruments", a_load.instruments, "Instruments (default: 500)").Between(1U, 100000U);
    program.AddOption("--rate", a_load.rate, "Rows a second, of all instruments together (default: 50000)")
        .Between(1U, 10000000U);
    program.AddOption("--seconds", a_load.seconds, "How long (default: 60)").Between(1U, 3600U);
    switch (line.Parse({a_arguments + 1, a_arguments + a_count}, std::cout, std::cerr)) {
    case kalvento::tool::CommandLine::EParsed:
        return std::nullopt;
    case kalvento::tool::CommandLine::EToldUser:
        return 0;
    default:
        return 2;
    }
}

// Whether the provider and the three consumers run; what doesn't is named.
bool StartModules(kalvento::host::Host& a_host)
{
    a_host.Start();
    for (const auto& report : a_host.GetReports())
        if (report.state != kalvento::host::EPluginStateRunning)
            std::fprintf(stderr, "%s: %s\n", CodePage::WideToUtf8(report.name).c_str(),
                         CodePage::WideToUtf8(report.reason).c_str());
    return a_host.GetProviders().size() == 1 && a_host.GetConsumers().size() == 3;
}

// Whether all consumers have got so much.
bool HaveAll(const kalvento::host::Host& a_host, const char* a_key, std::uint64_t a_least)
{
    return std::ranges::all_of(a_host.GetConsumers(), [&](const ConsumerBase* a_consumer) {
        Settings measured;
        a_consumer->SerialiseState(measured);
        return static_cast<std::uint64_t>(std::as_const(measured)[a_key]) >= a_least;
    });
}

bool SubscribeAll(kalvento::host::Host& a_host, ProviderBase& a_provider, std::size_t a_instruments)
{
    a_provider.SwitchConnection(true);
    Await(a_host, [&] { return a_provider.GetAssets().size() == a_instruments; });
    for (ConsumerBase* consumer : a_host.GetConsumers())
        for (const auto& asset : a_provider.GetAssets())
            if (consumer->AddInstrument(nullptr, *asset) == 0)
                return false;
    Await(a_host, [&] { return HaveAll(a_host, "Synchronized", a_instruments); });
    return true;
}

// Ends a consumer's subscriptions and says what it measured. Whether each row came once.
bool TellOf(ConsumerBase& a_consumer, const Load& a_load)
{
    a_consumer.StopWork();
    Settings measured;
    a_consumer.SerialiseState(measured);
    const Settings& told = measured;
    const auto number = [&](const char* a_key) { return static_cast<unsigned long long>(told[a_key]); };
    const auto micros = [&](const char* a_key) { return static_cast<double>(told[a_key]) / 1e3; };
    std::printf("%-26s %12llu %10.1f %10.1f %10.1f %8llu\n",
                CodePage::WideToUtf8(a_consumer.GetName()).c_str(), number("Rows"), micros("Half"),
                micros("Most"), micros("All"), number("Faults"));
    return number("Faults") == 0 && number("Rows") == a_load.CountRows() &&
           number("Synchronized") == a_load.instruments;
}

} // namespace

int main(int a_count, char** a_arguments)
{
    Load load;
    if (const auto over = ReadOptions(a_count, a_arguments, load))
        return *over;
    KalventoPaths::Initialize(L"Kalvento");
    kalvento::host::HostOptions options;
    options.pluginFolder = std::filesystem::path(KALVENTO_LOAD_PLUGINS).wstring();
    Settings& market = options.pluginOptions["load_provider"];
    market["Instruments"] = load.instruments;
    market["Rate"] = load.rate;
    market["Seconds"] = load.seconds;
    class View : public kalvento::host::IHostView {
    } view;
    kalvento::host::Host host(view, std::move(options));
    if (!StartModules(host) || !SubscribeAll(host, *host.GetProviders().front(), load.instruments))
        return 1;

    host.GetProviders().front()->SetAuthorizationToken("begin");
    const unsigned int warmUp = std::min(load.seconds, 5U);
    RunFor(host, std::chrono::seconds(warmUp));
    const double before = ResidentMegabytes();
    RunFor(host, std::chrono::seconds(load.seconds - warmUp));
    Await(host, [&] { return HaveAll(host, "Rows", load.CountRows()); });
    const double after = ResidentMegabytes();

    std::printf("%u instruments, %u rows a second, %u seconds\n", load.instruments, load.rate, load.seconds);
    std::printf("%-26s %12s %10s %10s %10s %8s\n", "consumer", "rows", "p50 us", "p99 us", "max us",
                "faults");
    bool sound = true;
    for (ConsumerBase* consumer : host.GetConsumers())
        sound = TellOf(*consumer, load) && sound;
    std::printf("memory: %.1f MB after %u seconds, %.1f MB at the end\n", before, warmUp, after);
    std::printf("%s\n", sound ? "each row came once" : "ROWS ARE MISSING OR CAME TWICE");
    host.Stop();
    return sound ? 0 : 1;
}
