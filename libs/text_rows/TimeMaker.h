#pragma once

#include "time/NDateTime.h"

#include <chrono>
#include <cstdint>
#include <limits>

namespace kalvento::rows {

/// Dates of the library from whole seconds, the day's parts worked out once a day. Inline, for it makes the time of
/// each row.
class TimeMaker {
public:
    /// a_seconds: since 1970-01-01 on the clock that the time is to show, in the years 100 to 4095.
    NDateTime Make(std::int64_t a_seconds)
    {
        if (a_seconds < m_dayBegin || a_seconds >= m_dayBegin + S_day)
            TakeDay(a_seconds);
        const auto ofDay = static_cast<std::uint32_t>(a_seconds - m_dayBegin);
        const std::uint32_t hour = ofDay / 3600;
        const std::uint32_t minute = ofDay / 60 % 60;
        const std::uint32_t second = ofDay % 60;
        const double fraction = static_cast<double>(ofDay) / 86400.0;
        // Below zero the fraction of an OLE date still counts upward within its day.
        const double number = m_oleDay < 0 ? m_oleDay - fraction : m_oleDay + fraction;
        return kalvento::internal::NDateTimeWords::Make(
            number, COleDateTime::valid, m_calendar | hour << 21U | minute << 26U, m_dayOfYear | second);
    }

    /// The counter's next step, as NDateTime::ShiftMilliSec gives it.
    static NDateTime NextStep(const NDateTime& a_time)
    {
        const std::uint32_t clock = kalvento::internal::NDateTimeWords::Clock(a_time);
        return kalvento::internal::NDateTimeWords::Make(
            a_time.ToDouble() + 1.0 / NDateTime::Denominator, COleDateTime::valid,
            kalvento::internal::NDateTimeWords::Calendar(a_time), clock + (1U << 6U));
    }

private:
    static constexpr std::int64_t S_day = 86400;
    // Day number 0, 1899-12-30, counted from 1970-01-01.
    static constexpr std::int64_t S_oleDayZero = -25569;

    void TakeDay(std::int64_t a_seconds)
    {
        const std::int64_t day = (a_seconds >= 0 ? a_seconds : a_seconds - S_day + 1) / S_day;
        const std::chrono::year_month_day date{std::chrono::sys_days(std::chrono::days(day))};
        const auto year = static_cast<std::uint32_t>(static_cast<int>(date.year()));
        const std::chrono::sys_days newYear{date.year() / std::chrono::January / 1};
        m_dayBegin = day * S_day;
        m_oleDay = static_cast<double>(day - S_oleDayZero);
        m_calendar =
            year | static_cast<unsigned>(date.month()) << 12U | static_cast<unsigned>(date.day()) << 16U;
        m_dayOfYear = static_cast<std::uint32_t>(day - newYear.time_since_epoch().count() + 1) << 22U;
    }

    std::int64_t m_dayBegin = std::numeric_limits<std::int64_t>::min() / 2;
    double m_oleDay = 0.0;
    std::uint32_t m_calendar = 0;
    std::uint32_t m_dayOfYear = 0;
};

} // namespace kalvento::rows
