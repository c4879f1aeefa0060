#include "platform/LocalZone.h"

#include "platform/OleDate.h"

#include <date/tz.h>

#include <chrono>
#include <stdexcept>

namespace kalvento::internal {

namespace {

constexpr std::int64_t S_lastOfMakeTime = 32535215999; // 3000-12-31 23:59:59

std::chrono::sys_days DayOf(std::int64_t a_seconds)
{
    return std::chrono::floor<std::chrono::days>(std::chrono::sys_seconds(std::chrono::seconds(a_seconds)));
}

std::chrono::year YearOf(std::int64_t a_seconds)
{
    return std::chrono::year_month_day(DayOf(a_seconds)).year();
}

std::int64_t SecondsOf(std::chrono::sys_days a_day)
{
    return a_day.time_since_epoch().count() * OleDate::S_secondsOfDay;
}

YearlyMoment MomentOf(std::int64_t a_localSeconds)
{
    const auto day = DayOf(a_localSeconds);
    const std::chrono::year_month_day date(day);
    const auto dayOfMonth = static_cast<unsigned>(date.day());
    const auto lastOfMonth = static_cast<unsigned>(
        std::chrono::year_month_day_last(date.year(), date.month() / std::chrono::last).day());
    YearlyMoment moment;
    moment.month = static_cast<std::int32_t>(static_cast<unsigned>(date.month()));
    moment.week = dayOfMonth + 7 > lastOfMonth ? 5 : static_cast<std::int32_t>((dayOfMonth - 1) / 7 + 1);
    moment.weekday = static_cast<std::int32_t>(std::chrono::weekday(day).c_encoding());
    moment.secondOfDay = static_cast<std::int32_t>(a_localSeconds - SecondsOf(day));
    return moment;
}

// The moment in a year, on the local clock.
std::int64_t SecondsOf(const YearlyMoment& a_moment, std::chrono::year a_year)
{
    const std::chrono::month month(static_cast<unsigned>(a_moment.month));
    const std::chrono::weekday weekday(static_cast<unsigned>(a_moment.weekday));
    const auto day =
        a_moment.week >= 5
            ? std::chrono::sys_days(a_year / month / weekday[std::chrono::last])
            : std::chrono::sys_days(a_year / month / weekday[static_cast<unsigned>(a_moment.week)]);
    return SecondsOf(day) + a_moment.secondOfDay;
}

// South of the equator the summer that started last year ends in this one.
bool IsBetween(std::int64_t a_moment, std::int64_t a_start, std::int64_t a_end)
{
    if (a_start <= a_end)
        return a_start <= a_moment && a_moment < a_end;
    return a_moment >= a_start || a_moment < a_end;
}

LocalZoneRule RuleOf(const date::time_zone& a_zone, int a_year)
{
    using namespace std::chrono_literals;
    const date::sys_seconds first{
        std::chrono::sys_days(std::chrono::year(a_year) / 1 / 1).time_since_epoch()};
    const date::sys_seconds last{
        std::chrono::sys_days(std::chrono::year(a_year + 1) / 1 / 1).time_since_epoch()};

    LocalZoneRule rule;
    std::optional<YearlyMoment> start;
    std::optional<YearlyMoment> end;
    std::int32_t daylightOffset = 0;
    auto before = a_zone.get_info(first);
    rule.standardOffset = static_cast<std::int32_t>(before.offset.count());
    while (before.end < last) {
        const auto after = a_zone.get_info(before.end);
        const auto clock = MomentOf((before.end.time_since_epoch() + before.offset).count());
        if (after.offset > before.offset && !start) {
            start = clock;
            daylightOffset = static_cast<std::int32_t>(after.offset.count());
            rule.standardOffset = static_cast<std::int32_t>(before.offset.count());
        } else if (after.offset < before.offset && !end) {
            end = clock;
        }
        before = after;
    }
    if (start && end)
        rule.daylight = DaylightRule{daylightOffset, *start, *end};
    else
        rule.standardOffset = static_cast<std::int32_t>(before.offset.count());
    return rule;
}

} // namespace

LocalZoneRule ReadZoneRule(std::string_view a_zone, int a_year)
{
    try {
        return RuleOf(*date::locate_zone(a_zone), a_year);
    } catch (const std::runtime_error&) {
        return {};
    }
}

LocalZoneRule ReadLocalZoneRule()
{
    try {
        return RuleOf(*date::current_zone(), static_cast<int>(YearOf(UnixSecondNow())));
    } catch (const std::runtime_error&) {
        // A machine without a zone or without a zone database keeps UTC.
        return {};
    }
}

std::int64_t UnixSecondNow()
{
    return std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now())
        .time_since_epoch()
        .count();
}

std::int64_t ToLocalSeconds(const LocalZoneRule& a_rule, std::int64_t a_utcSeconds)
{
    const std::int64_t standard = a_utcSeconds + a_rule.standardOffset;
    if (!a_rule.daylight)
        return standard;
    const auto year = YearOf(standard);
    const std::int64_t start = SecondsOf(a_rule.daylight->start, year);
    const std::int64_t end =
        SecondsOf(a_rule.daylight->end, year) - (a_rule.daylight->offset - a_rule.standardOffset);
    return IsBetween(standard, start, end) ? a_utcSeconds + a_rule.daylight->offset : standard;
}

std::int64_t ToUtcSeconds(const LocalZoneRule& a_rule, std::int64_t a_localSeconds)
{
    if (!a_rule.daylight)
        return a_localSeconds - a_rule.standardOffset;
    const auto year = YearOf(a_localSeconds);
    const bool isDaylight = IsBetween(a_localSeconds, SecondsOf(a_rule.daylight->start, year),
                                      SecondsOf(a_rule.daylight->end, year));
    return a_localSeconds - (isDaylight ? a_rule.daylight->offset : a_rule.standardOffset);
}

std::optional<std::int64_t> MakeTime(const LocalZoneRule& a_rule, std::int64_t a_localSeconds)
{
    const std::int64_t asStandard = a_localSeconds - a_rule.standardOffset;
    // What the clock shows beyond the time asked for is the daylight offset.
    const std::int64_t made = asStandard - (ToLocalSeconds(a_rule, asStandard) - a_localSeconds);
    if (made < 0 || made > S_lastOfMakeTime)
        return std::nullopt;
    return made;
}

} // namespace kalvento::internal
