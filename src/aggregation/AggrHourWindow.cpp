#include "aggregation/AggrHourWindow.h"

#include "platform/CodePage.h"
#include "time/KalventoException.h"
#include "time/TimeParts.h"

#include <algorithm>

using namespace kalvento::internal;

AggrHourWindow::AggrHourWindow(unsigned short a_multiplicity, EAggrTimeResult a_timeResult)
    : SlotWindow(a_multiplicity, a_timeResult)
{
    if (a_multiplicity > 24)
        throw KalventoException("AggrHourWindow::AggrHourWindow", __LINE__,
                                "Wyjątek AggrHourWindow! Zbyt duża krotność interwału godzinowego."_cp1250);
}

NDateTime AggrHourWindow::GetBorderOfWindowTime(const NDateTime& a_time, int a_window) const
{
    const auto slot =
        static_cast<std::size_t>(std::min<std::int64_t>(FirstSlot(a_window, m_multiplicity), 23));
    return TimeParts::AtTimeOfDay(a_time, std::min(23U, m_table.hour[slot] + m_multiplicity - 1U), 59, 59);
}
