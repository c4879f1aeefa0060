#pragma once

#include "host/HostOptions.h"
#include "host/PluginReport.h"

#include <functional>
#include <memory>
#include <vector>

class ConsumerBase;
class ProviderBase;

namespace kalvento::host {

class HostMediator;
class IHostView;
class MainThreadExecutor;
class ModuleDirectory;
class PluginLoader;

/// A program's plug-ins, from their files to their end; docs/plugins.md describes the whole life. One per process at a
/// time, all operations on the thread that constructs it, which becomes the main one. KalventoPaths::Initialize comes
/// before.
class Host {
public:
    using MakeMediator = std::function<std::shared_ptr<HostMediator>(
        IHostView&, std::shared_ptr<MainThreadExecutor>, std::shared_ptr<ModuleDirectory>)>;

    /// Makes a mediator without windows and makes it known (PluginBase::Init). The view outlives the host.
    Host(IHostView& a_view, HostOptions a_options);
    /// The same with a mediator of the program's own, such as one with windows.
    Host(IHostView& a_view, HostOptions a_options, const MakeMediator& a_makeMediator);
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;
    /// Stops.
    ~Host();

    /// Loads the plug-ins in the order of their file names and initialises their modules, all providers before all
    /// consumers. Meanwhile the main thread serves its executor, so the view gets its calls. A plug-in that fails is
    /// reported, and the others run. Once.
    void Start();

    /// What became of each plug-in, in the order of the file names; those that aren't there come last.
    const std::vector<PluginReport>& GetReports() const;
    /// The modules that run, in the order of their arrival; valid until Stop.
    std::vector<ProviderBase*> GetProviders() const;
    std::vector<ConsumerBase*> GetConsumers() const;
    HostMediator& GetMediator() { return *m_mediator; }
    MainThreadExecutor& GetExecutor() { return *m_executor; }

    /// Serves the executor until somebody requests the exit, and gives its code. A program with a toolkit runs that
    /// one's loop instead.
    int Run();

    /// StopWork of the modules, consumers first, and of the mediator; then the executor is closed, the modules are
    /// destroyed, and the plug-ins unloaded. Both groups go in the reverse order of their arrival. What a module raises
    /// is logged with its name. May be called again. Before that the program lets go of what it got from modules, such
    /// as shared pointers to assets: the code that destroys it is the plug-ins'.
    ///
    /// Where a plug-in was abandoned, the mediator stays, does nothing, and stays known: the plug-in's thread may come
    /// back at any time and ask it something.
    void Stop();

    /// A plug-in hangs in its static initialisers and with it the system's loader. Other plug-ins run, but nothing more
    /// can be loaded or unloaded, and a program that returns from main would wait for ever: it ends by std::_Exit.
    bool IsLoaderBlocked() const;

private:
    const std::shared_ptr<MainThreadExecutor> m_executor;
    const std::shared_ptr<ModuleDirectory> m_directory;
    std::shared_ptr<HostMediator> m_mediator;
    const std::unique_ptr<PluginLoader> m_loader;
    bool m_stopped = false;
};

} // namespace kalvento::host
