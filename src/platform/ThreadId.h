#pragma once

#include "platform/Export.h"

#include <cstdint>

/// The operating system's number of the calling thread: never 0, and no two living threads share one.
KALVENTO_API std::uint32_t GetCurrentThreadId();
