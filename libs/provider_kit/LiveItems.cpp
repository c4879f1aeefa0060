#include "provider_kit/LiveItems.h"

#include "provider_kit/KnownInstruments.h"
#include "provider_kit/SessionState.h"

#include <utility>

namespace kalvento::internal {

std::set<std::string> LiveItems::Take()
{
    std::unique_lock lock(m_mutex);
    std::set<std::string> items;
    while (items.empty()) {
        m_wake.wait(lock, [this] { return m_quit || !m_marked.empty(); });
        if (m_quit)
            return {};
        items.swap(m_marked);
        for (const auto& [isin, failure] : m_failed)
            if (failure.isPending)
                items.erase(isin);
    }
    return items;
}

void LiveItems::Quit()
{
    const std::lock_guard lock(m_mutex);
    m_quit = true;
    m_wake.notify_one();
}

void LiveItems::Mark(const std::string& a_isin)
{
    {
        const std::lock_guard lock(m_mutex);
        m_marked.insert(a_isin);
    }
    m_wake.notify_one(); // without contending for the lock: every live row comes this way
}

void LiveItems::Restart(const std::set<std::string>& a_items)
{
    const std::lock_guard lock(m_mutex);
    m_failed.clear();
    m_marked.insert(a_items.begin(), a_items.end());
    m_wake.notify_one();
}

std::chrono::milliseconds LiveItems::NoteFailure(const std::string& a_isin)
{
    const std::lock_guard lock(m_mutex);
    Failure& failure = m_failed[a_isin];
    failure.isPending = true;
    return failure.pause.Take();
}

void LiveItems::Retry(const std::string& a_isin)
{
    const std::lock_guard lock(m_mutex);
    const auto failed = m_failed.find(a_isin);
    if (failed == m_failed.end())
        return;
    failed->second.isPending = false;
    m_marked.insert(a_isin);
    m_wake.notify_one();
}

void LiveItems::ForgetFailure(const std::string& a_isin)
{
    const std::lock_guard lock(m_mutex);
    m_failed.erase(a_isin);
}

bool LiveItems::HasSession(const std::string& a_isin) const
{
    const std::lock_guard lock(m_mutex);
    return m_sessions.contains(a_isin);
}

void LiveItems::SetSession(const std::string& a_isin, std::shared_ptr<SessionState> a_session)
{
    const std::lock_guard lock(m_mutex);
    m_sessions[a_isin] = std::move(a_session);
}

void LiveItems::DropSession(const std::string& a_isin)
{
    const std::lock_guard lock(m_mutex);
    m_sessions.erase(a_isin);
}

void LiveItems::DropStaleSessions(const InstrumentList& a_before, const InstrumentList& a_now)
{
    const std::lock_guard lock(m_mutex);
    std::erase_if(m_sessions, [&](const auto& a_session) {
        const StoreInstrument* const known = a_before.Find(a_session.first);
        return known != nullptr && KnownInstruments::HasOtherRows(*known, a_now.Find(a_session.first));
    });
}

std::shared_ptr<SessionState> LiveItems::UseSession(const std::string& a_isin,
                                                    const std::function<bool()>& a_isWanted)
{
    const std::lock_guard lock(m_mutex);
    const auto session = m_sessions.find(a_isin);
    if (session == m_sessions.end())
        return nullptr;
    if (a_isWanted())
        return session->second;
    m_sessions.erase(session);
    return nullptr;
}

} // namespace kalvento::internal
