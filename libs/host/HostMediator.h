#pragma once

#include "modules/IAppMediator.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace kalvento::host {

class CallWatch;
class IHostView;
class MainThreadExecutor;
class ModuleDirectory;

/// What the mediators of all hosts have in common: it finds modules, and takes news from providers, texts to be shown
/// and the exit to the main thread and to the view there. What concerns windows is left to WindowlessMediator and to
/// the mediator of a host with windows. Threads as IAppMediator says.
class HostMediator : public IAppMediator {
public:
    /// On the main thread. The view is not owned; it is no longer called once the executor is closed.
    HostMediator(IHostView& a_view, std::shared_ptr<MainThreadExecutor> a_executor,
                 std::shared_ptr<ModuleDirectory> a_directory);

    /// A module can be found once its Init has ended.
    ProviderBase* GetProviderByName(std::wstring_view a_name) override;
    IGenericModule* GetModuleByName(const std::wstring& a_name) override;

    /// A worker thread waits for the answer; -1, as without a mediator, where the host is about to end.
    int ShowMessage(std::wstring_view a_caption, std::wstring_view a_text, unsigned int a_flags) override;
    void ShowMessage(std::wstring_view a_text) override;
    void ShowNotificationMessage(std::wstring_view a_text) override;

    void AssetsChanged(ProviderBase* a_provider) override;
    void NotifyChangeConnectionStatus() override;
    void AddOperationsToDoToProgress(unsigned int a_count) override;
    void SetOperationsDidToProgress(unsigned int a_count) override;

    void PostToMainThread(std::function<void()> a_function) override;
    /// HasExited is true when all that was posted before has been called.
    void RequestExit(int a_exitCode) override;

    /// Whether the exit that was asked for has come. Main thread.
    bool HasExited() const { return m_hasExited; }
    /// From now on the time that a question to the user is open doesn't count for a plug-in's call. Before the start.
    void SetCallWatch(std::shared_ptr<CallWatch> a_watch) { m_watch = std::move(a_watch); }
    /// Empty until RequestExit. Any thread.
    std::optional<int> GetExitCode() const;

protected:
    MainThreadExecutor& GetExecutor() const { return *m_executor; }

private:
    void TellProgress();
    // A text is shown at once on the main thread, so that what a module says while it stops is still seen.
    void CallOrPost(std::function<void()> a_function);

    IHostView& m_view;
    const std::shared_ptr<MainThreadExecutor> m_executor;
    const std::shared_ptr<ModuleDirectory> m_directory;
    std::shared_ptr<CallWatch> m_watch;       // null without a host
    bool m_hasExited = false;                 // main thread only
    std::atomic<bool> m_statusPosted = false; // a change of status is on its way to the view
    std::atomic<bool> m_progressPosted = false;

    mutable std::mutex m_mutex; // of all below
    std::optional<int> m_exitCode;
    unsigned int m_operationsDone = 0;
    unsigned int m_operationsTotal = 0;
};

} // namespace kalvento::host
