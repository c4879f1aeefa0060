#pragma once

#include "host/HostOptions.h"
#include "host/PluginReport.h"

#include <functional>
#include <memory>
#include <vector>

class ConsumerBase;
class ProviderBase;

namespace kalvento::host {

class CallRecords;
class CallWatch;
class HostMediator;
class IHostView;
class MainThreadExecutor;
class ModuleDirectory;
class ModuleStates;
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

    /// Tries the plug-ins' files in processes of their own, loads those that passed in the order of their file names,
    /// initialises their modules, all providers before all consumers, and gives them the state of the last run back. A
    /// plug-in that fails is reported, and the others run. Once.
    ///
    /// Here and in Stop a plug-in that doesn't return holds up the main thread: past HostOptions::callDeadline a line on
    /// standard error names it, and RequestEnd ends the process. Whoever starts next leaves it out.
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

    /// The user wants the program to end (Ctrl-C, SIGTERM): requests the exit, ends a trial that runs, and where a
    /// plug-in's call is overdue, or becomes so, ends the process with a failure. Any thread, not a signal handler.
    void RequestEnd(int a_exitCode);

    /// Keeps the modules' states. StopWork of the modules, consumers first, and of the mediator; then the executor is closed, the modules are
    /// destroyed, and the plug-ins unloaded. Both groups go in the reverse order of their arrival. What a module raises
    /// is logged with its name. May be called again. Before that the program lets go of what it got from modules, such
    /// as shared pointers to assets: the code that destroys it is the plug-ins'.
    void Stop();

private:
    const std::shared_ptr<MainThreadExecutor> m_executor;
    const std::shared_ptr<ModuleDirectory> m_directory;
    const std::shared_ptr<const HostOptions> m_options;
    const std::shared_ptr<const CallRecords> m_records;
    const std::shared_ptr<CallWatch> m_watch;
    std::shared_ptr<HostMediator> m_mediator;
    std::unique_ptr<ModuleStates> m_states; // null before the start
    const std::unique_ptr<PluginLoader> m_loader;
    bool m_stopped = false;
};

} // namespace kalvento::host
