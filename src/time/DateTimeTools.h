#pragma once

#include "platform/Export.h"
#include "time/NDateTime.h"

#include <optional>
#include <string>
#include <string_view>

/// Dates as feeds and files write them, printing, trading sessions and the clock. A session is a weekday, Monday to
/// Friday; there is no table of holidays here. No state of its own: everything may be called from any thread.
///
/// The digit read of the parsers: unsigned decimal, stopping at the first non-digit; it fails without a digit or above
/// 32 bits. Parsers refuse only what they name: a well-shaped text with a bad calendar value gives a filled result of
/// status invalid, so test NDateTime::IsValid. Texts need no zero byte at their end.
namespace DateTimeTools {

/// "20210301". Empty unless there are 8 characters with a digit read above 0. A read that stopped early counts with the
/// digits so far: "2021ab12" is year 0, month 20, day 21, of status invalid.
KALVENTO_API std::optional<NDateTime> ParseDateYYYYMMDD(std::string_view a_text);
/// "210301", 6 characters, otherwise like ParseDateYYYYMMDD. A year below 50 is 20yy, any other 19yy.
KALVENTO_API std::optional<NDateTime> ParseDateYYMMDD(std::string_view a_text);
/// "20210301" and "093015"; empty unless the lengths are 8 and 6 and the date is one for ParseDateYYYYMMDD.
/// A time without a readable number is midnight.
KALVENTO_API std::optional<NDateTime> ParseDateTime(std::string_view a_date, std::string_view a_time);
/// The day of a_date, empty where its status isn't valid, with a time as above but of any length.
KALVENTO_API std::optional<NDateTime> ParseDateTime(const NDateTime& a_date, std::string_view a_time);
/// A time of today, in local time.
KALVENTO_API std::optional<NDateTime> ParseTime(std::string_view a_text);
/// "2021-03-01": three unsigned numbers in the manner of scanf's "%u-%u-%u", from the start of the text up to its end
/// or its first zero byte. White space and a sign may stand before a number (a minus makes it impossibly large), text
/// may follow the third; a number above 32 bits reads as the greatest. Fewer than three numbers raise
/// std::invalid_argument, "Niepoprawna data".
KALVENTO_API NDateTime ParseDateIso8601(std::string_view a_text);

// Printing: parts in, text out. What the parts mean, and whether they make a date, is up to the caller. Numbers are
// padded with zeros to the width shown and never cut.

/// "20210301", every part to at least two digits and without dashes, which FormatDateW has.
KALVENTO_API std::string FormatDate(unsigned int a_first, unsigned int a_second, unsigned int a_third);
/// "2021-03-01", every part to at least two digits.
KALVENTO_API std::wstring FormatDateW(unsigned int a_first, unsigned int a_second, unsigned int a_third);
/// "20210301", the first part as it is.
KALVENTO_API std::string FormatDateShort(unsigned int a_first, unsigned int a_second, unsigned int a_third);
KALVENTO_API std::wstring FormatDateShortW(unsigned int a_first, unsigned int a_second, unsigned int a_third);
/// "2021-03-01", the first part to at least four digits.
KALVENTO_API std::wstring FormatDateLongW(unsigned int a_first, unsigned int a_second, unsigned int a_third);
/// "2021-03-01 09:30:15".
KALVENTO_API std::string FormatDateTimeShort(unsigned int a_year, unsigned int a_month, unsigned int a_day,
                                             unsigned int a_hour, unsigned int a_minute,
                                             unsigned int a_second);
KALVENTO_API std::wstring FormatDateTimeShortW(unsigned int a_year, unsigned int a_month, unsigned int a_day,
                                               unsigned int a_hour, unsigned int a_minute,
                                               unsigned int a_second);
/// "01-03-2021   09:30:15  7": date, three blanks, time, two blanks, counter. The first two parts take at least two
/// digits, the third is as it is.
KALVENTO_API std::string FormatDateTimeLong(unsigned int a_first, unsigned int a_second, unsigned int a_third,
                                            unsigned int a_hour, unsigned int a_minute,
                                            unsigned int a_seconds, unsigned int a_counter);
KALVENTO_API std::wstring FormatDateTimeLongW(unsigned int a_first, unsigned int a_second,
                                              unsigned int a_third, unsigned int a_hour,
                                              unsigned int a_minute, unsigned int a_seconds,
                                              unsigned int a_counter);
/// "09:30:15".
KALVENTO_API std::string FormatTime(unsigned int a_hour, unsigned int a_minute, unsigned int a_second);
KALVENTO_API std::wstring FormatTimeW(unsigned int a_hour, unsigned int a_minute, unsigned int a_second);
/// "09:30".
KALVENTO_API std::string FormatTimeShort(unsigned int a_hour, unsigned int a_minute);
KALVENTO_API std::wstring FormatTimeShortW(unsigned int a_hour, unsigned int a_minute);

/// "2021_03_01.txt", of the local day.
KALVENTO_API std::wstring GenerateDateFileName();
/// "2021_03_01 09_30_15.txt", of the local time.
KALVENTO_API std::wstring GenerateDateTimeFileName();

/// The local time now in whole seconds, counter 0. Despite its name no millisecond tick.
KALVENTO_API NDateTime GetTickCount();
/// Today's local date at midnight.
KALVENTO_API NDateTime GetCurrentDate();
/// The UTC now in whole seconds, counter 0. Raises as DateTimeConverter::ConvertFromLocalToUtc does, so also in a zone
/// without daylight saving.
KALVENTO_API NDateTime GetCurrentUtcTime();
/// Midnight of the value's date fields.
KALVENTO_API NDateTime GetDate(const NDateTime& a_value);

/// Saturday or Sunday; false where the value isn't valid or lies outside the calendar.
KALVENTO_API bool IsWeekend(const NDateTime& a_value);
/// True for 1 (Sunday) and 7 (Saturday), the numbers of NDateTime::GetDayOfWeek.
KALVENTO_API bool IsWeekend(int a_dayOfWeek);

/// The date of the a_sessions-th session counted backward, a_date's day being the first; a weekend counts as the Friday
/// before. The time of day carries through. Empty for no sessions, for an invalid a_date and where the count leaves the
/// calendar.
KALVENTO_API std::optional<NDateTime> GetDateFromForSessionCount(unsigned int a_sessions, NDateTime a_date);
/// Sessions from one date to another, both included, times of day cut off. Empty where a_from comes after a_to; 0 where
/// one of them is no date of the calendar. Takes the same time whatever the distance.
KALVENTO_API std::optional<unsigned int> GetSessionCountForDates(const NDateTime& a_from,
                                                                 const NDateTime& a_to);

/// Makes a stream of equal or falling times strictly rising: where a_previous >= a_time, a_time becomes a_previous plus
/// one step of the counter, and the result is true. Otherwise nothing happens.
KALVENTO_API bool ShiftTimeIfNeed(const NDateTime& a_previous, NDateTime& a_time);

/// Moves a date by months, to midnight. The last day of a month gives the last day of the result's month; any other day
/// keeps its number, clipped to the month. Raises boost::gregorian's bad_year, bad_month or bad_day_of_month where
/// a_date or the result is no date of the years 1400 to 9999.
/// Source: Boost.Date_Time, "Snap to end of month behavior" of boost::gregorian::months.
KALVENTO_API NDateTime AddMonths(const NDateTime& a_date, int a_months);
/// True where the two dates, both included, span at least 365 days, whichever comes first. Raises as AddMonths does.
KALVENTO_API bool InAtLeastOneYearBetweenDates(const NDateTime& a_first, const NDateTime& a_second);

} // namespace DateTimeTools
