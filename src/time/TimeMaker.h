#pragma once

#include "time/TimeParts.h"

#include <cstdint>
#include <limits>

namespace kalvento::internal {

/// Times from whole seconds, the day's parts worked out once a day: for readers, which make the time of each row.
class TimeMaker {
public:
    /// a_second: as TimeParts counts, in the years 100 to 4095.
    NDateTime Make(std::int64_t a_second)
    {
        if (a_second < m_dayBegin || a_second >= m_dayBegin + TimeParts::S_secondsOfDay)
            TakeDay(TimeParts::DayOf(a_second));
        const auto ofDay = static_cast<std::uint32_t>(a_second - m_dayBegin);
        const double fraction = static_cast<double>(ofDay) / static_cast<double>(TimeParts::S_secondsOfDay);
        // Below zero the fraction of an OLE date still counts upward within its day.
        const double number = m_oleDay < 0 ? m_oleDay - fraction : m_oleDay + fraction;
        return m_midnight.At(number, ofDay, 0);
    }

    /// The counter's next step, as NDateTime::ShiftMilliSec gives it.
    static NDateTime NextStep(const NDateTime& a_time)
    {
        return NDateTimeWords::Make(a_time.ToDouble() + 1.0 / NDateTime::Denominator, COleDateTime::valid,
                                    NDateTimeWords::Calendar(a_time),
                                    NDateTimeWords::Clock(a_time) + CounterField::S_one);
    }

private:
    void TakeDay(std::int64_t a_day)
    {
        m_dayBegin = a_day * TimeParts::S_secondsOfDay;
        m_oleDay = static_cast<double>(a_day + OleDate::S_unixEpoch);
        m_midnight = MidnightWords(a_day);
    }

    std::int64_t m_dayBegin = std::numeric_limits<std::int64_t>::min() / 2;
    double m_oleDay = 0.0;
    MidnightWords m_midnight{0};
};

} // namespace kalvento::internal
