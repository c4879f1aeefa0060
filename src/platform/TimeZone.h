#pragma once

#include "platform/Export.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace date {
class time_zone;
}

/// Local time of one zone of the IANA database, with the database's rule of each year, for data that come from
/// elsewhere in the world. Remembers the stretch of equal offset around the last time asked for, so rows in order of
/// time cost one comparison each. Copies are independent; one thread at a time.
///
/// Times are seconds since 1970-01-01 00:00, in UTC or as the local clock shows them, for some ten thousand years
/// either way. The database knows changes up to 2037; later years keep the offset of that year's end.
class KALVENTO_API TimeZone {
public:
    /// A zone by its database name, "America/New_York" or "UTC"; empty where the database has no such zone, or there is
    /// no database on the machine.
    static std::optional<TimeZone> Find(std::string_view a_name);

    /// The database's name of the zone.
    const std::string& GetName() const { return m_name; }

    std::int64_t ToLocal(std::int64_t a_utcSeconds)
    {
        if (a_utcSeconds < m_begin || a_utcSeconds >= m_end)
            SeekUtc(a_utcSeconds);
        return a_utcSeconds + m_offset;
    }

    /// An hour that the clocks repeat is read as the first one, in daylight time. A time that the clocks skip is read
    /// as if they had been put forward already: 02:30 of a spring night in Warsaw is 00:30 UTC.
    std::int64_t ToUtc(std::int64_t a_localSeconds)
    {
        if (a_localSeconds < m_localBegin || a_localSeconds >= m_localEnd)
            SeekLocal(a_localSeconds);
        return a_localSeconds - m_offset;
    }

private:
    TimeZone(const date::time_zone* a_zone, std::string_view a_name);
    void SeekUtc(std::int64_t a_utcSeconds);
    void SeekLocal(std::int64_t a_localSeconds);
    void Remember(std::int64_t a_begin, std::int64_t a_end, std::int64_t a_offset);

    const date::time_zone* m_zone; // of the database, which lives as long as the process
    std::string m_name;
    // The remembered stretch, [begin, end) in UTC and on the local clock; empty at first.
    std::int64_t m_begin = 0;
    std::int64_t m_end = 0;
    std::int64_t m_localBegin = 0;
    std::int64_t m_localEnd = 0;
    std::int64_t m_offset = 0; // local minus UTC, seconds
};
