#pragma once

#include "time/TimeParts.h"

#include <cstdint>
#include <vector>

namespace kalvento::internal {

/// The slots of a day: at what time each begins, and in which one each second, minute or hour lies. Lookups, so that no
/// window start needs a calendar conversion. Never changes once made, so all windows of a class share one.
struct DayTable {
    std::vector<unsigned short> hour; ///< By slot, as the two below.
    std::vector<unsigned short> minute;
    std::vector<unsigned short> second;
    std::vector<int> slot; ///< By place in the day.

    explicit DayTable(int a_slots)
    {
        const auto length = static_cast<std::uint32_t>(TimeParts::S_secondsOfDay / a_slots);
        for (int each = 0; each < a_slots; ++each) {
            const TimeParts::Clock clock = TimeParts::ClockOf(static_cast<std::uint32_t>(each) * length);
            hour.push_back(static_cast<unsigned short>(clock.hour));
            minute.push_back(static_cast<unsigned short>(clock.minute));
            second.push_back(static_cast<unsigned short>(clock.second));
            slot.push_back(each);
        }
    }
};

} // namespace kalvento::internal
