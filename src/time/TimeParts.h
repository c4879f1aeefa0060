#pragma once

#include "platform/OleDate.h"
#include "time/EInterval.h"
#include "time/NDateTime.h"

#include <chrono>
#include <cstdint>
#include <utility>

/// Times as whole numbers and back: days and seconds since 1970-01-01 on the clock that a time shows, hours, minutes and
/// seconds of a day. Inline, for rows are placed with it.
namespace TimeParts {

inline constexpr std::int64_t S_secondsOfDay = OleDate::S_secondsOfDay;
inline constexpr std::int64_t S_secondsOfHour = 3600;
inline constexpr int S_minutesOfDay = static_cast<int>(S_secondsOfDay / 60);

/// A time of day.
struct Clock {
    std::uint32_t hour = 0;
    std::uint32_t minute = 0;
    std::uint32_t second = 0;
};

constexpr Clock ClockOf(std::uint32_t a_secondOfDay)
{
    return {a_secondOfDay / static_cast<std::uint32_t>(S_secondsOfHour), a_secondOfDay / 60 % 60,
            a_secondOfDay % 60};
}

template<typename Number>
constexpr Number SecondOfDay(Number a_hour, Number a_minute, Number a_second)
{
    return (a_hour * 60 + a_minute) * 60 + a_second;
}

/// Seconds of one unit of seconds, minutes and hours; 0 for all other intervals.
constexpr std::int64_t SecondsOfUnit(EInterval a_interval)
{
    switch (a_interval) {
    case EIntervalSecond:
        return 1;
    case EIntervalMinute:
        return 60;
    case EIntervalHour:
        return S_secondsOfHour;
    default:
        return 0;
    }
}

/// The day in which a second lies.
constexpr std::int64_t DayOf(std::int64_t a_second)
{
    return (a_second >= 0 ? a_second : a_second - S_secondsOfDay + 1) / S_secondsOfDay;
}

inline std::int64_t DayOf(const NDateTime& a_time)
{
    return std::int64_t{a_time.GetAbsoluteDay()} - OleDate::S_unixEpoch;
}

/// The whole second, without the counter.
inline std::int64_t SecondOf(const NDateTime& a_time)
{
    return DayOf(a_time) * S_secondsOfDay + a_time.GetAbsoluteTime();
}

inline bool IsSecondEarlier(const NDateTime& a_left, const NDateTime& a_right)
{
    return std::pair(a_left.GetAbsoluteDay(), a_left.GetAbsoluteTime()) <
           std::pair(a_right.GetAbsoluteDay(), a_right.GetAbsoluteTime());
}

/// A second of a day; of status invalid outside of the years that NDateTime's parts can hold.
inline NDateTime TimeOf(std::chrono::sys_days a_day, std::uint32_t a_secondOfDay, unsigned long a_counter = 0)
{
    const std::chrono::year_month_day date(a_day);
    const Clock clock = ClockOf(a_secondOfDay);
    return {static_cast<unsigned long>(static_cast<int>(date.year())),
            static_cast<unsigned int>(date.month()),
            static_cast<unsigned int>(date.day()),
            clock.hour,
            clock.minute,
            clock.second,
            a_counter};
}

inline NDateTime TimeOf(std::int64_t a_second, unsigned long a_counter = 0)
{
    const std::int64_t day = DayOf(a_second);
    return TimeOf(std::chrono::sys_days(std::chrono::days(day)),
                  static_cast<std::uint32_t>(a_second - day * S_secondsOfDay), a_counter);
}

/// The date of a_time at a time of day, counter 0.
inline NDateTime AtTimeOfDay(const NDateTime& a_time, unsigned long a_hour, unsigned long a_minute,
                             unsigned long a_second)
{
    return {a_time.GetYear(), a_time.GetMonth(), a_time.GetDay(), a_hour, a_minute, a_second, 0};
}

/// The beginning of the day; the beginning of all time, which has no calendar date, as it is.
inline NDateTime MidnightOf(const NDateTime& a_time)
{
    return a_time.GetMonth() == 0 ? a_time : AtTimeOfDay(a_time, 0, 0, 0);
}

/// Midnight after the date of a_time.
inline NDateTime NextMidnight(const NDateTime& a_time)
{
    NDateTime date(a_time.GetYear(), a_time.GetMonth(), a_time.GetDay());
    date.ShiftDays(1);
    return AtTimeOfDay(date, 0, 0, 0);
}

} // namespace TimeParts

namespace kalvento::internal {

/// The words of midnight of a date in the years 0 to 4095, for times that are put together by hand.
class MidnightWords {
public:
    /// a_day: since 1970-01-01.
    explicit MidnightWords(std::int64_t a_day)
    {
        const std::chrono::year_month_day date{std::chrono::sys_days(std::chrono::days(a_day))};
        const std::chrono::sys_days newYear{date.year() / std::chrono::January / 1};
        m_calendar = PackDate(static_cast<unsigned long>(static_cast<int>(date.year())),
                              static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
        m_clock =
            DayOfYearField::Pack(static_cast<unsigned long>(a_day - newYear.time_since_epoch().count() + 1));
    }

    /// That day's time; the day number stays what the caller says.
    NDateTime At(double a_dayNumber, std::uint32_t a_secondOfDay, unsigned long a_counter) const
    {
        const TimeParts::Clock clock = TimeParts::ClockOf(a_secondOfDay);
        return NDateTimeWords::Make(
            a_dayNumber, COleDateTime::valid,
            m_calendar | clock.hour * HourField::S_one | clock.minute * MinuteField::S_one,
            m_clock | clock.second * SecondField::S_one | CounterField::Pack(a_counter));
    }

private:
    std::uint32_t m_calendar = 0;
    std::uint32_t m_clock = 0;
};

} // namespace kalvento::internal
