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
}

NDateTime AggrMinuteWindow::GetBorderOfWindowTime(const NDateTime& a_time, int a_window) const
{
    const auto slot = static_cast<std::size_t>(LastSlot(a_window, m_multiplicity, S_slots));
    return TimeParts::AtTimeOfDay(a_time, m_table.hour[slot], m_table.minute[slot], 59);
}
