#pragma once

#include "host/PluginReport.h"

#include <filesystem>
#include <memory>
#include <vector>

namespace kalvento::host {

struct HostOptions;
class MainThreadExecutor;
class ModuleDirectory;
class Plugin;

/// Takes the plug-ins of a folder through their life together. All operations on the main thread, in the order given
/// here; each does nothing when called again.
class PluginLoader {
public:
    PluginLoader(HostOptions a_options, std::shared_ptr<MainThreadExecutor> a_executor,
                 std::shared_ptr<ModuleDirectory> a_directory);
    PluginLoader(const PluginLoader&) = delete;
    PluginLoader& operator=(const PluginLoader&) = delete;
    ~PluginLoader();

    /// Loads all, then initialises the consumers of all. No plug-in makes it fail: failures are in the reports.
    void Start();
    const std::vector<PluginReport>& GetReports() const { return m_reports; }
    bool HasAbandoned() const { return m_hasAbandoned; }
    bool IsLoaderBlocked() const { return m_blockedBy != nullptr; }

    void StopModules();
    void DestroyModules();
    void Unload();

    /// Keeps it until the process ends, unharmed by the end of static objects: for what an abandoned thread may still
    /// use.
    static void KeepForEver(std::shared_ptr<const void> a_object);

private:
    // One file: a plug-in, or the report that says why it wasn't even tried.
    struct Entry {
        std::shared_ptr<Plugin> plugin;
        PluginReport report;
    };

    std::vector<std::filesystem::path> FindFiles();
    void Load(const std::filesystem::path& a_file);
    void MakeReports();
    void FromLast(void (Plugin::*a_step)());

    const std::shared_ptr<const HostOptions> m_options;
    const std::shared_ptr<MainThreadExecutor> m_executor;
    const std::shared_ptr<ModuleDirectory> m_directory;
    std::vector<Entry> m_entries; // in the order of the files
    std::vector<PluginReport> m_reports;
    std::shared_ptr<Plugin> m_blockedBy; // null as long as the system's loader works
    bool m_hasAbandoned = false;
    bool m_isStarted = false;
};

} // namespace kalvento::host
