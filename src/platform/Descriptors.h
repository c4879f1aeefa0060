#pragma once

#include "platform/Export.h"

#include <chrono>
#include <optional>
#include <span>

/// What the system calls a descriptor: a file, a pipe, a socket or an event that a thread can wait for.
namespace kalvento::internal::Descriptors {

struct Awaited {
    int fd = -1;            ///< Below 0: skipped.
    bool isToWrite = false; ///< Waits until it takes bytes, instead of until it has some.
    bool isReady = false;   ///< The answer: that call won't wait now; it may fail, or report the end.
};

/// Waits until one of them is ready and sets isReady of each; false where the deadline comes first. A deadline in the
/// past only looks, an empty one waits for ever; signals don't end the wait. Raises std::system_error where the system
/// refuses.
KALVENTO_API bool WaitForAny(std::span<Awaited> a_awaited,
                             std::optional<std::chrono::steady_clock::time_point> a_deadline);

/// Ends a connection for both sides without closing it, so that a thread waiting for it returns. Any thread.
KALVENTO_API void ShutDownSocket(int a_socket);

} // namespace kalvento::internal::Descriptors
