#pragma once

#include "settings/Settings.h"

#include <chrono>
#include <map>
#include <string>
#include <vector>

namespace kalvento::host {

/// What a program tells its host before the start.
struct HostOptions {
    /// Where the plug-ins are; empty: the folder `plugins` of the installation (KalventoPaths).
    std::wstring pluginFolder;
    /// Names of plug-ins or stems of their files, UTF-8: only these are started. Empty: all. Where stems name all of
    /// them, no other file is opened.
    std::vector<std::string> only;
    /// The same, of those that may start even though a process ended in their code last time. Those of `only` may, too.
    std::vector<std::string> retry;
    /// What each plug-in's createModules gets, by the plug-in's name; a plug-in that isn't here gets an empty node.
    std::map<std::string, Settings> pluginOptions;
    /// How long the trial of a plug-in's file may take before it is ended, and how long a call into a plug-in before the
    /// user is told of it.
    std::chrono::milliseconds callDeadline = std::chrono::seconds(10);
    /// Where the host keeps what it remembers from run to run; empty: UserSettings of the installation (KalventoPaths).
    std::wstring memoryFolder;
    /// The program that tries the files of plug-ins; empty: kalvento_plugin_trial, which lies beside the library.
    std::wstring trialProgram;
};

} // namespace kalvento::host
