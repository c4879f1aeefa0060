#pragma once

#include "platform/WakeUp.h"

#include <atomic>
#include <mutex>
#include <set>

/// Ends whatever waits for the server: connecting, a statement that runs, a wait for notifications. A server that hangs
/// answers nobody, not even a request to cancel, so the sockets are shut on this side. Safe from any thread; works
/// once.
class SqlInterrupt {
public:
    /// Raises std::system_error where the system has no more descriptors.
    SqlInterrupt() = default;

    /// All that waits now or later with this object gives up at once.
    void Interrupt();
    bool IsInterrupted() const { return m_interrupted; }
    /// Becomes readable with Interrupt and stays so.
    int GetFd() const { return m_wake.GetFd(); }

    /// From now on Interrupt shuts the socket down too, at once where it came before.
    void Add(int a_socket);
    /// Before the socket is closed: its number may be another file's afterwards.
    void Remove(int a_socket);

    SqlInterrupt(const SqlInterrupt&) = delete;
    SqlInterrupt& operator=(const SqlInterrupt&) = delete;

private:
    kalvento::internal::WakeUp m_wake;
    std::atomic<bool> m_interrupted = false;
    std::mutex m_mutex;
    std::set<int> m_sockets;
};
