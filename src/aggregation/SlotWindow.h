#pragma once

#include "aggregation/AggrBase.h"
#include "aggregation/DayClock.h"
#include "aggregation/DayTable.h"
#include "time/TimeParts.h"

#include <cstddef>
#include <cstdint>

namespace kalvento::internal {

/// What windows of seconds, minutes and hours share: a day is a row of slots, and a window is a fixed number of them,
/// counted from midnight. Window gives `PlaceOf(time)`, the place of a time in the day.
template<typename Window, int Slots>
class SlotWindow : public AggrBase {
public:
    bool IsInCurrentWindow(const NDateTime& a_time) override
    {
        const int window = SlotWindow::GetWindowNumber(a_time);
        const int dayOfYear = static_cast<int>(a_time.GetDayOfYear());
        // The day of the year and not the date: a row exactly a year later counts as the same window. Candles stored
        // by earlier versions were folded this way and must stay reproducible.
        if (window == m_currentWindow && dayOfYear == m_currentDay)
            return true;
        m_currentWindow = window;
        m_currentDay = dayOfYear;
        return false;
    }

    NDateTime GetBeginingOfWindowTime(const NDateTime& a_time, int a_window) const override
    {
        return BeginOf(a_time, a_window);
    }

    NDateTime GetBeginingOfNextWindowTime(const NDateTime& a_time, int a_window) const override
    {
        return BeginOf(a_time, std::int64_t{a_window} + 1);
    }

    int GetWindowNumber(const NDateTime& a_time) const override
    {
        return WindowOfSlot(EntryOrFirst(m_table.slot, Window::PlaceOf(a_time)), m_multiplicity);
    }

protected:
    SlotWindow(unsigned short a_multiplicity, EAggrTimeResult a_timeResult)
        : AggrBase(a_multiplicity, a_timeResult), m_table(Table())
    {
        m_slotsPerDay = Slots;
    }

    NDateTime AtSlot(const NDateTime& a_time, std::size_t a_slot) const
    {
        return TimeParts::AtTimeOfDay(a_time, m_table.hour[a_slot], m_table.minute[a_slot],
                                      m_table.second[a_slot]);
    }

    const DayTable& m_table;

private:
    // One for each class: a million symbols have two windows each.
    static const DayTable& Table()
    {
        static const DayTable S_table(Slots);
        return S_table;
    }

    NDateTime BeginOf(const NDateTime& a_time, std::int64_t a_window) const
    {
        const std::int64_t first = FirstSlot(a_window, m_multiplicity);
        if (first >= Slots)
            return TimeParts::NextMidnight(a_time);
        return AtSlot(a_time, static_cast<std::size_t>(first));
    }
};

} // namespace kalvento::internal
