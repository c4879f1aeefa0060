#include "aggregation/AggrTickWindow.h"

#include "platform/CodePage.h"
#include "time/KalventoException.h"

// The texts name a class other than the one that raises. They stay, because people search the log for them as they are.

AggrTickWindow::AggrTickWindow(unsigned short a_multiplicity, EAggrTimeResult a_timeResult)
    : AggrBase(a_multiplicity, a_timeResult)
{
    if (a_timeResult >= EWindowBegin)
        throw KalventoException(
            "AggrTickWindow::AggrTickWindow", __LINE__,
            "Wyjątek AggrTickWindow! Nieprawidłowy typ agregacji czasu dla interwału tickowego."_cp1250);
}

void AggrTickWindow::GetWindowLimits(const NDateTime&, NDateTime*, NDateTime*) const
{
    throw KalventoException("AggrTickWindow::GetWindowLimits", __LINE__,
                            "Wyjątek AggrSecondWindow! Niedopuszczalne wywołanie GetWindowLimits."_cp1250);
}

bool AggrTickWindow::IsInCurrentWindow(const NDateTime& a_time)
{
    const int dayOfYear = static_cast<int>(a_time.GetDayOfYear());
    if (++m_tickCounter < m_multiplicity && dayOfYear == m_currentDay)
        return true;
    m_tickCounter = 0;
    m_currentDay = dayOfYear;
    return false;
}

NDateTime AggrTickWindow::GetBeginingOfWindowTime(const NDateTime&, int) const
{
    throw KalventoException(
        "AggrTickWindow::GetBeginingOfWindowTime", __LINE__,
        "Wyjątek AggrSecondWindow! Niedopuszczalne wywołanie GetBeginingOfWindowTime."_cp1250);
}

NDateTime AggrTickWindow::GetBorderOfWindowTime(const NDateTime&, int) const
{
    throw KalventoException(
        "AggrTickWindow::GetBorderOfWindowTime", __LINE__,
        "Wyjątek AggrSecondWindow! Niedopuszczalne wywołanie GetBorderOfWindowTime."_cp1250);
}

NDateTime AggrTickWindow::GetBeginingOfNextWindowTime(const NDateTime&, int) const
{
    throw KalventoException(
        "AggrTickWindow::GetBeginingOfNextWindowTime", __LINE__,
        "Wyjątek AggrSecondWindow! Niedopuszczalne wywołanie GetBeginingOfNextWindowTime."_cp1250);
}

int AggrTickWindow::GetWindowNumber(const NDateTime&) const
{
    throw KalventoException("AggrTickWindow::GetWindowNumber", __LINE__,
                            "Wyjątek AggrTickWindow! Niedopuszczalne wywołanie GetWindowNumber."_cp1250);
}
