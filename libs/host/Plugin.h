#pragma once

#include "host/ModuleRegistry.h"
#include "host/PluginReport.h"
#include "host/StarterThread.h"
#include "platform/SharedLibrary.h"

#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

struct PluginDescription;

namespace kalvento::host {

struct HostOptions;

/// One plug-in, from its file to its unloading. All operations on the main thread; the plug-in's own code runs on a
/// starter thread up to the end of Init. Held by shared pointers: a plug-in that hangs keeps itself.
class Plugin : public std::enable_shared_from_this<Plugin> {
public:
    Plugin(std::filesystem::path a_path, std::shared_ptr<const HostOptions> a_options,
           std::shared_ptr<MainThreadExecutor> a_executor, std::shared_ptr<ModuleDirectory> a_directory);
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;
    /// Destroys what is left, then unloads. Never reached for one that was abandoned.
    ~Plugin();

    /// Loads, makes the modules, initialises the providers and makes them known. Whatever fails is in the report.
    void Start();
    /// Initialises the consumers and makes them known; nothing where Start failed. Ends the starter thread.
    void StartConsumers();

    const PluginReport& GetReport() const { return m_report; }
    bool IsRunning() const { return m_report.state == EPluginStateRunning; }
    bool IsAbandoned() const { return m_abandoned; }
    /// It hangs inside the system's loader, which serves nobody else until it returns.
    bool BlocksLoader() const { return m_blocksLoader; }
    /// Whether the options ask for it, by its file's stem or its name. False as long as only its name can decide and
    /// that isn't known; it isn't started then.
    bool IsWanted() const { return m_isWanted; }
    bool IsNameKnown() const { return m_description != nullptr; }

    // The end, step by step: those that are running, or all that there are, in reverse order. All of these leave an
    // abandoned plug-in alone.
    void StopConsumers();
    void StopProviders();
    void DestroyConsumers();
    void DestroyProviders();
    void Unload();

private:
    // On the starter thread.
    void DoStart();
    void DoStartConsumers();
    template<typename Module>
    void Init(const std::vector<Module*>& a_modules, std::vector<Module*>& a_ready);
    void Load();
    void CheckDescription(const PluginDescription& a_description) const;
    void EnterPhase(std::wstring a_phase);
    void Fail(EPluginState a_state, std::wstring a_reason);
    void Guarded(void (Plugin::*a_step)());

    bool RunStep(void (Plugin::*a_step)());
    void Drop();

    const std::filesystem::path m_path;
    const std::shared_ptr<const HostOptions> m_options;
    const std::shared_ptr<ModuleDirectory> m_directory;

    // Belongs to the starter thread while a step runs, else to the main thread.
    kalvento::internal::SharedLibrary m_library;
    std::vector<ProviderBase*> m_providers; // initialised, to be stopped
    std::vector<ConsumerBase*> m_consumers;
    ModuleRegistry m_modules;

    std::mutex m_mutex; // of all below as long as a step runs; after it they belong to the main thread
    bool m_abandoned = false;
    const PluginDescription* m_description = nullptr; // null until it is checked
    bool m_isWanted = false;
    PluginReport m_report;

    bool m_blocksLoader = false; // main thread only
    StarterThread m_thread;      // the last one, so that it ends before what it uses
};

} // namespace kalvento::host
