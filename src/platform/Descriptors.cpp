#include "platform/Descriptors.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <vector>

namespace kalvento::internal::Descriptors {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// For poll, rounded up: rounded down, the last millisecond would be spent looping.
int TimeTo(std::optional<Clock::time_point> a_deadline)
{
    if (!a_deadline)
        return -1;
    const auto now = Clock::now();
    constexpr milliseconds longest = std::chrono::hours(1); // then poll is called again
    const auto left = std::chrono::ceil<milliseconds>(std::max(*a_deadline, now) - now);
    return static_cast<int>(std::min(left, longest).count());
}

} // namespace

bool WaitForAny(std::span<Awaited> a_awaited, std::optional<Clock::time_point> a_deadline)
{
    std::vector<pollfd> requests;
    requests.reserve(a_awaited.size());
    for (const Awaited& awaited : a_awaited)
        requests.push_back({awaited.fd, static_cast<short>(awaited.isToWrite ? POLLOUT : POLLIN), 0});
    for (;;) {
        const int count = ::poll(requests.data(), requests.size(), TimeTo(a_deadline));
        if (count < 0 && errno != EINTR)
            throw std::system_error(errno, std::generic_category(), "poll");
        const bool isOver = a_deadline && Clock::now() >= *a_deadline;
        if (count <= 0 && !isOver)
            continue;
        for (std::size_t place = 0; place < requests.size(); ++place)
            a_awaited[place].isReady = count > 0 && requests[place].revents != 0;
        return count > 0;
    }
}

void ShutDownSocket(int a_socket)
{
    ::shutdown(a_socket, SHUT_RDWR);
}

} // namespace kalvento::internal::Descriptors
