#pragma once

#include <cerrno>
#include <system_error>

namespace kalvento::internal {

/// Makes a system call, repeated as long as signals interrupt it. Allocates nothing: may stand after a fork.
template<class Call>
auto Retry(const Call& a_call)
{
    auto result = a_call();
    while (result < 0 && errno == EINTR)
        result = a_call();
    return result;
}

/// The error of the last call; empty where a_isDone.
inline std::error_code ErrorUnless(bool a_isDone)
{
    return a_isDone ? std::error_code() : std::error_code(errno, std::generic_category());
}

} // namespace kalvento::internal
