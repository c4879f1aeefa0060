#pragma once

#include <filesystem>
#include <string>

namespace kalvento::host {

/// A call into a plug-in's code.
struct PluginCall {
    std::filesystem::path file;
    std::wstring plugin; ///< As the plug-in calls itself; the file's stem as long as that isn't known.
    std::wstring phase;  ///< What is called, for the user: "Init modułu X".
};

/// Is told of each call into a plug-in, so that one that never returns can be named. Main thread.
class IPluginCalls {
public:
    virtual ~IPluginCalls() = default;
    /// The call begins; one that is under way has ended.
    virtual void Enter(const PluginCall& a_call) = 0;
    /// The last one has returned.
    virtual void Leave() = 0;

    IPluginCalls(const IPluginCalls&) = delete;
    IPluginCalls& operator=(const IPluginCalls&) = delete;

protected:
    IPluginCalls() = default;
};

} // namespace kalvento::host
