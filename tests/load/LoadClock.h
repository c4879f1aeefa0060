#pragma once

#include <chrono>

/// The moment in nanoseconds on the steady clock, the same in all plug-ins of a process; a double holds it exactly for
/// the first hundred days after the machine's start.
inline double NowNanoseconds()
{
    return static_cast<double>(std::chrono::duration_cast<std::chrono::nanoseconds>(
                                   std::chrono::steady_clock::now().time_since_epoch())
                                   .count());
}
