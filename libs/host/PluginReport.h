#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace kalvento::host {

enum EPluginState : std::uint8_t {
    EPluginStateRunning, ///< Its modules run.
    EPluginStateRefused, ///< The file can't be loaded, is no plug-in, or was built for another host.
    EPluginStateFailed, ///< It raised, a module refused to work, or the trial of its file ended badly. None of it runs.
    EPluginStateLeftOut, ///< A process ended in its code last time. It wasn't tried again.
    EPluginStateMissing  ///< Asked for, but not there: a plug-in, or the folder itself.
};

/// What became of one file in the folder of plug-ins, or of one that was asked for. The texts are Polish, for the user.
struct PluginReport {
    std::filesystem::path path; ///< Empty for a plug-in that isn't there.
    std::wstring name;          ///< As the plug-in calls itself; the file's stem as long as that isn't known.
    std::wstring version;       ///< Empty as long as it isn't known.
    EPluginState state = EPluginStateRunning;
    std::wstring
        phase; ///< The step at which it ended: "ładowanie", "tworzenie modułów", "Init modułu X". Empty while it runs.
    std::wstring reason; ///< Why, on one line where the plug-in keeps to that. Empty while it runs.
    std::vector<std::wstring>
        notices; ///< What else went wrong, such as a module that raised over its settings.
};

} // namespace kalvento::host
