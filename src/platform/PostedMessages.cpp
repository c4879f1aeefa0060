#include "platform/PostedMessages.h"

#include <utility>

namespace kalvento::internal {

PostedMessages& PostedMessages::OfProcess()
{
    // Threads of plug-ins may still post while static objects die.
    static auto* const S_posted = new PostedMessages;
    return *S_posted;
}

void PostedMessages::SetWakeUp(std::function<void()> a_wakeUp)
{
    const std::scoped_lock lock(m_mutex);
    m_wakeUp.swap(a_wakeUp);
    m_isWakeUpDue = false;
    if (!m_waiting.empty())
        WakeUp();
}

void PostedMessages::Post(const MSG& a_message, std::shared_ptr<const void> a_payload)
{
    const std::scoped_lock lock(m_mutex);
    m_waiting.push_back({a_message, std::move(a_payload)});
    WakeUp();
}

std::size_t PostedMessages::Deliver(const Handler& a_handler)
{
    std::size_t most = 0;
    {
        const std::scoped_lock lock(m_mutex);
        m_isWakeUpDue = false;
        most = m_waiting.size();
    }
    std::size_t handedOut = 0;
    for (; handedOut < most; ++handedOut) {
        const std::optional<Posted> next = Take();
        if (!next)
            break;
        a_handler(next->message);
    }
    return handedOut;
}

void PostedMessages::Clear()
{
    std::deque<Posted> dropped; // released without the lock: what dies with a payload may post
    const std::scoped_lock lock(m_mutex);
    dropped.swap(m_waiting);
}

// Nothing where an inner Deliver took the rest.
std::optional<PostedMessages::Posted> PostedMessages::Take()
{
    const std::scoped_lock lock(m_mutex);
    if (m_waiting.empty())
        return std::nullopt;
    std::optional<Posted> next(std::move(m_waiting.front()));
    m_waiting.pop_front();
    if (!m_waiting.empty())
        WakeUp();
    return next;
}

// Under the lock.
void PostedMessages::WakeUp()
{
    if (m_isWakeUpDue || !m_wakeUp)
        return;
    m_isWakeUpDue = true;
    m_wakeUp();
}

} // namespace kalvento::internal
