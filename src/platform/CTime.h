#pragma once

#include <compare>
#include <cstdint>

/// A moment in whole seconds since 1970-01-01 00:00 UTC, which the platform shows in local time. A plain value.
class CTime {
public:
    constexpr CTime() = default;
    explicit constexpr CTime(std::int64_t a_unixSeconds) : m_time(a_unixSeconds) {}

    /// Seconds since 1970-01-01 00:00 UTC.
    constexpr std::int64_t GetTime() const { return m_time; }

    friend constexpr auto operator<=>(const CTime&, const CTime&) = default;

private:
    std::int64_t m_time = 0;
};
