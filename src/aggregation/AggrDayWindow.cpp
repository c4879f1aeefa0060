#include "aggregation/AggrDayWindow.h"

#include "aggregation/YearClock.h"
#include "platform/CodePage.h"
#include "time/KalventoException.h"

using namespace kalvento::internal;

AggrDayWindow::AggrDayWindow(unsigned short a_multiplicity, EAggrTimeResult a_timeResult)
    : WindowOfYear(a_multiplicity, a_timeResult)
{
    if (a_multiplicity > 365)
        throw KalventoException("AggrDayWindow::AggrDayWindow", __LINE__,
                                "Wyjątek AggrDayWindow! Zbyt duża krotność interwału dziennego."_cp1250);
}

int AggrDayWindow::GetWindowNumber(const NDateTime& a_time) const
{
    return WindowNumber(a_time.GetDayOfYear(), m_multiplicity);
}

NDateTime AggrDayWindow::GetBeginingOfWindowTime(const NDateTime& a_time, int a_window) const
{
    NDateTime begin(a_time.GetYear(), 1, 1);
    begin.ShiftDays(CutToInt(std::int64_t{m_multiplicity} * a_window));
    return begin;
}

NDateTime AggrDayWindow::GetBorderOfWindowTime(const NDateTime& a_time, int a_window) const
{
    return MovedWithinYear(GetBeginingOfWindowTime(a_time, a_window), m_multiplicity - 1, a_time.GetYear());
}

NDateTime AggrDayWindow::GetBeginingOfNextWindowTime(const NDateTime&, int) const
{
    // A candle of a day or longer has no closing time to bear: this fails when the first window opens, not earlier.
    throw KalventoException(
        "AggrDayWindow::GetBeginingOfNextWindowTime", __LINE__,
        "Wyjątek AggrDayWindow! EOD w stylu MetaStocka agreguj z innym typem czasu niż EMetaStockWindowEnd."_cp1250);
}
