#include "assets/IntervalLimits.h"

#include "time/DateTimeTools.h"

#include <array>

namespace {

// By the numbers of EInterval.
constexpr std::array<unsigned int, 9> S_sessions = {1, 5, 15, 15, 30, 10000, 10000, 10000, 10000};

} // namespace

std::optional<RangeData::Dates> IntervalLimits::GetDatesLimit(EInterval a_interval, const NDateTime& a_to)
{
    // A value outside EInterval's names counts as the empty interval.
    const unsigned int sessions = S_sessions[a_interval < S_sessions.size() ? a_interval : EIntervalEmpty];
    const auto from = DateTimeTools::GetDateFromForSessionCount(sessions, a_to);
    if (!from)
        return std::nullopt;
    return RangeData::Dates{*from, a_to};
}
