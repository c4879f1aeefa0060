#include "aggregation/AggrMinuteWindow.h"

#include "aggregation/DayClock.h"
#include "platform/CodePage.h"
#include "time/KalventoException.h"

using namespace kalvento::internal;

namespace {
constexpr int S_slots = 24 * 60;
}

AggrMinuteWindow::AggrMinuteWindow(unsigned short a_multiplicity, EAggrTimeResult a_timeResult)
    : AggrBase(a_multiplicity, a_timeResult)
{
    if (a_multiplicity > 59)
        throw KalventoException("AggrMinuteWindow::AggrMinuteWindow", __LINE__,
                                "Wyjątek AggrMinuteWindow! Zbyt duża krotność interwału minutowego."_cp1250);

    m_slotsPerDay = S_slots;
    m_hourBySlot.reserve(S_slots);
    m_minuteBySlot.reserve(S_slots);
    m_slotByMinute.reserve(S_slots);
    for (int slot = 0; slot < S_slots; ++slot) {
        m_hourBySlot.push_back(static_cast<unsigned short>(slot / 60));
        m_minuteBySlot.push_back(static_cast<unsigned short>(slot % 60));
        m_slotByMinute.push_back(slot);
    }
}

void AggrMinuteWindow::GetWindowLimits(const NDateTime& a_time, NDateTime* a_begin, NDateTime* a_end) const
{
    const int window = WindowOfSlot(EntryOrFirst(m_slotByMinute, a_time.GetHour() * 60 + a_time.GetMinute()),
                                    m_multiplicity);
    if (a_begin != nullptr)
        *a_begin = GetBeginingOfWindowTime(a_time, window);
    if (a_end != nullptr)
        *a_end = GetBorderOfWindowTime(a_time, window);
}

bool AggrMinuteWindow::IsInCurrentWindow(const NDateTime& a_time)
{
    const int window = WindowOfSlot(EntryOrFirst(m_slotByMinute, a_time.GetHour() * 60 + a_time.GetMinute()),
                                    m_multiplicity);
    const int dayOfYear = static_cast<int>(a_time.GetDayOfYear());
    // The day of the year and not the date: a row exactly a year later counts as the same window. Candles stored by
    // earlier versions were folded this way and must stay reproducible.
    if (window == m_currentWindow && dayOfYear == m_currentDay)
        return true;
    m_currentWindow = window;
    m_currentDay = dayOfYear;
    return false;
}

NDateTime AggrMinuteWindow::GetBeginingOfWindowTime(const NDateTime& a_time, int a_window) const
{
    const std::int64_t first = FirstSlot(a_window, m_multiplicity);
    if (first >= S_slots)
        return NextMidnight(a_time);
    const auto slot = static_cast<std::size_t>(first);
    return AtTimeOfDay(a_time, m_hourBySlot[slot], m_minuteBySlot[slot], 0);
}

NDateTime AggrMinuteWindow::GetBorderOfWindowTime(const NDateTime& a_time, int a_window) const
{
    const auto slot = static_cast<std::size_t>(LastSlot(a_window, m_multiplicity, S_slots));
    return AtTimeOfDay(a_time, m_hourBySlot[slot], m_minuteBySlot[slot], 59);
}

NDateTime AggrMinuteWindow::GetBeginingOfNextWindowTime(const NDateTime& a_time, int a_window) const
{
    const std::int64_t first = FirstSlot(std::int64_t{a_window} + 1, m_multiplicity);
    if (first >= S_slots)
        return NextMidnight(a_time);
    return GetBeginingOfWindowTime(a_time, a_window + 1);
}
