#include "aggregation/AggrMonthWindow.h"

#include "aggregation/YearClock.h"
#include "platform/CodePage.h"
#include "time/KalventoException.h"

#include <algorithm>

using namespace kalvento::internal;

namespace {
/// The number of a month, cut at December.
std::int64_t MonthNumber(std::int64_t a_month)
{
    return std::clamp<std::int64_t>(a_month, 0, 12);
}
} // namespace

AggrMonthWindow::AggrMonthWindow(unsigned short a_multiplicity, EAggrTimeResult a_timeResult)
    : WindowOfYear(a_multiplicity, a_timeResult)
{
    if (a_multiplicity > 11)
        throw KalventoException("AggrMonthWindow::AggrMonthWindow", __LINE__,
                                "Wyjątek AggrMonthWindow! Zbyt duża krotność interwału miesięcznego."_cp1250);
}

void AggrMonthWindow::GetWindowLimits(const NDateTime& a_time, NDateTime* a_begin, NDateTime* a_end) const
{
    WindowOfYear::GetWindowLimits(a_time, a_begin, nullptr);
    if (a_end == nullptr)
        return;

    // The last day of the window's last month. The border of the same window is that month's first day: the two are
    // different things to their callers and must not be aligned.
    const std::int64_t next = std::int64_t{GetWindowNumber(a_time)} + 1;
    const std::int64_t month = MonthNumber(m_multiplicity * next);
    const auto year = static_cast<std::int64_t>(a_time.GetYear());
    *a_end = month == 12 ? DateOf(year + 1, 1, 1) : DateOf(year, month + 1, 1);
    a_end->ShiftDays(-1);
}

int AggrMonthWindow::GetWindowNumber(const NDateTime& a_time) const
{
    return WindowNumber(a_time.GetMonth(), m_multiplicity);
}

NDateTime AggrMonthWindow::GetBeginingOfWindowTime(const NDateTime& a_time, int a_window) const
{
    const auto year = static_cast<std::int64_t>(a_time.GetYear());
    return DateOf(year, MonthNumber(std::int64_t{m_multiplicity} * a_window + 1), 1);
}

NDateTime AggrMonthWindow::GetBorderOfWindowTime(const NDateTime& a_time, int a_window) const
{
    const auto year = static_cast<std::int64_t>(a_time.GetYear());
    return DateOf(year, MonthNumber(std::int64_t{m_multiplicity} * (std::int64_t{a_window} + 1)), 1);
}

NDateTime AggrMonthWindow::GetBeginingOfNextWindowTime(const NDateTime&, int) const
{
    // A candle of a day or longer has no closing time to bear: this fails when the first window opens, not earlier.
    throw KalventoException(
        "AggrMonthWindow::GetBeginingOfNextWindowTime", __LINE__,
        "Wyjątek AggrMonthWindow! EOD w stylu MetaStocka agreguj z innym typem czasu niż EMetaStockWindowEnd."_cp1250);
}
