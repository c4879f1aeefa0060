#include "platform/ThreadId.h"

#include <unistd.h>

std::uint32_t GetCurrentThreadId()
{
    return static_cast<std::uint32_t>(::gettid());
}
