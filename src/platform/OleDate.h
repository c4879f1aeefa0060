#pragma once

#include "platform/Export.h"

#include <cmath>
#include <cstdint>
#include <optional>

/// OLE Automation dates and the calendar: the platform's SystemTimeToVariantTime, VariantTimeToSystemTime and
/// VarUdateFromDate. The calendar is the Gregorian one, in years 100 to 9999, without leap seconds. Pure functions, any
/// thread.
namespace OleDate {

/// A moment of the calendar in whole seconds.
struct CalendarParts {
    std::uint32_t year = 0;      // 100 to 9999
    std::uint32_t month = 0;     // 1 to 12
    std::uint32_t day = 0;       // 1 to 31
    std::uint32_t hour = 0;      // 0 to 23
    std::uint32_t minute = 0;    // 0 to 59
    std::uint32_t second = 0;    // 0 to 59
    std::uint32_t dayOfWeek = 0; // 0 is Sunday
    std::uint32_t dayOfYear = 0; // 1 to 366
};

/// A day number and the day's place in its year.
struct DayNumber {
    double value = 0.0;
    std::uint32_t dayOfYear = 0;
};

inline constexpr std::int32_t S_unixEpoch = 25569; ///< 1970-01-01
inline constexpr double S_belowFirst = -657435.0;  ///< day numbers of the calendar lie above this,
inline constexpr double S_aboveLast = 2958466.0;   ///< and below this

inline constexpr std::int64_t S_secondsOfDay = 86400;
/// Half a second in days.
inline constexpr double S_halfSecond = 0.5 / static_cast<double>(S_secondsOfDay);

/// Below zero day numbers are not continuous: -1.25 is six hours after -1. Arithmetic and order go through this pair.
/// Values within half a second of zero stay as they are.
inline double ToContinuous(double a_dayNumber)
{
    if (a_dayNumber > -S_halfSecond)
        return a_dayNumber;
    const double day = std::ceil(a_dayNumber);
    return day - (a_dayNumber - day);
}

inline double FromContinuous(double a_continuous)
{
    if (a_continuous > -S_halfSecond)
        return a_continuous;
    const double day = std::floor(a_continuous);
    return day - a_continuous + day;
}

/// The day number of a calendar time, empty unless every part is real: no year of two digits becomes 19yy, no 30th of
/// February a day of March. Whatever is accepted comes back from ToCalendar with the same parts.
/// Below day 0 the time of day is subtracted.
KALVENTO_API std::optional<DayNumber> FromCalendar(unsigned long a_year, unsigned long a_month,
                                                   unsigned long a_day, unsigned long a_hour,
                                                   unsigned long a_minute, unsigned long a_second);

/// Whole seconds, rounded to the nearest, ties up; the carry runs through midnight, month and year. Empty outside of
/// the calendar (9999-12-31 from 23:59:59.5 on is outside), for infinities and NaN.
KALVENTO_API std::optional<CalendarParts> ToCalendar(double a_dayNumber);

/// Seconds since 1970-01-01 00:00 of the same moment, rounded as by ToCalendar; empty where that is.
KALVENTO_API std::optional<std::int64_t> ToSeconds(double a_dayNumber);

} // namespace OleDate
