#include "time/DateTimeTools.h"

#include "platform/CodePage.h"
#include "platform/LocalZone.h"
#include "time/DateTimeConverter.h"
#include "time/LocalTime.h"

#include <boost/date_time/gregorian/gregorian_types.hpp>
#include <fmt/format.h>
#include <fmt/xchar.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <stdexcept>
#include <system_error>

namespace {

// Unsigned decimal up to the first non-digit; empty without a digit and above 32 bits.
std::optional<std::uint32_t> ReadDigits(std::string_view a_text)
{
    std::uint32_t value = 0;
    const auto [end, error] = std::from_chars(a_text.data(), a_text.data() + a_text.size(), value);
    return error == std::errc() ? std::optional(value) : std::nullopt;
}

NDateTime AtTime(unsigned long a_year, unsigned long a_month, unsigned long a_day, std::string_view a_time)
{
    const std::uint32_t time = ReadDigits(a_time).value_or(0);
    return {a_year, a_month, a_day, time / 10000, time % 10000 / 100, time % 100, 0};
}

// The date of a text of exactly so many characters, as its number; empty for 0 as well.
std::optional<std::uint32_t> ReadDateNumber(std::string_view a_text, std::size_t a_length)
{
    if (a_text.size() != a_length)
        return std::nullopt;
    const auto number = ReadDigits(a_text);
    return number.value_or(0) != 0 ? number : std::nullopt;
}

// scanf's "%u": white space, a sign, digits. The text moves on past what was read.
std::optional<std::uint32_t> ScanUnsigned(std::string_view& a_text)
{
    constexpr std::string_view digits = "0123456789";

    a_text.remove_prefix(std::min(a_text.find_first_not_of(" \t\n\v\f\r"), a_text.size()));
    const bool isNegative = a_text.starts_with('-');
    if (isNegative || a_text.starts_with('+'))
        a_text.remove_prefix(1);
    const std::size_t length = std::min(a_text.find_first_not_of(digits), a_text.size());
    if (length == 0)
        return std::nullopt;
    const std::uint32_t value =
        ReadDigits(a_text.substr(0, length)).value_or(std::numeric_limits<std::uint32_t>::max());
    a_text.remove_prefix(length);
    return isNegative ? 0U - value : value;
}

bool SkipDash(std::string_view& a_text)
{
    if (!a_text.starts_with('-'))
        return false;
    a_text.remove_prefix(1);
    return true;
}

// A day's place in the week counted from Monday, 0 to 6; the calendar must have the day number.
int DaysFromMonday(const NDateTime& a_date)
{
    return (a_date.GetDayOfWeek() + 5) % 7;
}

boost::gregorian::date ToGregorian(const NDateTime& a_date)
{
    // One after the other, so that for a date with several bad parts always the same one raises.
    const boost::gregorian::greg_year year(static_cast<unsigned short>(a_date.GetYear()));
    const boost::gregorian::greg_month month(static_cast<unsigned short>(a_date.GetMonth()));
    const boost::gregorian::greg_day day(static_cast<unsigned short>(a_date.GetDay()));
    return {year, month, day};
}

// a_date moved back; empty where that leaves the calendar.
std::optional<NDateTime> MovedBack(NDateTime a_date, std::int64_t a_days)
{
    if (a_days > std::numeric_limits<std::int32_t>::max())
        return std::nullopt;
    a_date.ShiftDays(static_cast<int>(-a_days));
    return a_date.GetDayOfWeek() == -1 ? std::nullopt : std::optional(a_date);
}

} // namespace

namespace DateTimeTools {

std::optional<NDateTime> ParseDateYYYYMMDD(std::string_view a_text)
{
    const auto number = ReadDateNumber(a_text, 8);
    if (!number)
        return std::nullopt;
    return NDateTime(*number / 10000, *number % 10000 / 100, *number % 100);
}

std::optional<NDateTime> ParseDateYYMMDD(std::string_view a_text)
{
    const auto number = ReadDateNumber(a_text, 6);
    if (!number)
        return std::nullopt;
    const std::uint32_t year = *number / 10000;
    return NDateTime(year + (year < 50 ? 2000 : 1900), *number % 10000 / 100, *number % 100);
}

std::optional<NDateTime> ParseDateTime(std::string_view a_date, std::string_view a_time)
{
    const auto number = ReadDateNumber(a_date, 8);
    if (!number || a_time.size() != 6)
        return std::nullopt;
    return AtTime(*number / 10000, *number % 10000 / 100, *number % 100, a_time);
}

std::optional<NDateTime> ParseDateTime(const NDateTime& a_date, std::string_view a_time)
{
    if (!a_date.IsValid())
        return std::nullopt;
    return AtTime(a_date.GetYear(), a_date.GetMonth(), a_date.GetDay(), a_time);
}

std::optional<NDateTime> ParseTime(std::string_view a_text)
{
    return ParseDateTime(GetCurrentDate(), a_text);
}

NDateTime ParseDateIso8601(std::string_view a_text)
{
    std::string_view rest = a_text.substr(0, a_text.find('\0'));
    const auto year = ScanUnsigned(rest);
    const auto month = year && SkipDash(rest) ? ScanUnsigned(rest) : std::nullopt;
    const auto day = month && SkipDash(rest) ? ScanUnsigned(rest) : std::nullopt;
    if (!day)
        throw std::invalid_argument("Niepoprawna data"_cp1250);
    return {*year, *month, *day};
}

std::string FormatDate(unsigned int a_first, unsigned int a_second, unsigned int a_third)
{
    return fmt::format("{:02}{:02}{:02}", a_first, a_second, a_third);
}

std::wstring FormatDateW(unsigned int a_first, unsigned int a_second, unsigned int a_third)
{
    return fmt::format(L"{:02}-{:02}-{:02}", a_first, a_second, a_third);
}

std::string FormatDateShort(unsigned int a_first, unsigned int a_second, unsigned int a_third)
{
    return fmt::format("{}{:02}{:02}", a_first, a_second, a_third);
}

std::wstring FormatDateShortW(unsigned int a_first, unsigned int a_second, unsigned int a_third)
{
    return fmt::format(L"{}{:02}{:02}", a_first, a_second, a_third);
}

std::wstring FormatDateLongW(unsigned int a_first, unsigned int a_second, unsigned int a_third)
{
    return fmt::format(L"{:04}-{:02}-{:02}", a_first, a_second, a_third);
}

std::string FormatDateTimeShort(unsigned int a_year, unsigned int a_month, unsigned int a_day,
                                unsigned int a_hour, unsigned int a_minute, unsigned int a_second)
{
    return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02}", a_year, a_month, a_day, a_hour, a_minute,
                       a_second);
}

std::wstring FormatDateTimeShortW(unsigned int a_year, unsigned int a_month, unsigned int a_day,
                                  unsigned int a_hour, unsigned int a_minute, unsigned int a_second)
{
    return fmt::format(L"{:04}-{:02}-{:02} {:02}:{:02}:{:02}", a_year, a_month, a_day, a_hour, a_minute,
                       a_second);
}

std::string FormatDateTimeLong(unsigned int a_first, unsigned int a_second, unsigned int a_third,
                               unsigned int a_hour, unsigned int a_minute, unsigned int a_seconds,
                               unsigned int a_counter)
{
    return fmt::format("{:02}-{:02}-{}   {:02}:{:02}:{:02}  {}", a_first, a_second, a_third, a_hour, a_minute,
                       a_seconds, a_counter);
}

std::wstring FormatDateTimeLongW(unsigned int a_first, unsigned int a_second, unsigned int a_third,
                                 unsigned int a_hour, unsigned int a_minute, unsigned int a_seconds,
                                 unsigned int a_counter)
{
    return fmt::format(L"{:02}-{:02}-{}   {:02}:{:02}:{:02}  {}", a_first, a_second, a_third, a_hour,
                       a_minute, a_seconds, a_counter);
}

std::string FormatTime(unsigned int a_hour, unsigned int a_minute, unsigned int a_second)
{
    return fmt::format("{:02}:{:02}:{:02}", a_hour, a_minute, a_second);
}

std::wstring FormatTimeW(unsigned int a_hour, unsigned int a_minute, unsigned int a_second)
{
    return fmt::format(L"{:02}:{:02}:{:02}", a_hour, a_minute, a_second);
}

std::string FormatTimeShort(unsigned int a_hour, unsigned int a_minute)
{
    return fmt::format("{:02}:{:02}", a_hour, a_minute);
}

std::wstring FormatTimeShortW(unsigned int a_hour, unsigned int a_minute)
{
    return fmt::format(L"{:02}:{:02}", a_hour, a_minute);
}

std::wstring GenerateDateFileName()
{
    const NDateTime now = GetTickCount();
    return fmt::format(L"{:04}_{:02}_{:02}.txt", now.GetYear(), now.GetMonth(), now.GetDay());
}

std::wstring GenerateDateTimeFileName()
{
    const NDateTime now = GetTickCount();
    return fmt::format(L"{:04}_{:02}_{:02} {:02}_{:02}_{:02}.txt", now.GetYear(), now.GetMonth(),
                       now.GetDay(), now.GetHour(), now.GetMinute(), now.GetSecond());
}

NDateTime GetTickCount()
{
    return kalvento::internal::LocalTimeAt(kalvento::internal::ReadLocalZoneRule(),
                                           kalvento::internal::UnixSecondNow());
}

NDateTime GetCurrentDate()
{
    return GetDate(GetTickCount());
}

NDateTime GetCurrentUtcTime()
{
    return DateTimeConverter::ConvertFromLocalToUtc(GetTickCount());
}

NDateTime GetDate(const NDateTime& a_value)
{
    return {a_value.GetYear(), a_value.GetMonth(), a_value.GetDay()};
}

bool IsWeekend(const NDateTime& a_value)
{
    return IsWeekend(a_value.GetDayOfWeek());
}

bool IsWeekend(int a_dayOfWeek)
{
    return a_dayOfWeek == 1 || a_dayOfWeek == 7;
}

std::optional<NDateTime> GetDateFromForSessionCount(unsigned int a_sessions, NDateTime a_date)
{
    if (a_sessions == 0 || a_date.GetDayOfWeek() == -1)
        return std::nullopt;

    std::int64_t back = 0;
    int place = DaysFromMonday(a_date);
    if (place > 4) {
        back = place - 4;
        place = 4;
    }
    // Whole weeks of five sessions, then the days left over; those before this week's Monday skip one more weekend.
    const std::int64_t daysBefore = static_cast<std::int64_t>(a_sessions) - 1;
    back += daysBefore / 5 * 7;
    const std::int64_t left = daysBefore % 5;
    back += left <= place ? left : left + 2;
    return MovedBack(a_date, back);
}

std::optional<unsigned int> GetSessionCountForDates(const NDateTime& a_from, const NDateTime& a_to)
{
    const NDateTime from = GetDate(a_from);
    const NDateTime to = GetDate(a_to);
    if (from > to)
        return std::nullopt;
    if (!from.IsValid() || !to.IsValid())
        return 0;

    const int days = to.GetAbsoluteDay() - from.GetAbsoluteDay() + 1;
    int sessions = days / 7 * 5;
    const int place = DaysFromMonday(from);
    for (int day = 0; day < days % 7; ++day)
        sessions += (place + day) % 7 < 5 ? 1 : 0;
    return static_cast<unsigned int>(sessions);
}

bool ShiftTimeIfNeed(const NDateTime& a_previous, NDateTime& a_time)
{
    if (!(a_previous >= a_time))
        return false;
    a_time = a_previous;
    a_time.ShiftMilliSec();
    return true;
}

NDateTime AddMonths(const NDateTime& a_date, int a_months)
{
    // The calendar repeats after 400 years. The library counts months in 16 bits, so whole cycles are added by hand.
    constexpr int cycleMonths = 4800;
    constexpr int cycleYears = 400;

    const auto moved = ToGregorian(a_date) + boost::gregorian::months(a_months % cycleMonths);
    const int year = static_cast<int>(moved.year()) + a_months / cycleMonths * cycleYears;
    const boost::gregorian::greg_year checked(static_cast<unsigned short>(std::clamp(year, 0, 10000)));
    return {checked, moved.month(), moved.day()};
}

bool InAtLeastOneYearBetweenDates(const NDateTime& a_first, const NDateTime& a_second)
{
    const auto first = ToGregorian(a_first);
    const auto second = ToGregorian(a_second);
    return std::abs((second - first).days()) + 1 >= 365;
}

} // namespace DateTimeTools
