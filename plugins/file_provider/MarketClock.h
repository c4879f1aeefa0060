#pragma once

#include "time/TimeParts.h"

#include <algorithm>
#include <chrono>
#include <cstdint>

namespace kalvento::files {

/// Which moment of the recorded day it is. Days and seconds are counted as in DayRows.
struct MarketClock {
    using SteadyClock = std::chrono::steady_clock;

    std::int64_t day = 0;
    std::int64_t begin = 0; ///< Second at which it started.
    SteadyClock::time_point started;
    double speed = 0.0; ///< Times real time; 0: the day has passed at once.

    /// Never later than the last second of the day.
    std::int64_t SecondAt(SteadyClock::time_point a_now) const
    {
        const std::int64_t last = (day + 1) * TimeParts::S_secondsOfDay - 1;
        if (speed <= 0.0)
            return last;
        const double gone = std::chrono::duration<double>(a_now - started).count() * speed;
        return gone >= static_cast<double>(last - begin) ? last : begin + static_cast<std::int64_t>(gone);
    }
    /// When SecondAt first gives that second, for a speed above 0.
    SteadyClock::time_point DueOf(std::int64_t a_second) const
    {
        constexpr double longest = 1e9; // seconds; more would overflow the clock
        const std::chrono::duration<double> wait(
            std::min(static_cast<double>(a_second - begin) / speed, longest));
        // Rounded up, so that the clock shows that second when the moment has come.
        return started + std::chrono::duration_cast<SteadyClock::duration>(wait) +
               std::chrono::microseconds(1);
    }
};

} // namespace kalvento::files
