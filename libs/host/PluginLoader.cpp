#include "host/PluginLoader.h"

#include "host/HostOptions.h"
#include "host/Plugin.h"
#include "host/PluginTrial.h"
#include "platform/CodePage.h"
#include "platform/ErrorText.h"
#include "platform/FileStamp.h"
#include "platform/WidePath.h"
#include "settings/KalventoPaths.h"

#include <algorithm>
#include <iterator>
#include <system_error>
#include <utility>

namespace kalvento::host {

namespace {

PluginReport Report(EPluginState a_state, std::filesystem::path a_path, std::wstring a_name,
                    std::wstring a_reason)
{
    PluginReport report;
    report.path = std::move(a_path);
    report.name = std::move(a_name);
    report.state = a_state;
    report.phase = L"ładowanie";
    report.reason = std::move(a_reason);
    return report;
}

std::filesystem::path FolderOf(const HostOptions& a_options)
{
    const auto folder = a_options.pluginFolder.empty()
                            ? WidePath::ToPath(KalventoPaths::Instance().GetNativeInstallPath()) / "plugins"
                            : WidePath::ToPath(a_options.pluginFolder);
    return std::filesystem::absolute(folder); // the loader would look elsewhere for a name without a slash
}

// Whether the user means that plug-in, by its name or by the stem of its file.
bool IsNamed(const std::vector<std::string>& a_names, const PluginReport& a_report)
{
    return std::ranges::any_of(a_names, [&](const std::string& name) {
        return a_report.path.stem() == name || a_report.name == CodePage::Utf8ToWide(name);
    });
}

} // namespace

PluginLoader::PluginLoader(std::shared_ptr<const HostOptions> a_options,
                           std::shared_ptr<ModuleDirectory> a_directory,
                           std::shared_ptr<IPluginCalls> a_calls)
    : m_options(std::move(a_options)), m_directory(std::move(a_directory)), m_calls(std::move(a_calls))
{}

PluginLoader::~PluginLoader() = default;

void PluginLoader::Start(PluginTrial& a_trial, ModuleStates& a_states, std::vector<CallRecords::Left> a_left)
{
    if (std::exchange(m_isStarted, true))
        return;
    for (const auto& file : FindFiles())
        Load(file, a_trial, a_left);
    ForEach([](Plugin& plugin) { plugin.StartProviders(); });
    ForEach([](Plugin& plugin) { plugin.StartConsumers(); });
    ForEach([&](Plugin& plugin) { plugin.GiveProvidersTheirStates(a_states); });
    ForEach([&](Plugin& plugin) { plugin.GiveConsumersTheirStates(a_states); });
    MakeReports();
}

std::vector<std::filesystem::path> PluginLoader::FindFiles()
{
    const std::filesystem::path folder = FolderOf(*m_options);
    std::vector<std::filesystem::path> files;
    std::error_code error;
    for (std::filesystem::directory_iterator file(folder, error), end; !error && file != end;
         file.increment(error))
        if (file->path().extension() == ".so")
            files.push_back(file->path());
    if (error)
        m_reports.push_back(Report(EPluginStateMissing, folder, folder.filename().wstring(),
                                   L"nie można przejrzeć folderu wtyczek: " +
                                       CodePage::Cp1250ToWide(internal::ErrorText(error))));
    std::ranges::sort(files);

    const auto hasStem = [](const std::string& a_stem) {
        return [&a_stem](const std::filesystem::path& a_file) { return a_file.stem() == a_stem; };
    };
    const auto& only = m_options->only;
    // Opening a file runs code of it, which nobody asked for where the stems tell all.
    if (!only.empty() && std::ranges::all_of(only, [&](const std::string& stem) {
            return std::ranges::any_of(files, hasStem(stem));
        }))
        std::erase_if(files, [&](const std::filesystem::path& file) {
            return std::ranges::none_of(only, [&](const std::string& stem) { return file.stem() == stem; });
        });
    return files;
}

PluginReport PluginLoader::Judge(const std::filesystem::path& a_file, PluginTrial& a_trial,
                                 const std::vector<CallRecords::Left>& a_left) const
{
    const std::wstring stem = CodePage::Utf8ToWide(a_file.stem().native());
    const auto stamp = kalvento::internal::FileStamp(a_file);
    if (!stamp)
        return Report(EPluginStateRefused, a_file, stem, L"to nie jest zwykły plik");
    for (const CallRecords::Left& left : a_left) {
        if (left.call.file != a_file)
            continue;
        PluginReport report =
            Report(EPluginStateLeftOut, a_file, left.call.plugin,
                   left.isOverdue ? L"poprzednim razem nie wróciła z tego wywołania"
                                  : L"poprzednim razem program zakończył się w tym wywołaniu");
        report.phase = left.call.phase;
        if (left.stamp == *stamp && !IsNamed(m_options->only, report) && !IsNamed(m_options->retry, report))
            return report;
        CallRecords::Forget(left);
    }
    return a_trial.Try(a_file, *stamp);
}

void PluginLoader::Load(const std::filesystem::path& a_file, PluginTrial& a_trial,
                        const std::vector<CallRecords::Left>& a_left)
{
    PluginReport report = Judge(a_file, a_trial, a_left);
    if (report.state != EPluginStateRunning) {
        m_entries.push_back({nullptr, std::move(report)});
        return;
    }
    if (!m_options->only.empty() && !IsNamed(m_options->only, report))
        return;
    auto plugin = std::make_unique<Plugin>(a_file, m_options, m_directory, m_calls);
    plugin->Load();
    plugin->MakeModules();
    m_entries.push_back({std::move(plugin), {}});
}

void PluginLoader::MakeReports()
{
    std::vector<PluginReport> missing = std::exchange(m_reports, {});
    for (const Entry& entry : m_entries)
        m_reports.push_back(entry.plugin ? entry.plugin->GetReport() : entry.report);
    const auto& only = m_options->only;
    const auto isFound = [this](const std::string& name) {
        return std::ranges::any_of(m_reports,
                                   [&](const PluginReport& report) { return IsNamed({name}, report); });
    };
    std::vector<std::string> notFound;
    std::ranges::copy_if(only, std::back_inserter(notFound), std::not_fn(isFound));
    // A file whose name isn't known may be the one that was asked for, unless all are found.
    if (!only.empty() && notFound.empty())
        std::erase_if(m_reports, [&](const PluginReport& report) { return !IsNamed(only, report); });
    for (const std::string& name : notFound)
        missing.push_back(Report(EPluginStateMissing, {}, CodePage::Utf8ToWide(name),
                                 L"w folderze wtyczek nie ma ani wtyczki o tej nazwie, ani takiego pliku"));
    std::ranges::move(missing, std::back_inserter(m_reports));
}

void PluginLoader::ForEach(const std::function<void(Plugin&)>& a_step)
{
    for (const Entry& entry : m_entries)
        if (entry.plugin)
            a_step(*entry.plugin);
}

void PluginLoader::FromLast(const std::function<void(Plugin&)>& a_step)
{
    for (auto entry = m_entries.rbegin(); entry != m_entries.rend(); ++entry)
        if (entry->plugin)
            a_step(*entry->plugin);
}

void PluginLoader::TakeStates(ModuleStates& a_states)
{
    ForEach([&](Plugin& plugin) { plugin.TakeStates(a_states); });
}

void PluginLoader::StopModules()
{
    FromLast([](Plugin& plugin) { plugin.StopConsumers(); });
    FromLast([](Plugin& plugin) { plugin.StopProviders(); });
}

void PluginLoader::DestroyModules()
{
    FromLast([](Plugin& plugin) { plugin.DestroyConsumers(); });
    FromLast([](Plugin& plugin) { plugin.DestroyProviders(); });
}

void PluginLoader::Unload()
{
    FromLast([](Plugin& plugin) { plugin.Unload(); });
}

} // namespace kalvento::host
