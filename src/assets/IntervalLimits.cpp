#include "assets/IntervalLimits.h"

#include "time/DateTimeTools.h"

namespace {

// A value outside EInterval's names counts as the empty interval.
unsigned int SessionsOf(EInterval a_interval)
{
    switch (a_interval) {
    case EIntervalTick:
        return 5;
    case EIntervalSecond:
    case EIntervalMinute:
        return 15;
    case EIntervalHour:
        return 30;
    case EIntervalDay:
    case EIntervalWeek:
    case EIntervalMonth:
    case EIntervalYear:
        return 10000;
    case EIntervalEmpty:
        break;
    }
    return 1;
}

} // namespace

std::optional<RangeData::Dates> IntervalLimits::GetDatesLimit(EInterval a_interval, const NDateTime& a_to)
{
    const auto from = DateTimeTools::GetDateFromForSessionCount(SessionsOf(a_interval), a_to);
    if (!from)
        return std::nullopt;
    return RangeData::Dates{*from, a_to};
}
