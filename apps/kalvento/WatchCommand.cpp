#include "assets/Asset.h"
#include "host/CallModule.h"
#include "host/Host.h"
#include "host/HostMediator.h"
#include "host/IHostView.h"
#include "host/IScreenModule.h"
#include "host/MainThreadExecutor.h"
#include "host/ScreenOptions.h"
#include "kalvento/Commands.h"
#include "kalvento/DatabaseOption.h"
#include "kalvento/Note.h"
#include "kalvento/OptionValues.h"
#include "modules/ConsumerBase.h"
#include "modules/ProviderBase.h"
#include "platform/CodePage.h"
#include "platform/Descriptors.h"
#include "platform/Interruption.h"
#include "platform/ShownText.h"
#include "platform/WakeUp.h"
#include "platform/WidePath.h"
#include "settings/KalventoPaths.h"
#include "text_rows/TimeText.h"
#include "velo/Log.h"
#include "velo/String.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <memory>
#include <numeric>
#include <optional>
#include <ostream>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace kalvento::tool {

namespace {

constexpr const char* S_consolePlugin = "console_consumer";

struct WatchOptions {
    std::vector<std::string> symbols;
    host::ScreenOptions console;
    std::string provider;
    std::string pluginFolder;
    std::vector<std::string> retry;
    std::string folder;
    std::string day;
    std::string start;
    std::optional<double> speed;
    bool sort = false;
    std::string database;
    unsigned int patience = 15;
    bool list = false;
};

using VeloTools::String::ToLower;

// What the user typed, as names are written inside.
std::string NameOf(const std::string& a_typed)
{
    return ToLower(CodePage::WideToCp1250(CodePage::Utf8ToWide(a_typed)));
}

/// The provider's status field: how it stands, and then what hinders it.
std::vector<std::string> StatusLines(const ProviderBase& a_provider)
{
    std::istringstream text(CodePage::WideToUtf8(a_provider.GetStatusToolTip()));
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);)
        lines.push_back(internal::ShownText::OneLine(line));
    if (lines.empty())
        lines.push_back(internal::ShownText::OneLine(
            CodePage::WideToUtf8(a_provider.GetName() + L": " + a_provider.GetStatusLabel())));
    return lines;
}

std::string Joined(const std::vector<std::string>& a_texts)
{
    std::string joined;
    for (const std::string& text : a_texts)
        joined += (joined.empty() ? "" : "; ") + text;
    return joined;
}

/// What hinders the provider, under its name; its whole status where it has a problem that it doesn't explain.
std::vector<std::string> ProviderFaults(const ProviderBase& a_provider)
{
    if (a_provider.GetStatusLevel() != EStatusLevelProblem)
        return {};
    std::vector<std::string> lines = StatusLines(a_provider);
    if (lines.size() == 1)
        return lines;
    lines.erase(lines.begin());
    for (std::string& line : lines)
        line.insert(0, internal::ShownText::OneLine(CodePage::WideToUtf8(a_provider.GetName())) + ": ");
    return lines;
}

std::string PluginFault(const host::PluginReport& a_report)
{
    std::wstring text = L"wtyczka " + a_report.name + L": " + a_report.phase + L": " + a_report.reason;
    if (a_report.state == host::EPluginStateLeftOut)
        text += L"; --retry " + WidePath::ToWide(a_report.path.stem()) + L" uruchomi ją ponownie";
    return internal::ShownText::OneLine(CodePage::WideToUtf8(text));
}

/// Passes what modules say, and what of them fails, to the console's last line, or to standard error as long as there is
/// no console.
class WatchView : public host::IHostView {
public:
    explicit WatchView(ToolContext& a_context) : m_context(a_context) {}

    void SetScreen(host::IScreenModule* a_screen)
    {
        m_screen = a_screen;
        ShowFaults();
    }
    /// From here on their failures are told, as they come and go.
    void Observe(const std::vector<host::PluginReport>& a_plugins, std::vector<ProviderBase*> a_providers)
    {
        m_plugins.clear();
        for (const host::PluginReport& report : a_plugins) {
            if (report.state != host::EPluginStateRunning)
                m_plugins.push_back(PluginFault(report));
            for (const std::wstring& notice : report.notices)
                if (const std::string text = CodePage::WideToUtf8(notice); m_printed.insert(text).second)
                    Note(m_context, text);
        }
        m_providers = std::move(a_providers);
        ConnectionStatusChanged();
    }
    /// Before the host stops: what fails by that is no failure, and the screen goes.
    void Leave()
    {
        m_screen = nullptr;
        m_hasLeft = true;
    }
    /// What standard error hasn't had yet, as long as there is no screen over it.
    void PrintFaults()
    {
        if (m_screen != nullptr)
            return;
        for (const std::string& fault : m_faults)
            if (m_printed.insert(fault).second)
                Note(m_context, fault);
    }
    const std::vector<std::string>& GetPluginFaults() const { return m_plugins; }
    /// What a run whose output is read by programs ends with.
    EExitCode GetExitCode() const
    {
        if (m_faults.empty())
            return EExitOk;
        return m_faults.size() > m_plugins.size() ? EExitBadData : EExitFailure;
    }

    void ShowText(std::wstring_view a_text) override { Show(a_text); }
    void ShowNotification(std::wstring_view a_text) override { Show(a_text); }
    void ConnectionStatusChanged() override
    {
        if (m_hasLeft)
            return;
        m_faults = m_plugins;
        for (const ProviderBase* const provider : m_providers)
            host::CallModule(*provider, L"GetStatusToolTip", [&] {
                std::ranges::move(ProviderFaults(*provider), std::back_inserter(m_faults));
            });
        PrintFaults();
        ShowFaults();
    }

private:
    void Show(std::wstring_view a_text)
    {
        if (m_screen != nullptr)
            m_screen->ShowMessageLine(a_text);
        else if (!m_context.quiet)
            Note(m_context, CodePage::WideToUtf8(a_text));
    }
    void ShowFaults()
    {
        if (m_screen != nullptr)
            m_screen->ShowStandingLine(CodePage::Utf8ToWide(Joined(m_faults)));
    }

    ToolContext& m_context;
    host::IScreenModule* m_screen = nullptr;
    std::vector<ProviderBase*> m_providers;
    std::vector<std::string> m_plugins; // those that failed
    std::vector<std::string> m_faults;  // of now
    std::set<std::string> m_printed;
    bool m_hasLeft = false;
};

/// Requests the host's end when the user interrupts.
class ExitOnInterruption {
public:
    explicit ExitOnInterruption(host::Host& a_host) : m_thread([this, &a_host] { Wait(a_host); }) {}
    ExitOnInterruption(const ExitOnInterruption&) = delete;
    ExitOnInterruption& operator=(const ExitOnInterruption&) = delete;
    ~ExitOnInterruption()
    {
        m_end.Raise();
        m_thread.join();
    }

private:
    void Wait(host::Host& a_host) const
    {
        std::array<internal::Descriptors::Awaited, 2> awaited = {{{m_interruption.GetFd()}, {m_end.GetFd()}}};
        internal::Descriptors::WaitForAny(awaited, std::nullopt);
        if (awaited[0].isReady)
            a_host.RequestEnd(EExitOk);
    }

    const internal::Interruption m_interruption;
    internal::WakeUp m_end;
    std::thread m_thread;
};

host::HostOptions MakeHostOptions(const WatchOptions& a_options)
{
    host::HostOptions options;
    options.pluginFolder = WidePath::ToWide(a_options.pluginFolder);
    options.retry = a_options.retry;
    Settings& file = options.pluginOptions["file_provider"];
    if (!a_options.folder.empty())
        file["Folder"] = WidePath::ToWide(std::filesystem::absolute(a_options.folder));
    if (!a_options.day.empty())
        file["Day"] = a_options.day;
    if (!a_options.start.empty())
        file["Start"] = a_options.start;
    if (a_options.speed)
        file["Speed"] = *a_options.speed;
    if (a_options.sort)
        file["Sort"] = true;
    if (a_options.list)
        file["ListOnly"] = true;
    if (!a_options.database.empty())
        options.pluginOptions["sql_provider"]["Connection"] = a_options.database;

    host::ScreenOptions console = a_options.console;
    console.exitAtEnd = console.plain;
    console.Write(options.pluginOptions[S_consolePlugin]);
    return options;
}

/// The providers that may serve the symbols: all, or the one of that name.
std::vector<ProviderBase*> ChooseProviders(const host::Host& a_host, const WatchOptions& a_options)
{
    std::vector<ProviderBase*> providers = a_host.GetProviders();
    if (a_options.provider.empty())
        return providers;
    std::string known;
    for (const ProviderBase* provider : providers)
        known += (known.empty() ? "" : ", ") + CodePage::WideToUtf8(provider->GetName());
    std::erase_if(providers, [&](const ProviderBase* a_provider) {
        return ToLower(CodePage::WideToCp1250(a_provider->GetName())) != NameOf(a_options.provider);
    });
    if (providers.empty())
        throw ToolError(EExitUsage, "no provider \"" + a_options.provider +
                                        "\", there is: " + (known.empty() ? "none" : known));
    return providers;
}

/// False where the provider raises, which the user is told.
bool Ask(host::IHostView& a_view, const ProviderBase& a_provider, std::wstring_view a_operation,
         const std::function<void()>& a_question)
{
    const std::wstring fault = host::CallModule(a_provider, a_operation, a_question);
    if (!fault.empty())
        a_view.ShowText(fault);
    return fault.empty();
}

std::vector<std::shared_ptr<Asset>> AssetsOf(const ProviderBase& a_provider)
{
    std::vector<std::shared_ptr<Asset>> assets;
    host::CallModule(a_provider, L"GetAssets", [&] { assets = a_provider.GetAssets(); });
    return assets;
}

std::shared_ptr<Asset> FindAsset(const std::vector<ProviderBase*>& a_providers, const std::string& a_symbol)
{
    // What the code page lacks is in no name, and must not match a question mark.
    if (!CodePage::FitsCp1250(CodePage::Utf8ToWide(a_symbol)))
        return nullptr;
    const std::string name = NameOf(a_symbol);
    for (const ProviderBase* provider : a_providers)
        for (const auto& asset : AssetsOf(*provider))
            if (ToLower(asset->GetShortName()) == name || ToLower(asset->GetIsin()) == name ||
                ToLower(asset->GetLongName()) == name)
                return asset;
    return nullptr;
}

// How many letters must be changed, added or left out; V. Levenshtein, Binary codes capable of correcting deletions,
// insertions and reversals, 1966.
std::size_t Distance(const std::string& a_left, const std::string& a_right)
{
    std::vector<std::size_t> costs(a_right.size() + 1);
    std::iota(costs.begin(), costs.end(), std::size_t{0});
    for (std::size_t row = 1; row <= a_left.size(); ++row) {
        std::size_t diagonal = std::exchange(costs[0], row);
        for (std::size_t column = 1; column < costs.size(); ++column) {
            const std::size_t changed = diagonal + (a_left[row - 1] == a_right[column - 1] ? 0 : 1);
            diagonal = costs[column];
            costs[column] = std::min({changed, costs[column] + 1, costs[column - 1] + 1});
        }
    }
    return costs.back();
}

std::string NearNames(const std::vector<ProviderBase*>& a_providers, const std::string& a_symbol)
{
    std::vector<std::pair<std::size_t, std::string>> names;
    for (const ProviderBase* provider : a_providers)
        for (const auto& asset : AssetsOf(*provider))
            names.emplace_back(Distance(ToLower(asset->GetShortName()), NameOf(a_symbol)),
                               CodePage::Cp1250ToUtf8(asset->GetShortName()));
    std::string statuses;
    for (const ProviderBase* provider : a_providers)
        if (names.empty() || provider->GetStatusLevel() == EStatusLevelProblem)
            statuses += "; " + Joined(StatusLines(*provider));
    if (names.empty())
        return "there are none at all" + statuses;
    std::sort(names.begin(), names.end());
    std::string text = "near names:";
    for (std::size_t place = 0; place < std::min<std::size_t>(names.size(), 5); ++place)
        text += ' ' + names[place].second;
    return text + statuses;
}

// A narrow name for the terminal.
std::string Shown(const std::string& a_name)
{
    return internal::ShownText::OneLine(CodePage::Cp1250ToUtf8(a_name));
}

void List(const std::vector<ProviderBase*>& a_providers, const WatchView& a_view, ToolContext& a_context)
{
    for (const std::string& fault : a_view.GetPluginFaults())
        a_context.out << fault << '\n';
    for (const ProviderBase* provider : a_providers) {
        a_context.out << StatusLines(*provider).front() << '\n';
        for (const std::string& fault : ProviderFaults(*provider))
            a_context.out << fault << '\n';
        for (const auto& asset : AssetsOf(*provider))
            a_context.out << "  " << Shown(asset->GetShortName()) << "\t" << Shown(asset->GetIsin()) << "\t"
                          << Shown(asset->GetLongName()) << '\n';
    }
}

/// Serves the executor until the providers have said what they have: until all symbols are known, or nothing more is to
/// be expected.
void WaitForProviders(host::Host& a_host, const std::vector<ProviderBase*>& a_providers,
                      const WatchOptions& a_options, ToolContext& a_context)
{
    // There is no point in waiting for a provider that wasn't told where its data is.
    const auto areConnected = [&] {
        return std::all_of(a_providers.begin(), a_providers.end(), [](const ProviderBase* a_provider) {
            return a_provider->GetConnectionStatus() == EConnectionStatusConnected ||
                   a_provider->GetStatusLevel() == EStatusLevelIdle;
        });
    };
    const auto isReady = [&] {
        if (a_host.GetMediator().GetExitCode())
            return true;
        if (a_options.list)
            return areConnected();
        return std::all_of(
            a_options.symbols.begin(), a_options.symbols.end(),
            [&](const std::string& a_symbol) { return FindAsset(a_providers, a_symbol) != nullptr; });
    };
    // Also asked from time to time: a provider may learn of an instrument and say so a moment too early.
    const auto begin = std::chrono::steady_clock::now();
    const auto deadline = begin + std::chrono::seconds(a_options.patience);
    bool isNoted = !a_context.errIsTerminal || a_context.quiet;
    while (!isReady() && std::chrono::steady_clock::now() < deadline) {
        const bool allConnected = areConnected();
        a_host.GetExecutor().RunUntil(
            isReady, std::min(deadline, std::chrono::steady_clock::now() + std::chrono::milliseconds(300)));
        if (!isNoted && std::chrono::steady_clock::now() - begin > std::chrono::seconds(1)) {
            isNoted = true;
            a_context.err << "waiting for the providers, up to " << a_options.patience << " s; Ctrl-C ends\n";
            for (const ProviderBase* provider : a_providers)
                a_context.err << "  " << Joined(StatusLines(*provider)) << '\n';
            a_context.err.flush();
        }
        if (allConnected)
            return; // the executor has run since then, so their news has arrived
    }
}

ConsumerBase& FindConsole(const host::Host& a_host)
{
    for (ConsumerBase* consumer : a_host.GetConsumers())
        if (dynamic_cast<host::IScreenModule*>(consumer) != nullptr)
            return *consumer;
    throw ToolError(EExitFailure, "the plug-in \"console_consumer\" doesn't run");
}

void Watch(host::Host& a_host, WatchView& a_view, const WatchOptions& a_options, ToolContext& a_context)
{
    a_host.Start();
    a_view.Observe(a_host.GetReports(), {});
    std::vector<ProviderBase*> providers = ChooseProviders(a_host, a_options);
    // One that can't be asked is left out, and the others serve.
    std::erase_if(providers, [&](ProviderBase* a_provider) {
        return !Ask(a_view, *a_provider, L"SwitchConnection", [&] { a_provider->SwitchConnection(true); }) ||
               !Ask(a_view, *a_provider, L"GetAssets", [&] { a_provider->GetAssets(); });
    });
    a_view.Observe(a_host.GetReports(), providers);
    WaitForProviders(a_host, providers, a_options, a_context);
    a_view.ConnectionStatusChanged(); // the last one may still be on its way
    if (a_options.list)
        return List(providers, a_view, a_context);

    ConsumerBase& console = FindConsole(a_host);
    std::vector<std::shared_ptr<Asset>> assets;
    std::string unknown;
    for (const std::string& symbol : a_options.symbols) {
        const auto asset = FindAsset(providers, symbol);
        if (a_host.GetMediator().GetExitCode())
            return;
        if (asset)
            assets.push_back(asset);
        else
            unknown += (unknown.empty() ? "" : "; ") +
                       ("no instrument \"" + symbol + "\" at any provider; ") + NearNames(providers, symbol);
    }
    if (assets.empty())
        throw ToolError(EExitNoInput, unknown);
    // The others are shown all the same.
    if (!unknown.empty())
        Note(a_context, unknown);
    a_view.SetScreen(a_options.console.plain ? nullptr : dynamic_cast<host::IScreenModule*>(&console));
    for (const auto& asset : assets)
        if (console.AddInstrument({}, *asset) == 0)
            throw ToolError(EExitNoInput,
                            "the provider doesn't serve \"" + Shown(asset->GetShortName()) + '"');
    a_context.exitCode = a_host.Run();
    if (!unknown.empty() && a_context.exitCode == EExitOk)
        a_context.exitCode = EExitNoInput;
    if (a_options.console.plain && a_context.exitCode == EExitOk) {
        a_view.ConnectionStatusChanged();
        a_context.exitCode = a_view.GetExitCode();
    }
}

// The provider accepts what it is told and writes what makes no sense to its log, where a user who has just typed it
// won't look.
void CheckPlayback(const WatchOptions& a_options)
{
    if (!a_options.folder.empty() && !std::filesystem::is_directory(a_options.folder))
        throw ToolError(EExitNoInput, "--folder: there is no folder \"" + a_options.folder + '"');
    if (!a_options.day.empty() && !ParseDateText(a_options.day))
        throw ToolError(EExitUsage, "--day: found \"" + a_options.day + "\", expected a day as 2024-01-02");
    if (!a_options.start.empty() && !ParseClockText(a_options.start))
        throw ToolError(EExitUsage,
                        "--start: found \"" + a_options.start + "\", expected a time of day as 09:00");
    if (a_options.speed && !(*a_options.speed >= 0.0 && std::isfinite(*a_options.speed)))
        throw ToolError(EExitUsage, "--speed: expected a number above 0, or 0 for the whole day at once");
}

void RunWatch(const WatchOptions& a_options, ToolContext& a_context)
{
    if (a_options.symbols.empty() && !a_options.list)
        throw ToolError(EExitUsage, "no instrument given; expected its symbol or ISIN, or --list");
    if (!a_options.console.plain && !a_options.list) {
        if (!a_context.outIsTerminal)
            throw ToolError(EExitUsage, "standard output is no terminal; --plain prints lines");
        if (a_options.console.book || a_options.console.trades || a_options.console.candles > 0)
            throw ToolError(EExitUsage,
                            "--book, --trades and --candles go with --plain; the screen shows them all");
    }
    CheckPlayback(a_options);
    DatabaseOption(a_options.database); // refused here, where the user looks
    KalventoPaths::Initialize(L"Kalvento");
    // Log lines would run across the screen.
    VeloTools::Log::Instance().SetLogFolder(WidePath::ToPath(KalventoPaths::Instance().GetNativeLogPath()));

    WatchView view(a_context);
    host::Host host(view, MakeHostOptions(a_options));
    const ExitOnInterruption exitOnInterruption(host);
    const auto stop = [&] {
        view.Leave();
        host.Stop();
        view.PrintFaults();
    };
    try {
        Watch(host, view, a_options, a_context);
    } catch (...) {
        stop();
        throw;
    }
    stop();
}

} // namespace

void AddWatchCommand(Command a_app, ToolContext& a_context)
{
    Command command =
        a_app.AddCommand("watch", "Shows instruments of a provider in the terminal, as they are traded");
    const auto options = std::make_shared<WatchOptions>();
    command.AddOption("symbols", options->symbols, "Short names or ISINs; letter case doesn't matter");
    command
        .AddOption(
            "--interval,-i",
            [options](const std::string& a_text) { options->console.interval = IntervalOption(a_text); },
            "Interval of the candles")
        .DefaultText("1min");
    command.AddOption("--provider", options->provider,
                      "Name of the provider; otherwise the first one that knows the instrument");
    command.AddOption("--folder", options->folder, "Files: the folder in which they lie");
    command.AddOption("--day", options->day, "Files: the day to be played, YYYY-MM-DD");
    command.AddOption("--start", options->start, "Files: time of day at which the play begins");
    command.AddOption("--speed", options->speed,
                      "Files: how many times faster than it was; 0: the whole day at once");
    command.AddFlag("--sort", options->sort,
                    "Files: sort those that aren't in the order of their times, instead of leaving them out");
    command.AddOption("--database", options->database, "Database: how to connect");
    command.AddFlag("--plain", options->console.plain, "Lines on standard output instead of a screen");
    command.AddFlag("--book", options->console.book, "With --plain: the order book too");
    command.AddFlag("--trades", options->console.trades, "With --plain: transactions too");
    command.AddOption("--candles", options->console.candles,
                      "With --plain: how many candles of the past; 0: all");
    command.AddOption("--idle-exit", options->console.idleExit,
                      "End when nothing has come for so many seconds");
    command.AddOption("--wait", options->patience, "How many seconds to wait for the provider").ShowDefault();
    command.AddOption("--plugins", options->pluginFolder, "Folder of the plug-ins");
    command
        .AddOption("--retry", options->retry,
                   "Start a plug-in that was left out, since the program ended in its code last time")
        .TypeName("NAME")
        .OneValueEach();
    command.AddFlag("--list", options->list, "List the providers and their instruments, and end");
    command.SetFooter("Example:\n  kalvento watch PKO PEO --interval 5min --folder notowania --speed 60");
    command.OnRun([options, &a_context] { RunWatch(*options, a_context); });
}

} // namespace kalvento::tool
