#pragma once

#include "host/ModuleRegistry.h"
#include "host/PluginReport.h"
#include "platform/SharedLibrary.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

class IGenericModule;
struct PluginDescription;

namespace kalvento::host {

class IPluginCalls;
class ModuleStates;
struct HostOptions;

/// One plug-in, from its file to its unloading. Main thread only. Each step does nothing once one before it has failed;
/// what fails is in the report.
class Plugin {
public:
    /// a_calls is told of each call into the plug-in.
    Plugin(std::filesystem::path a_path, std::shared_ptr<const HostOptions> a_options,
           std::shared_ptr<ModuleDirectory> a_directory, std::shared_ptr<IPluginCalls> a_calls);
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;
    /// Destroys what is left, then unloads.
    ~Plugin();

    void Load();
    void MakeModules();
    /// Initialises them and makes them known.
    void StartProviders();
    void StartConsumers();
    /// To those that run.
    void GiveProvidersTheirStates(ModuleStates& a_states);
    void GiveConsumersTheirStates(ModuleStates& a_states);

    const PluginReport& GetReport() const { return m_report; }
    bool IsRunning() const { return m_report.state == EPluginStateRunning; }

    // The end, step by step, each in reverse order: what runs, then all that there is.
    void TakeStates(ModuleStates& a_states);
    void StopConsumers();
    void StopProviders();
    void DestroyConsumers();
    void DestroyProviders();
    void Unload();

private:
    void DoLoad();
    void DoMakeModules();
    template<typename Module>
    void Start(const std::vector<Module*>& a_modules, std::vector<Module*>& a_ready);
    template<typename Module>
    void StopAll(std::vector<Module*>& a_modules);
    void CheckDescription(const PluginDescription& a_description) const;

    void Enter(std::wstring a_phase);
    template<typename Step>
    void Guarded(const Step& a_step);
    /// What fails in it costs that call, and not the plug-in.
    template<typename Call>
    void CallOne(const IGenericModule& a_module, const wchar_t* a_what, const Call& a_call);
    void Fail(EPluginState a_state, std::wstring a_reason);

    const std::filesystem::path m_path;
    const std::shared_ptr<const HostOptions> m_options;
    const std::shared_ptr<ModuleDirectory> m_directory;
    const std::shared_ptr<IPluginCalls> m_calls;

    kalvento::internal::SharedLibrary m_library;
    const PluginDescription* m_description = nullptr; // null until it is checked
    std::vector<ProviderBase*> m_providers;           // that run
    std::vector<ConsumerBase*> m_consumers;
    ModuleRegistry m_modules;
    PluginReport m_report;
};

} // namespace kalvento::host
