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
    /// What each plug-in's createModules gets, by the plug-in's name; a plug-in that isn't here gets an empty node.
    std::map<std::string, Settings> pluginOptions;
    /// How long a plug-in may take to load, make its modules and initialise its providers; and once more to initialise
    /// its consumers.
    std::chrono::milliseconds initDeadline = std::chrono::seconds(10);
};

} // namespace kalvento::host
