#pragma once

#include "host/HostOptions.h"
#include "host/PluginReport.h"
#include "settings/Settings.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace kalvento::host {

/// Tries the files of plug-ins in a process of their own before they are loaded here: each is loaded, makes its modules,
/// destroys them and is unloaded. What passed is remembered in a file of the user's until it changes, or the library or
/// the trying program does. Main thread only.
class PluginTrial {
public:
    /// a_memory: the file of those that passed. a_mayGoOn: asked while a trial runs; false ends it.
    PluginTrial(std::shared_ptr<const HostOptions> a_options, std::filesystem::path a_memory,
                std::function<bool()> a_mayGoOn);
    PluginTrial(const PluginTrial&) = delete;
    PluginTrial& operator=(const PluginTrial&) = delete;
    /// Writes the memory where something has changed.
    ~PluginTrial();

    /// a_stamp: FileStamp of the file. EPluginStateRunning: it passed, and may be loaded; the report has its name.
    /// Otherwise the report says at which call it ended and how.
    PluginReport Try(const std::filesystem::path& a_file, const std::string& a_stamp);

private:
    PluginReport Run(const std::filesystem::path& a_file) const;
    void Remember(const PluginReport& a_report, const std::string& a_stamp);
    std::filesystem::path GetProgram() const;

    const std::shared_ptr<const HostOptions> m_options;
    const std::filesystem::path m_memoryFile;
    const std::function<bool()> m_mayGoOn;
    Settings m_memory;
    bool m_isChanged = false;
};

} // namespace kalvento::host
