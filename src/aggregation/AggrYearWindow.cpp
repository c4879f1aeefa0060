#include "aggregation/AggrYearWindow.h"

#include "aggregation/YearClock.h"
#include "platform/CodePage.h"
#include "time/KalventoException.h"

using namespace kalvento::internal;

AggrYearWindow::AggrYearWindow(unsigned short a_multiplicity, EAggrTimeResult a_timeResult)
    : AggrBase(a_multiplicity, a_timeResult)
{}

int AggrYearWindow::GetWindowNumber(const NDateTime& a_time) const
{
    return static_cast<int>(a_time.GetYear() / m_multiplicity);
}

bool AggrYearWindow::IsInCurrentWindow(const NDateTime& a_time)
{
    const int window = GetWindowNumber(a_time);
    if (window == m_currentWindow)
        return true;
    m_currentWindow = window;
    m_currentDay = static_cast<int>(a_time.GetDayOfYear());
    return false;
}

NDateTime AggrYearWindow::GetBeginingOfWindowTime(const NDateTime&, int a_window) const
{
    return DateOf(std::int64_t{m_multiplicity} * a_window, 1, 1);
}

NDateTime AggrYearWindow::GetBorderOfWindowTime(const NDateTime&, int a_window) const
{
    return DateOf(std::int64_t{m_multiplicity} * (std::int64_t{a_window} + 1) - 1, 12, 31);
}

NDateTime AggrYearWindow::GetBeginingOfNextWindowTime(const NDateTime&, int) const
{
    // A candle of a day or longer has no closing time to bear: this fails when the first window opens, not earlier.
    throw KalventoException(
        "AggrYearWindow::GetBeginingOfNextWindowTime", __LINE__,
        "Wyjątek AggrYearWindow! EOD w stylu MetaStocka agreguj z innym typem czasu niż EMetaStockWindowEnd."_cp1250);
}
