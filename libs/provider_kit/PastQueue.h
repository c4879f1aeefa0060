#pragma once

#include "provider_kit/Served.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace kalvento::internal {

/// What the thread of the past has to do: tasks first, then subscriptions in turn. Any thread but for Take, which is
/// that thread's.
class PastQueue {
public:
    /// A task, or else a subscription whose step is due; neither at the end.
    struct Turn {
        std::function<void()> task;
        ServedPtr served;
    };

    /// Waits for a turn. Meanwhile calls what CallLater was given, as it becomes due.
    Turn Take();
    void Quit();

    void AddTask(std::function<void()> a_task);
    void Add(const ServedPtr& a_served) { Add(std::vector{a_served}); }
    void Add(const std::vector<ServedPtr>& a_served);
    void CallLater(std::chrono::milliseconds a_pause, std::function<void()> a_call);

    /// Sets it aside until its item has news or all are released. With a pause it takes its turn after the pause, which
    /// news of the item doesn't cut short.
    void SetAside(const ServedPtr& a_served, std::optional<std::chrono::milliseconds> a_pause);
    /// Gives one that was set aside such a pause; does nothing where it has been released since.
    void RetryAfter(std::chrono::milliseconds a_pause, const ServedPtr& a_served);
    void ReleaseItem(const std::string& a_isin);
    void ReleaseAll();

private:
    using Clock = std::chrono::steady_clock;
    struct Waiting {
        ServedPtr served;
        bool isRetried = false; // after its pause
    };

    // With the lock held.
    void Pause(Waiting& a_waiting, std::chrono::milliseconds a_pause);
    template<class IsReleased>
    void ReleaseIf(IsReleased a_isReleased);

    std::mutex m_mutex; // of all that follows
    bool m_quit = false;
    std::deque<std::function<void()>> m_tasks;
    std::deque<ServedPtr> m_queue;
    std::vector<Waiting> m_waiting; // those that can't be served until something happens
    std::multimap<Clock::time_point, std::function<void()>> m_later;
    std::condition_variable m_wake;
};

} // namespace kalvento::internal
