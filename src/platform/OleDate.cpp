#include "platform/OleDate.h"

#include <array>
#include <chrono>

namespace {

constexpr std::int32_t S_lastDay = 2958465; // 9999-12-31

// A moment of the calendar as a whole day and a second in it, both counting upward on either side of day 0.
struct Moment {
    std::int32_t day = 0;
    std::int32_t secondOfDay = 0;
};

constexpr std::array<std::uint16_t, 13> S_daysBeforeMonth = {0,   0,   31,  59,  90,  120, 151,
                                                             181, 212, 243, 273, 304, 334};

std::uint32_t DayOfYear(std::chrono::year a_year, unsigned a_month, unsigned a_day)
{
    return S_daysBeforeMonth[a_month] + a_day + (a_month > 2 && a_year.is_leap() ? 1U : 0U);
}

std::optional<Moment> ToMoment(double a_dayNumber)
{
    // Written so that a NaN is refused as well.
    if (!(a_dayNumber > OleDate::S_belowFirst && a_dayNumber < OleDate::S_aboveLast))
        return std::nullopt;

    const auto day = static_cast<std::int32_t>(a_dayNumber);
    const double fraction = std::abs(a_dayNumber - day);
    const auto halfSeconds = static_cast<std::int32_t>(fraction * 2 * OleDate::S_secondsOfDay);
    const Moment moment{day, (halfSeconds + 1) / 2};
    if (moment.secondOfDay < OleDate::S_secondsOfDay)
        return moment;
    if (day == S_lastDay)
        return std::nullopt;
    return Moment{day + 1, 0};
}

} // namespace

namespace OleDate {

std::optional<DayNumber> FromCalendar(unsigned long a_year, unsigned long a_month, unsigned long a_day,
                                      unsigned long a_hour, unsigned long a_minute, unsigned long a_second)
{
    // The platform asks for a round trip through the day number. With every part in its range the way back is exact
    // (the error of the fraction stays below a ten-thousandth of a second), so the ranges alone decide.
    if (a_year < 100 || a_year > 9999 || a_month < 1 || a_month > 12 || a_day < 1 || a_day > 31)
        return std::nullopt;
    if (a_hour > 23 || a_minute > 59 || a_second > 59)
        return std::nullopt;

    const std::chrono::year year(static_cast<int>(a_year));
    const auto month = static_cast<unsigned>(a_month);
    const auto day = static_cast<unsigned>(a_day);
    const std::chrono::year_month_day date(year, std::chrono::month(month), std::chrono::day(day));
    if (!date.ok())
        return std::nullopt;

    const auto number =
        static_cast<double>(std::chrono::sys_days(date).time_since_epoch().count() + S_unixEpoch);
    const auto seconds = static_cast<double>((a_hour * 60 + a_minute) * 60 + a_second);
    const double fraction = seconds / static_cast<double>(S_secondsOfDay);
    return DayNumber{number >= 0.0 ? number + fraction : number - fraction, DayOfYear(year, month, day)};
}

std::optional<CalendarParts> ToCalendar(double a_dayNumber)
{
    const auto moment = ToMoment(a_dayNumber);
    if (!moment)
        return std::nullopt;

    const std::chrono::sys_days day{std::chrono::days(moment->day - S_unixEpoch)};
    const std::chrono::year_month_day date(day);
    const auto second = static_cast<std::uint32_t>(moment->secondOfDay);
    CalendarParts parts;
    parts.year = static_cast<std::uint32_t>(static_cast<int>(date.year()));
    parts.month = static_cast<unsigned>(date.month());
    parts.day = static_cast<unsigned>(date.day());
    parts.hour = second / 3600;
    parts.minute = second / 60 % 60;
    parts.second = second % 60;
    parts.dayOfWeek = std::chrono::weekday(day).c_encoding();
    parts.dayOfYear = DayOfYear(date.year(), parts.month, parts.day);
    return parts;
}

std::optional<std::int64_t> ToSeconds(double a_dayNumber)
{
    const auto moment = ToMoment(a_dayNumber);
    if (!moment)
        return std::nullopt;
    return (moment->day - S_unixEpoch) * S_secondsOfDay + moment->secondOfDay;
}

} // namespace OleDate
