#pragma once

#include "host/CallRecords.h"
#include "host/PluginReport.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <vector>

namespace kalvento::host {

struct HostOptions;
class IPluginCalls;
class ModuleDirectory;
class ModuleStates;
class Plugin;
class PluginTrial;

/// Takes the plug-ins of a folder through their life together. All operations on the main thread, in the order given
/// here; each does nothing when called again.
class PluginLoader {
public:
    PluginLoader(std::shared_ptr<const HostOptions> a_options, std::shared_ptr<ModuleDirectory> a_directory,
                 std::shared_ptr<IPluginCalls> a_calls);
    PluginLoader(const PluginLoader&) = delete;
    PluginLoader& operator=(const PluginLoader&) = delete;
    ~PluginLoader();

    /// Tries and loads all, starts the providers of all, then the consumers of all, and gives them their states back. No
    /// plug-in makes it fail: failures are in the reports. a_left: the calls that earlier processes ended in.
    void Start(PluginTrial& a_trial, ModuleStates& a_states, std::vector<CallRecords::Left> a_left);
    const std::vector<PluginReport>& GetReports() const { return m_reports; }

    void TakeStates(ModuleStates& a_states);
    void StopModules();
    void DestroyModules();
    void Unload();

private:
    // One file: a plug-in, or the report that says why it wasn't loaded.
    struct Entry {
        std::unique_ptr<Plugin> plugin;
        PluginReport report;
    };

    std::vector<std::filesystem::path> FindFiles();
    void Load(const std::filesystem::path& a_file, PluginTrial& a_trial,
              const std::vector<CallRecords::Left>& a_left);
    PluginReport Judge(const std::filesystem::path& a_file, PluginTrial& a_trial,
                       const std::vector<CallRecords::Left>& a_left) const;
    void MakeReports();
    void ForEach(const std::function<void(Plugin&)>& a_step);
    void FromLast(const std::function<void(Plugin&)>& a_step);

    const std::shared_ptr<const HostOptions> m_options;
    const std::shared_ptr<ModuleDirectory> m_directory;
    const std::shared_ptr<IPluginCalls> m_calls;
    std::vector<Entry> m_entries; // in the order of the files
    std::vector<PluginReport> m_reports;
    bool m_isStarted = false;
};

} // namespace kalvento::host
