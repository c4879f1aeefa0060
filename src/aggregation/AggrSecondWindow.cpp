#include "aggregation/AggrSecondWindow.h"

#include "platform/CodePage.h"
#include "time/KalventoException.h"
#include "time/TimeParts.h"

using namespace kalvento::internal;

namespace {
constexpr int S_slots = static_cast<int>(TimeParts::S_secondsOfDay);
}

AggrSecondWindow::AggrSecondWindow(unsigned short a_multiplicity, EAggrTimeResult a_timeResult)
    : SlotWindow(a_multiplicity, a_timeResult)
{
    if (a_multiplicity > 59)
        throw KalventoException("AggrSecondWindow::AggrSecondWindow", __LINE__,
                                "Wyjątek AggrSecondWindow! Zbyt duża krotność interwału sekundowego."_cp1250);

    m_hourBySlot.reserve(S_slots);
    m_minuteBySlot.reserve(S_slots);
    m_secondBySlot.reserve(S_slots);
    m_slotByPlace.reserve(S_slots);
    for (int slot = 0; slot < S_slots; ++slot) {
        const auto clock = TimeParts::ClockOf(static_cast<std::uint32_t>(slot));
        m_hourBySlot.push_back(static_cast<unsigned short>(clock.hour));
        m_minuteBySlot.push_back(static_cast<unsigned short>(clock.minute));
        m_secondBySlot.push_back(static_cast<unsigned short>(clock.second));
        m_slotByPlace.push_back(slot);
    }
}

NDateTime AggrSecondWindow::AtSlot(const NDateTime& a_time, std::size_t a_slot) const
{
    return TimeParts::AtTimeOfDay(a_time, m_hourBySlot[a_slot], m_minuteBySlot[a_slot],
                                  m_secondBySlot[a_slot]);
}

NDateTime AggrSecondWindow::GetBorderOfWindowTime(const NDateTime& a_time, int a_window) const
{
    const auto slot = static_cast<std::size_t>(LastSlot(a_window, m_multiplicity, S_slots));
    return AtSlot(a_time, slot);
}
