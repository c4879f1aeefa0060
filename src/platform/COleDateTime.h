#pragma once

#include "platform/Export.h"

#include <cstdint>
#include <type_traits>

/// An OLE Automation date: days since 1899-12-30, the fraction is the time of day. Below zero the day is negative
/// while the time of day still counts upward, so -1.25 is 06:00 on 1899-12-29.
/// A plain value; its 16 bytes are the first 16 bytes of a stored NDateTime.
class KALVENTO_API COleDateTime {
public:
    /// The numbers are stored in files.
    enum DateTimeStatus : std::int32_t { valid = 0, invalid = 1, null = 2 };

    /// 1899-12-30 00:00:00, valid.
    constexpr COleDateTime() = default;
    /// A raw day number. The status is valid where the number lies in the calendar (years 100 to 9999), else invalid.
    explicit COleDateTime(double a_dayNumber);
    constexpr COleDateTime(double a_dayNumber, DateTimeStatus a_status)
        : m_dt(a_dayNumber), m_status(a_status)
    {}
    /// From calendar parts, accepted only if the day number gives back the same six parts. Otherwise the status is
    /// invalid and the day number 0.
    COleDateTime(int a_year, int a_month, int a_day, int a_hour, int a_minute, int a_second);

    constexpr DateTimeStatus GetStatus() const { return static_cast<DateTimeStatus>(m_status); }
    constexpr void SetStatus(DateTimeStatus a_status) { m_status = a_status; }

    /// Public as on the platform: the raw day number.
    double m_dt = 0.0;

private:
    std::int32_t m_status = valid; // whatever a stored block holds, also numbers outside the enumeration
    std::uint32_t m_reserved = 0;  // fills the stored form, never read
};

static_assert(sizeof(COleDateTime) == 16 && std::is_trivially_copyable_v<COleDateTime>);
