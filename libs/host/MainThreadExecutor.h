#pragma once

#include "platform/WakeUp.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <type_traits>

namespace kalvento::host {

/// The functions that wait for the main thread, which is the one that constructs this. It has no loop of its own: a
/// program either lets RunUntil loop, or waits for the descriptor in its toolkit's loop and calls RunPending.
class MainThreadExecutor {
public:
    /// Raises std::system_error where the system gives no descriptor.
    MainThreadExecutor();
    MainThreadExecutor(const MainThreadExecutor&) = delete;
    MainThreadExecutor& operator=(const MainThreadExecutor&) = delete;
    /// Closes. No other thread may be in a call by then.
    ~MainThreadExecutor();

    bool IsMainThread() const { return std::this_thread::get_id() == m_mainThread; }

    /// Has the function called on the main thread, after all that was posted before. What it raises is logged. After
    /// Close it is dropped: destroyed uncalled, on the caller's thread. Any thread.
    void Post(std::function<void()> a_function);

    /// Whether Close was called. Any thread.
    bool IsClosed();

    /// Calls the function on the main thread and waits for its answer; on the main thread itself it is called at once.
    /// Empty where the function raised, which is logged, and where the main thread no longer has time for it
    /// (EndWaiting, Close): then it isn't called later either, so it may refer to what is on the caller's stack. Any
    /// thread.
    template<typename Function>
    std::optional<std::invoke_result_t<Function&>> CallAndWait(Function a_function)
    {
        std::optional<std::invoke_result_t<Function&>> answer;
        RunAndWait([&] { answer = a_function(); });
        return answer;
    }

    /// Readable as long as a function waits; for poll, or for a toolkit that watches descriptors. Not to be read from.
    int GetFd() const { return m_event.GetFd(); }

    // The rest is for the main thread.

    /// Calls what waits now, but not what that posts: a loop around it gets its turn. May be called from inside a
    /// posted function, as by a dialog's own loop; the order holds.
    void RunPending();
    /// Calls functions as they come until a_done, which is asked before each of them, says true, or until Close or the
    /// deadline. A thread that makes a_done true posts something afterwards. True where a_done did.
    bool RunUntil(const std::function<bool()>& a_done,
                  std::optional<std::chrono::steady_clock::time_point> a_deadline = std::nullopt);
    /// From now on CallAndWait returns empty on other threads, and so do those that wait, except the one whose function
    /// runs. For a main thread that is about to wait for worker threads.
    void EndWaiting();
    /// Drops what waits, and from now on what comes. May be called again.
    void Close();

private:
    void RunAndWait(const std::function<void()>& a_function);
    bool RunOne();

    const std::thread::id m_mainThread = std::this_thread::get_id();
    kalvento::internal::WakeUp m_event; // up exactly as long as m_waiting isn't empty
    std::mutex m_mutex;                 // of all below
    std::condition_variable m_answered;
    std::deque<std::function<void()>> m_waiting;
    bool m_waitingEnded = false;
    bool m_closed = false;
};

} // namespace kalvento::host
