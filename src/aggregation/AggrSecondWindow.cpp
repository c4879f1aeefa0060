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
}

NDateTime AggrSecondWindow::GetBorderOfWindowTime(const NDateTime& a_time, int a_window) const
{
    const auto slot = static_cast<std::size_t>(LastSlot(a_window, m_multiplicity, S_slots));
    return AtSlot(a_time, slot);
}
