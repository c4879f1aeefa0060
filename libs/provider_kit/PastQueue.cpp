#include "provider_kit/PastQueue.h"

#include <algorithm>
#include <utility>

namespace kalvento::internal {

PastQueue::Turn PastQueue::Take()
{
    std::unique_lock lock(m_mutex);
    while (!m_quit) {
        if (!m_later.empty() && m_later.begin()->first <= Clock::now()) {
            const auto due = m_later.extract(m_later.begin());
            lock.unlock();
            due.mapped()();
            lock.lock();
        } else if (!m_tasks.empty()) {
            Turn turn{std::move(m_tasks.front()), nullptr};
            m_tasks.pop_front();
            return turn;
        } else if (!m_queue.empty()) {
            Turn turn{nullptr, std::move(m_queue.front())};
            m_queue.pop_front();
            return turn;
        } else if (m_later.empty()) {
            m_wake.wait(lock);
        } else {
            m_wake.wait_until(lock, m_later.begin()->first);
        }
    }
    return {};
}

void PastQueue::Quit()
{
    const std::lock_guard lock(m_mutex);
    m_quit = true;
    m_wake.notify_one();
}

void PastQueue::AddTask(std::function<void()> a_task)
{
    const std::lock_guard lock(m_mutex);
    m_tasks.push_back(std::move(a_task));
    m_wake.notify_one();
}

void PastQueue::Add(const std::vector<ServedPtr>& a_served)
{
    const std::lock_guard lock(m_mutex);
    m_queue.insert(m_queue.end(), a_served.begin(), a_served.end());
    m_wake.notify_one();
}

void PastQueue::CallLater(std::chrono::milliseconds a_pause, std::function<void()> a_call)
{
    const std::lock_guard lock(m_mutex);
    m_later.emplace(Clock::now() + a_pause, std::move(a_call));
    m_wake.notify_one();
}

void PastQueue::SetAside(const ServedPtr& a_served, std::optional<std::chrono::milliseconds> a_pause)
{
    const std::lock_guard lock(m_mutex);
    std::erase_if(m_waiting, [](const Waiting& a_waiting) { return a_waiting.served->IsOver(); });
    m_waiting.push_back({a_served});
    if (a_pause)
        Pause(m_waiting.back(), *a_pause);
}

void PastQueue::RetryAfter(std::chrono::milliseconds a_pause, const ServedPtr& a_served)
{
    const std::lock_guard lock(m_mutex);
    const auto waiting = std::ranges::find(m_waiting, a_served, &Waiting::served);
    if (waiting != m_waiting.end())
        Pause(*waiting, a_pause);
}

void PastQueue::Pause(Waiting& a_waiting, std::chrono::milliseconds a_pause)
{
    a_waiting.isRetried = true;
    m_later.emplace(Clock::now() + a_pause, [this, served = a_waiting.served] {
        const std::lock_guard lock(m_mutex);
        ReleaseIf([&](const Waiting& a_other) { return a_other.served == served && a_other.isRetried; });
    });
    m_wake.notify_one();
}

void PastQueue::ReleaseItem(const std::string& a_isin)
{
    const std::lock_guard lock(m_mutex);
    ReleaseIf([&](const Waiting& a_waiting) {
        return !a_waiting.isRetried && a_waiting.served->GetIsin() == a_isin;
    });
}

void PastQueue::ReleaseAll()
{
    const std::lock_guard lock(m_mutex);
    ReleaseIf([](const Waiting& /*a_waiting*/) { return true; });
}

template<class IsReleased>
void PastQueue::ReleaseIf(IsReleased a_isReleased)
{
    for (const Waiting& waiting : m_waiting)
        if (a_isReleased(waiting))
            m_queue.push_back(waiting.served);
    std::erase_if(m_waiting, a_isReleased);
    m_wake.notify_one();
}

} // namespace kalvento::internal
