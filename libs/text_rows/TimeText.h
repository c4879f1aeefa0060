#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace kalvento::rows {

/// A time as a text gives it, to the nanosecond.
struct WallTime {
    std::int64_t seconds =
        0; ///< Since 1970-01-01 00:00, in UTC where `absolute`, else as the writer's clock showed.
    std::int32_t nanoseconds = 0;
    bool absolute = false; ///< The text has a zone or an offset, or counts from the Unix epoch.
};

/// How many digits a fraction of a second is written with: 0, 3, 6 or 9.
unsigned int FractionDigits(std::int32_t a_nanoseconds);

/// Days since 1970-01-01 of a real calendar date of the years 100 to 4095, those that a time of the library can hold.
std::optional<std::int64_t> DaysFromDate(int a_year, int a_month, int a_day);

/// A date: YYYY-MM-DD, YYYY/MM/DD, YYYY.MM.DD, YYYYMMDD, DD.MM.YYYY. Days since 1970-01-01.
std::optional<std::int64_t> ParseDateText(std::string_view a_text);

/// A time of day: HH:MM, HH:MM:SS, HHMM, HHMMSS (a leading zero may be missing), each with a fraction of a second.
/// Seconds since midnight with nanoseconds.
std::optional<WallTime> ParseClockText(std::string_view a_text);

/// A whole time: a date alone (midnight), a date and a time of day with a blank or T between them and an optional Z or
/// offset after them, YYYYMMDDHHMM[SS], or seconds, milliseconds, microseconds, nanoseconds since 1970, told apart by
/// their digits (9 to 11, 12 to 14, 15 to 17, 18 to 19 before the point).
std::optional<WallTime> ParseTimeText(std::string_view a_text);

/// A time by a format: %Y %y %m %d %H %M %S %f (fraction digits) %z (Z, +hh:mm, +hhmm) %%, or the whole format unix,
/// unixms, unixus, unixns. Blanks match any number of blanks; everything else matches itself.
std::optional<WallTime> ParseTimeByFormat(std::string_view a_text, std::string_view a_format);

/// Why a format can't be used; empty when it can.
std::string_view CheckTimeFormat(std::string_view a_format);

} // namespace kalvento::rows
