#include "aggregation/AggrYearWindow.h"

#include "aggregation/YearClock.h"
#include "platform/CodePage.h"
#include "time/KalventoException.h"

using namespace kalvento::internal;

AggrYearWindow::AggrYearWindow(unsigned short a_multiplicity, EAggrTimeResult a_timeResult)
    : AggrBase(a_multiplicity, a_timeResult)
{}

void AggrYearWindow::GetWindowLimits(const NDateTime& a_time, NDateTime* a_begin, NDateTime* a_end) const
{
    const int window = static_cast<int>(a_time.GetYear() / m_multiplicity);
    if (a_begin != nullptr)
        *a_begin = GetBeginingOfWindowTime(a_time, window);
    if (a_end != nullptr)
        *a_end = GetBorderOfWindowTime(a_time, window);
}

bool AggrYearWindow::IsInCurrentWindow(const NDateTime& a_time)
{
    const int window = static_cast<int>(a_time.GetYear() / m_multiplicity);
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
