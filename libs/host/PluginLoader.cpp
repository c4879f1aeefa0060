#include "host/PluginLoader.h"

#include "host/HostOptions.h"
#include "host/Plugin.h"
#include "platform/CodePage.h"
#include "platform/ErrorText.h"
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

} // namespace

PluginLoader::PluginLoader(HostOptions a_options, std::shared_ptr<MainThreadExecutor> a_executor,
                           std::shared_ptr<ModuleDirectory> a_directory)
    : m_options(std::make_shared<const HostOptions>(std::move(a_options))),
      m_executor(std::move(a_executor)),
      m_directory(std::move(a_directory))
{}

PluginLoader::~PluginLoader() = default;

void PluginLoader::Start()
{
    if (std::exchange(m_isStarted, true))
        return;
    for (const auto& file : FindFiles())
        Load(file);
    for (const Entry& entry : m_entries) {
        if (!entry.plugin)
            continue;
        entry.plugin->StartConsumers();
        if (entry.plugin->IsAbandoned()) {
            m_hasAbandoned = true;
            KeepForEver(entry.plugin);
        }
    }
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

void PluginLoader::Load(const std::filesystem::path& a_file)
{
    const std::wstring stem = CodePage::Utf8ToWide(a_file.stem().native());
    if (IsLoaderBlocked()) {
        m_entries.push_back({nullptr, Report(EPluginStateRefused, a_file, stem,
                                             L"nie można nic wczytać, dopóki nie wróci ładowanie wtyczki " +
                                                 m_blockedBy->GetReport().name)});
        return;
    }
    const auto plugin = std::make_shared<Plugin>(a_file, m_options, m_executor, m_directory);
    plugin->Start();
    if (plugin->BlocksLoader())
        m_blockedBy = plugin;
    if (plugin->IsWanted() || !plugin->IsNameKnown() || plugin->IsAbandoned())
        m_entries.push_back({plugin, {}});
}

void PluginLoader::MakeReports()
{
    const auto isFound = [this](const std::string& a_name) {
        return std::ranges::any_of(m_entries, [&](const Entry& entry) {
            return entry.plugin && (entry.plugin->GetReport().path.stem() == a_name ||
                                    entry.plugin->GetReport().name == CodePage::Utf8ToWide(a_name));
        });
    };
    const auto& only = m_options->only;
    const bool isAllFound = std::ranges::all_of(only, isFound);

    std::vector<PluginReport> missing = std::exchange(m_reports, {});
    for (const Entry& entry : m_entries) {
        // A file that can't be loaded may be the one that was asked for, unless all are found.
        if (entry.plugin && !entry.plugin->IsWanted() && !entry.plugin->IsAbandoned() && isAllFound)
            continue;
        m_reports.push_back(entry.plugin ? entry.plugin->GetReport() : entry.report);
    }
    for (const std::string& name : only)
        if (!isFound(name))
            missing.push_back(
                Report(EPluginStateMissing, {}, CodePage::Utf8ToWide(name),
                       L"w folderze wtyczek nie ma ani wtyczki o tej nazwie, ani takiego pliku"));
    std::ranges::move(missing, std::back_inserter(m_reports));
}

void PluginLoader::FromLast(void (Plugin::*a_step)())
{
    for (auto entry = m_entries.rbegin(); entry != m_entries.rend(); ++entry)
        if (entry->plugin)
            ((*entry->plugin).*a_step)();
}

void PluginLoader::StopModules()
{
    FromLast(&Plugin::StopConsumers);
    FromLast(&Plugin::StopProviders);
}

void PluginLoader::DestroyModules()
{
    FromLast(&Plugin::DestroyConsumers);
    FromLast(&Plugin::DestroyProviders);
}

void PluginLoader::Unload()
{
    if (!IsLoaderBlocked())
        FromLast(&Plugin::Unload);
}

void PluginLoader::KeepForEver(std::shared_ptr<const void> a_object)
{
    static auto& S_kept = *new std::vector<std::shared_ptr<const void>>;
    S_kept.push_back(std::move(a_object));
}

} // namespace kalvento::host
