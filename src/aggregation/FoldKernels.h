#pragma once

#include "time/EInterval.h"
#include "time/NDateTime.h"
#include "time/TimeParts.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

/// The inner loops of folding whole histories. Each gives the bits that one row at a time gives, in the order of the
/// rows; where that can't be shown, the caller's exact path takes over.
namespace kalvento::internal {

/// The place of a time in its day (below a day) or its year; equal places in one day or year mean one window.
template<EInterval Interval>
std::uint32_t SlotOf(std::uint32_t a_calendar, std::uint32_t a_clock)
{
    const std::uint32_t hour = HourField::Of(a_calendar);
    const std::uint32_t minute = MinuteField::Of(a_calendar);
    switch (Interval) {
    case EIntervalSecond:
        return TimeParts::SecondOfDay(hour, minute, SecondField::Of(a_clock));
    case EIntervalMinute:
        return hour * 60 + minute;
    case EIntervalHour:
        return hour;
    case EIntervalDay:
    case EIntervalWeek:
        return DayOfYearField::Of(a_clock) - 1;
    case EIntervalMonth:
        return MonthField::Of(a_calendar) - 1;
    case EIntervalYear:
        return YearField::Of(a_calendar);
    default:
        return 0;
    }
}

/// What decides the order of a row and the next one.
struct OrderOfRow {
    explicit OrderOfRow(const NDateTime& a_time)
        : dayNumber(a_time.ToDouble()), counter(NDateTimeWords::Clock(a_time) & CounterField::S_mask)
    {}

    double dayNumber;
    std::uint32_t counter;
};

/// a_second is not earlier than a_first in the sense of NDateTime's `<`, shown without its continuous form: both valid,
/// the day number doesn't fall, and the counter doesn't fall either unless half a second lies between. a_first must
/// come from a time that is valid and not below zero. False says nothing.
inline bool NotEarlier(const OrderOfRow& a_first, const OrderOfRow& a_second, bool a_secondIsValid)
{
    const bool rises = a_second.dayNumber >= a_first.dayNumber;
    const bool counterRises = a_second.counter >= a_first.counter;
    const bool farApart = a_first.dayNumber <= a_second.dayNumber - NDateTimeWords::S_halfSecond;
    return (unsigned(a_secondIsValid) & unsigned(rises) & (unsigned(counterRises) | unsigned(farApart))) != 0;
}

inline bool NotEarlier(const NDateTime& a_first, const NDateTime& a_second)
{
    return NotEarlier(OrderOfRow(a_first), OrderOfRow(a_second), a_second.IsValid());
}

/// The first row after a_first, and at most a_limit, in which one of the masked fields differs from its neighbour, or
/// which (if a_lateTested) isn't shown to be not earlier than it. a_first as for NotEarlier.
std::size_t FindChange(const NDateTime* a_times, std::size_t a_first, std::size_t a_limit,
                       std::uint32_t a_calendarMask, std::uint32_t a_clockMask, bool a_lateTested);

/// The open window as a range of slots of its day or year, so that most rows are placed without asking the window.
/// A row inside the range is certainly in the open window; about a row outside it, the window itself must be asked.
template<EInterval Interval>
class WindowScope {
    using Words = NDateTimeWords;
    static constexpr bool S_belowDay = Interval <= EIntervalHour;
    static constexpr bool S_ofYear = !S_belowDay && Interval != EIntervalYear;

public:
    // Fields whose equality in two rows means one slot of one day or year, and so one window.
    static constexpr std::uint32_t S_slotCalendar =
        (S_belowDay && Interval != EIntervalTick ? HourField::S_mask : 0) |
        (Interval == EIntervalSecond || Interval == EIntervalMinute ? MinuteField::S_mask : 0) |
        (S_belowDay ? 0 : YearField::S_mask) | (Interval == EIntervalMonth ? MonthField::S_mask : 0);
    static constexpr std::uint32_t S_slotClock =
        (S_belowDay || Interval == EIntervalDay || Interval == EIntervalWeek ? DayOfYearField::S_mask : 0) |
        (Interval == EIntervalSecond ? SecondField::S_mask : 0);

    /// a_time lies in the window a_window of a_multiplicity slots.
    void Open(const NDateTime& a_time, int a_window, unsigned short a_multiplicity)
    {
        const std::uint32_t calendar = Words::Calendar(a_time);
        const std::uint32_t clock = Words::Clock(a_time);
        m_calendar = calendar & S_sharedCalendar;
        m_clock = clock & S_sharedClock;
        m_firstSlot = SlotOf<Interval>(calendar, clock);
        m_slotSpan = 0;
        // Weeks don't divide the days of a year evenly, and a time outside any calendar has a window of its own kind:
        // of those only the one slot is known.
        if constexpr (Interval != EIntervalTick && Interval != EIntervalWeek) {
            const std::uint64_t first = std::uint64_t{a_multiplicity} * static_cast<std::uint32_t>(a_window);
            const std::uint64_t end = std::min(first + a_multiplicity, S_slots);
            if (m_firstSlot < first || m_firstSlot >= end)
                return;
            m_firstSlot = static_cast<std::uint32_t>(first);
            m_slotSpan = static_cast<std::uint32_t>(end - 1 - first);
        }
    }

    bool Holds(const NDateTime& a_time) const
    {
        return SharesFields(a_time) &&
               SlotOf<Interval>(Words::Calendar(a_time), Words::Clock(a_time)) - m_firstSlot <= m_slotSpan;
    }

    /// Where a run of rows ends, and what is known of the row there.
    struct RunEnd {
        std::size_t row;
        bool isOutside; // it doesn't lie in this scope
        bool isInTime;  // it is not earlier than the row before it; false says nothing
    };

    /// The first row after a_first, and at most a_limit, that can't be shown to continue the candle: rows between lie
    /// in the open window and (if LateTested) none of them is earlier than the one before it. a_first itself must lie
    /// in the open window; if LateTested it must be the last row in time, valid and not below zero.
    template<bool LateTested>
    RunEnd FindRunEnd(const NDateTime* a_times, std::size_t a_first, std::size_t a_limit) const
    {
        const auto placeOf = [&](const NDateTime& a_time) {
            return SlotOf<Interval>(Words::Calendar(a_time), Words::Clock(a_time)) - m_firstSlot;
        };
        std::uint32_t placeBefore = placeOf(a_times[a_first]);
        OrderOfRow before(a_times[a_first]);
        std::size_t streak = 0;
        std::size_t row = a_first + 1;
        for (; row < a_limit; ++row) {
            const NDateTime& time = a_times[row];
            const std::uint32_t place = placeOf(time);
            const OrderOfRow order(time);
            const bool isInTime = !LateTested || NotEarlier(before, order, time.IsValid());
            before = order;
            const bool isOutside = (unsigned(!SharesFields(time)) | unsigned(place > m_slotSpan)) != 0;
            if (isOutside)
                return {row, true, isInTime};
            if (!isInTime)
                return {row, false, false};
            streak = place == placeBefore ? streak + 1 : 0;
            placeBefore = place;
            if (streak == S_streakForLanes) {
                row = FindChange(a_times, row, a_limit, S_slotCalendar, S_slotClock, LateTested) - 1;
                before = OrderOfRow(a_times[row]);
                streak = 0;
            }
        }
        return {row, false, false};
    }

private:
    bool SharesFields(const NDateTime& a_time) const
    {
        if constexpr (S_sharedClock != 0)
            return (Words::Clock(a_time) & S_sharedClock) == m_clock;
        return (Words::Calendar(a_time) & S_sharedCalendar) == m_calendar;
    }

    // After so many rows in one slot the lanes take over; fewer are placed faster one by one.
    static constexpr std::size_t S_streakForLanes = 8;
    // Fields that every row of the window shares with the row that opened it: the year, or the day of the year.
    static constexpr std::uint32_t S_sharedCalendar = S_ofYear ? YearField::S_mask : 0;
    static constexpr std::uint32_t S_sharedClock = S_belowDay ? DayOfYearField::S_mask : 0;
    // Slots that a time of day can have; rows with an hour or minute that no day has are placed by the window itself.
    static constexpr std::uint64_t S_slots = [] {
        switch (Interval) {
        case EIntervalSecond:
            return std::uint64_t{TimeParts::S_secondsOfDay};
        case EIntervalMinute:
            return std::uint64_t{TimeParts::S_minutesOfDay};
        case EIntervalHour:
            return std::uint64_t{24};
        default:
            return std::uint64_t{1} << 32U;
        }
    }();

    // The open window.
    std::uint32_t m_calendar = 0;
    std::uint32_t m_clock = 0;
    std::uint32_t m_firstSlot = 0;
    std::uint32_t m_slotSpan = 0;
};

// Columns shorter than this gain nothing from lanes.
inline constexpr std::size_t S_countForLanes = 16;

inline void FoldExtremesInOrder(double& a_greatest, double& a_least, const double* a_high,
                                const double* a_low, std::size_t a_count)
{
    double greatest = a_greatest;
    double least = a_least;
    for (std::size_t row = 0; row < a_count; ++row) {
        greatest = a_high[row] > greatest ? a_high[row] : greatest;
        least = a_low[row] < least ? a_low[row] : least;
    }
    a_greatest = greatest;
    a_least = least;
}

void FoldExtremesInLanes(double& a_greatest, double& a_least, const double* a_high, const double* a_low,
                         std::size_t a_count);

/// Takes into a_greatest each value of a_high that is greater than what is there, and into a_least each value of a_low
/// that is lower, in order. The two columns may be one.
inline void FoldExtremes(double& a_greatest, double& a_least, const double* a_high, const double* a_low,
                         std::size_t a_count)
{
    if (a_count < S_countForLanes)
        FoldExtremesInOrder(a_greatest, a_least, a_high, a_low, a_count);
    else
        FoldExtremesInLanes(a_greatest, a_least, a_high, a_low, a_count);
}

inline double SumInOrder(double a_start, const double* a_values, std::size_t a_count)
{
    double sum = a_start;
    for (std::size_t row = 0; row < a_count; ++row)
        sum += a_values[row];
    return sum;
}

/// Adds columns of one field up. Whole numbers are added in lanes, since every partial sum is then exact and the order
/// can't be seen; anything else in one chain in the order of the rows.
class ColumnSum {
public:
    double Add(double a_start, const double* a_values, std::size_t a_count)
    {
        return a_count < S_countForLanes ? SumInOrder(a_start, a_values, a_count)
                                         : AddInLanes(a_start, a_values, a_count);
    }

private:
    double AddInLanes(double a_start, const double* a_values, std::size_t a_count);

    // A column with a fraction usually has them throughout: after a failed attempt some runs don't try.
    unsigned int m_runsWithoutLanes = 0;
};

} // namespace kalvento::internal
