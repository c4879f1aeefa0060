#include "aggregation/AggrHourWindow.h"

#include "platform/CodePage.h"
#include "time/KalventoException.h"
#include "time/TimeParts.h"

#include <algorithm>

using namespace kalvento::internal;

namespace {
constexpr int S_slots = 24;
}

AggrHourWindow::AggrHourWindow(unsigned short a_multiplicity, EAggrTimeResult a_timeResult)
    : SlotWindow(a_multiplicity, a_timeResult)
{
    if (a_multiplicity > 24)
        throw KalventoException("AggrHourWindow::AggrHourWindow", __LINE__,
                                "Wyjątek AggrHourWindow! Zbyt duża krotność interwału godzinowego."_cp1250);

    m_hourBySlot.reserve(S_slots);
    m_slotByPlace.reserve(S_slots);
    for (int slot = 0; slot < S_slots; ++slot) {
        m_hourBySlot.push_back(static_cast<unsigned short>(slot));
        m_slotByPlace.push_back(slot);
    }
}

NDateTime AggrHourWindow::AtSlot(const NDateTime& a_time, std::size_t a_slot) const
{
    return TimeParts::AtTimeOfDay(a_time, m_hourBySlot[a_slot], 0, 0);
}

NDateTime AggrHourWindow::GetBorderOfWindowTime(const NDateTime& a_time, int a_window) const
{
    const auto slot =
        static_cast<std::size_t>(std::min<std::int64_t>(FirstSlot(a_window, m_multiplicity), 23));
    return TimeParts::AtTimeOfDay(a_time, std::min(23U, m_hourBySlot[slot] + m_multiplicity - 1U), 59, 59);
}
