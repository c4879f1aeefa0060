#include "kalvento/Interruption.h"

#include "text_rows/ToolContext.h"

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>
#include <sys/eventfd.h>
#include <unistd.h>

namespace kalvento::tool {

namespace {

// A handler can reach nothing but globals. Lock-free, so it may be read there.
std::atomic<int> S_descriptor{-1};
static_assert(std::atomic<int>::is_always_lock_free);

void HandleSignal(int)
{
    const int savedError = errno;
    const std::uint64_t one = 1;
    // Nothing can be done in a handler about a write that fails.
    [[maybe_unused]] const auto written = write(S_descriptor, &one, sizeof one);
    errno = savedError;
}

/// The one descriptor of the process. It stays open: a signal that another thread is still handling may write to it
/// after the command that waited has gone, and a number given back could by then be somebody else's file.
int SharedDescriptor()
{
    static const int descriptor = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    return descriptor;
}

} // namespace

Interruption::Interruption() : m_descriptor(SharedDescriptor())
{
    if (m_descriptor < 0)
        throw ToolError(EExitFailure, std::string("can't wait for signals: ") + std::strerror(errno));
    // What an earlier command was told is no news to this one.
    std::uint64_t count = 0;
    [[maybe_unused]] const auto drained = read(m_descriptor, &count, sizeof count);
    S_descriptor = m_descriptor;
    struct sigaction action {};
    action.sa_handler = HandleSignal;
    sigaction(SIGINT, &action, &m_oldInterrupt);
    sigaction(SIGTERM, &action, &m_oldTerminate);
    sigaction(SIGHUP, nullptr, &m_oldHangUp);
    if (m_oldHangUp.sa_handler != SIG_IGN)
        sigaction(SIGHUP, &action, nullptr);
}

Interruption::~Interruption()
{
    sigaction(SIGINT, &m_oldInterrupt, nullptr);
    sigaction(SIGTERM, &m_oldTerminate, nullptr);
    sigaction(SIGHUP, &m_oldHangUp, nullptr);
}

bool Interruption::IsRaised() const
{
    std::uint64_t count = 0;
    if (read(m_descriptor, &count, sizeof count) != sizeof count)
        return false;
    // Stays raised for whoever asks or waits next.
    [[maybe_unused]] const auto written = write(m_descriptor, &count, sizeof count);
    return true;
}

} // namespace kalvento::tool
