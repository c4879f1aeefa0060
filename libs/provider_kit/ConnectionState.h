#pragma once

#include "modules/EConnectionStatus.h"

#include <cstdint>
#include <mutex>
#include <string>
#include <utility>

namespace kalvento::internal {

/// What the user switched, and what the store has said of its connection since. Any thread.
class ConnectionState {
public:
    /// False where it is already switched so.
    bool Switch(bool a_on)
    {
        const std::lock_guard lock(m_mutex);
        if (m_isOn == a_on)
            return false;
        m_isOn = a_on;
        m_isConnected = false;
        m_breakReason.clear();
        ++m_news;
        return true;
    }
    /// The store couldn't even begin to connect.
    void Fail(std::wstring a_reason)
    {
        const std::lock_guard lock(m_mutex);
        m_breakReason = std::move(a_reason);
    }
    void Break(std::wstring a_reason)
    {
        const std::lock_guard lock(m_mutex);
        m_isConnected = false;
        m_breakReason = std::move(a_reason);
        ++m_news;
    }
    /// The store is connected, which counts from Accept on. Returns the number of this news.
    std::uint64_t Restore()
    {
        const std::lock_guard lock(m_mutex);
        return ++m_news;
    }
    /// False where there is newer news, or it is switched off.
    bool Accept(std::uint64_t a_news)
    {
        const std::lock_guard lock(m_mutex);
        if (!m_isOn || m_news != a_news)
            return false;
        m_isConnected = true;
        m_breakReason.clear();
        return true;
    }

    /// Changes with each news.
    std::uint64_t GetNews() const
    {
        const std::lock_guard lock(m_mutex);
        return m_news;
    }
    bool IsOnSince(std::uint64_t a_news) const
    {
        const std::lock_guard lock(m_mutex);
        return m_isOn && m_news == a_news;
    }
    bool IsConnected() const { return GetStatus() == EConnectionStatusConnected; }
    EConnectionStatus GetStatus() const
    {
        const std::lock_guard lock(m_mutex);
        if (!m_isOn)
            return EConnectionStatusDisconnected;
        return m_isConnected ? EConnectionStatusConnected : EConnectionStatusConnecting;
    }
    /// Why the connection broke; empty where it didn't.
    std::wstring GetBreakReason() const
    {
        const std::lock_guard lock(m_mutex);
        return m_breakReason;
    }

private:
    mutable std::mutex m_mutex; // of all that follows
    bool m_isOn = false;
    bool m_isConnected = false;
    std::uint64_t m_news = 0;
    std::wstring m_breakReason;
};

} // namespace kalvento::internal
