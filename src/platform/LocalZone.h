#pragma once

#include "platform/Export.h"

#include <cstdint>
#include <optional>
#include <string_view>

// The machine's zone and clock. Tests pass a rule and a moment of their own where one is taken.
namespace kalvento::internal {

/// A yearly moment of the local clock: the week-th given weekday of a month, week 5 being the last one.
struct YearlyMoment {
    std::int32_t month = 0;       // 1 to 12
    std::int32_t week = 0;        // 1 to 5
    std::int32_t weekday = 0;     // 0 is Sunday
    std::int32_t secondOfDay = 0; // as the clock shows just before it changes

    friend constexpr bool operator==(const YearlyMoment&, const YearlyMoment&) = default;
};

/// When daylight time holds, and its offset.
struct DaylightRule {
    std::int32_t offset = 0; // local minus UTC, seconds, above the standard offset
    YearlyMoment start;      // in local standard time
    YearlyMoment end;        // in local daylight time

    friend constexpr bool operator==(const DaylightRule&, const DaylightRule&) = default;
};

/// One rule for every year, as the platform keeps for a zone. The date in March of one year gives that of any other by
/// weekday and week of the month. Without a start, where the zone keeps one offset, there is no daylight time.
struct LocalZoneRule {
    std::int32_t standardOffset = 0; // local minus UTC, seconds
    std::optional<DaylightRule> daylight;

    friend constexpr bool operator==(const LocalZoneRule&, const LocalZoneRule&) = default;
};

/// The rule of a zone of the IANA database, read from its transitions in a_year. Daylight needs a transition to a
/// greater offset and one to a smaller; further ones (a pause within the summer) are ignored. An unknown zone is UTC.
KALVENTO_API LocalZoneRule ReadZoneRule(std::string_view a_zone, int a_year);
/// The rule of the machine's zone in the current year; UTC where the system doesn't tell its zone.
KALVENTO_API LocalZoneRule ReadLocalZoneRule();
/// Seconds since 1970-01-01 00:00 UTC.
KALVENTO_API std::int64_t UnixSecondNow();

// Seconds count from 1970-01-01 00:00, in UTC or as the local clock shows them.

/// Daylight time from the start rule in standard time to the end rule in daylight time.
KALVENTO_API std::int64_t ToLocalSeconds(const LocalZoneRule& a_rule, std::int64_t a_utcSeconds);
/// The local time compared with both rule times as written: repeated and skipped hours count as daylight time.
KALVENTO_API std::int64_t ToUtcSeconds(const LocalZoneRule& a_rule, std::int64_t a_localSeconds);
/// The platform's _mktime64 with the daylight flag -1: the local time is taken as standard time, and as daylight time
/// where the moment found so lies in it. So a repeated hour counts as standard time here. Empty before 1970 and after
/// 3000-12-31 23:59:59 UTC.
KALVENTO_API std::optional<std::int64_t> MakeTime(const LocalZoneRule& a_rule, std::int64_t a_localSeconds);

} // namespace kalvento::internal
