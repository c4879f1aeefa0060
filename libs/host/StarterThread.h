#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <thread>

namespace kalvento::host {

class MainThreadExecutor;

/// A thread that does one step after another for the main thread, and is abandoned when a step doesn't return: a thread
/// ended from outside would take its locks along. All operations on the main thread.
class StarterThread {
public:
    /// Raises std::system_error where the system gives no thread.
    explicit StarterThread(std::shared_ptr<MainThreadExecutor> a_executor);
    StarterThread(const StarterThread&) = delete;
    StarterThread& operator=(const StarterThread&) = delete;
    /// Ends the thread, which does no step.
    ~StarterThread();

    /// Has the step done and serves the executor meanwhile. The step must not raise. False: it wasn't done by the
    /// deadline; the thread is on its own now and ends with the step, which must own all that it uses. No more steps
    /// then.
    bool Run(std::function<void()> a_step, std::chrono::steady_clock::time_point a_deadline);
    /// Ends the thread, unless it was abandoned. May be called again.
    void End();

private:
    struct Shared;
    static void Loop(const std::shared_ptr<Shared>& a_shared);

    const std::shared_ptr<Shared> m_shared;
    std::thread m_thread;
};

} // namespace kalvento::host
