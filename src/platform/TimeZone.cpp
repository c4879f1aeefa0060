#include "platform/TimeZone.h"

#include <date/tz.h>

#include <algorithm>
#include <chrono>
#include <stdexcept>

namespace {

// The database's first and last stretch have no end; these bounds leave room for adding an offset.
constexpr std::int64_t S_endOfTime = std::int64_t{1} << 40;

std::int64_t SecondsOf(date::sys_seconds a_moment)
{
    return std::clamp<std::int64_t>(a_moment.time_since_epoch().count(), -S_endOfTime, S_endOfTime);
}

} // namespace

std::optional<TimeZone> TimeZone::Find(std::string_view a_name)
{
    try {
        return TimeZone(date::locate_zone(a_name), a_name);
    } catch (const std::runtime_error&) {
        return std::nullopt;
    }
}

TimeZone::TimeZone(const date::time_zone* a_zone, std::string_view a_name) : m_zone(a_zone), m_name(a_name) {}

void TimeZone::SeekUtc(std::int64_t a_utcSeconds)
{
    const auto info = m_zone->get_info(date::sys_seconds(std::chrono::seconds(a_utcSeconds)));
    Remember(SecondsOf(info.begin), SecondsOf(info.end), info.offset.count());
}

void TimeZone::SeekLocal(std::int64_t a_localSeconds)
{
    const auto found = m_zone->get_info(date::local_seconds(std::chrono::seconds(a_localSeconds)));
    // The first stretch for a repeated time, the second for a skipped one: either way the daylight time.
    const auto& info = found.result == date::local_info::nonexistent ? found.second : found.first;
    Remember(SecondsOf(info.begin), SecondsOf(info.end), info.offset.count());
}

void TimeZone::Remember(std::int64_t a_begin, std::int64_t a_end, std::int64_t a_offset)
{
    m_begin = a_begin;
    m_end = a_end;
    m_offset = a_offset;
    // The stretch before keeps the local clock to its own end, also where this one repeats or skips an hour of it.
    const auto before = m_zone->get_info(date::sys_seconds(std::chrono::seconds(a_begin - 1)));
    m_localBegin = a_begin + before.offset.count();
    m_localEnd = a_end + a_offset;
}
