#include "platform/WakeUp.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <system_error>

namespace kalvento::internal {

WakeUp::WakeUp(const char* a_purpose) : m_event(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (!m_event.IsOpen())
        throw std::system_error(errno, std::generic_category(), a_purpose);
}

void WakeUp::Raise() noexcept
{
    const int cause = errno;
    const std::uint64_t one = 1;
    // It fails only where so many raises are pending that the count is full.
    [[maybe_unused]] const auto written = ::write(m_event.Get(), &one, sizeof(one));
    errno = cause;
}

bool WakeUp::Lower() noexcept
{
    std::uint64_t count = 0;
    return ::read(m_event.Get(), &count, sizeof(count)) > 0;
}

} // namespace kalvento::internal
