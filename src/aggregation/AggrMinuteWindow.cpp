#include "aggregation/AggrMinuteWindow.h"

#include "platform/CodePage.h"
#include "time/KalventoException.h"
#include "time/TimeParts.h"

using namespace kalvento::internal;

namespace {
constexpr int S_slots = TimeParts::S_minutesOfDay;
}

AggrMinuteWindow::AggrMinuteWindow(unsigned short a_multiplicity, EAggrTimeResult a_timeResult)
    : SlotWindow(a_multiplicity, a_timeResult)
{
    if (a_multiplicity > 59)
        throw KalventoException("AggrMinuteWindow::AggrMinuteWindow", __LINE__,
                                "Wyjątek AggrMinuteWindow! Zbyt duża krotność interwału minutowego."_cp1250);

    m_hourBySlot.reserve(S_slots);
    m_minuteBySlot.reserve(S_slots);
    m_slotByPlace.reserve(S_slots);
    for (int slot = 0; slot < S_slots; ++slot) {
        m_hourBySlot.push_back(static_cast<unsigned short>(slot / 60));
        m_minuteBySlot.push_back(static_cast<unsigned short>(slot % 60));
        m_slotByPlace.push_back(slot);
    }
}

NDateTime AggrMinuteWindow::AtSlot(const NDateTime& a_time, std::size_t a_slot) const
{
    return TimeParts::AtTimeOfDay(a_time, m_hourBySlot[a_slot], m_minuteBySlot[a_slot], 0);
}

NDateTime AggrMinuteWindow::GetBorderOfWindowTime(const NDateTime& a_time, int a_window) const
{
    const auto slot = static_cast<std::size_t>(LastSlot(a_window, m_multiplicity, S_slots));
    return TimeParts::AtTimeOfDay(a_time, m_hourBySlot[slot], m_minuteBySlot[slot], 59);
}
