#include "aggregation/AggrWeekWindow.h"

#include "aggregation/YearClock.h"
#include "platform/CodePage.h"
#include "time/KalventoException.h"

#include <algorithm>
#include <chrono>

using namespace kalvento::internal;

namespace {
// A leap year that starts on a Sunday has weeks 0 to 53.
constexpr std::size_t S_weeks = 54;
constexpr std::size_t S_days = 366;
} // namespace

AggrWeekWindow::AggrWeekWindow(unsigned short a_multiplicity, EAggrTimeResult a_timeResult)
    : WindowOfYear(a_multiplicity, a_timeResult)
{
    if (a_multiplicity > 51)
        throw KalventoException("AggrWeekWindow::AggrWeekWindow", __LINE__,
                                "Wyjątek AggrWeekWindow! Zbyt duża krotność interwału tygodniowego."_cp1250);

    m_slotsPerDay = S_weeks;
    m_startMonthByWeek.resize(S_weeks);
    m_startDayByWeek.resize(S_weeks);
    m_weekByDay.resize(S_days);
}

void AggrWeekWindow::FillTables(unsigned int a_year) const
{
    if (a_year == m_tablesYear)
        return;
    m_tablesYear = a_year;

    using namespace std::chrono;
    const sys_days first{year(static_cast<int>(a_year)) / January / 1};
    const sys_days behind{year(static_cast<int>(a_year) + 1) / January / 1};
    std::size_t week = 0;
    for (sys_days day = first; day < behind; day += days(1)) {
        // The week of 1 January is week 0 however short it is; a 1 January that is a Monday opens no second one.
        const bool opensWeek = day == first || weekday(day) == Monday;
        if (opensWeek) {
            week += day == first ? 0 : 1;
            const year_month_day date(day);
            m_startMonthByWeek[week] = static_cast<unsigned int>(date.month());
            m_startDayByWeek[week] = static_cast<unsigned int>(date.day());
        }
        m_weekByDay[static_cast<std::size_t>((day - first).count())] = static_cast<int>(week);
    }
}

void AggrWeekWindow::GetWindowLimits(const NDateTime& a_time, NDateTime* a_begin, NDateTime* a_end) const
{
    if (a_time.GetDayOfYear() - 1 >= S_days)
        throw KalventoException("AggrWeekWindow::GetWindowLimits", __LINE__,
                                "Błędny indeks dnia w roku."_cp1250);
    AggrBase::GetWindowLimits(a_time, a_begin, a_end);
}

int AggrWeekWindow::GetWindowNumber(const NDateTime& a_time) const
{
    FillTables(static_cast<unsigned int>(a_time.GetYear()));
    const std::size_t day = a_time.GetDayOfYear() - 1;
    return m_weekByDay[day < S_days ? day : 0] / m_multiplicity;
}

NDateTime AggrWeekWindow::GetBeginingOfWindowTime(const NDateTime& a_time, int a_window) const
{
    const std::int64_t place = std::int64_t{m_multiplicity} * a_window;
    const auto week = static_cast<std::size_t>(std::clamp<std::int64_t>(place, 0, S_weeks - 1));
    return {a_time.GetYear(), m_startMonthByWeek[week], m_startDayByWeek[week]};
}

NDateTime AggrWeekWindow::GetBorderOfWindowTime(const NDateTime& a_time, int a_window) const
{
    // Whole weeks from the window's start: after a short week 0 this reaches past that week's Sunday. Charts label
    // windows by this border, while membership goes by the table of weeks.
    return MovedWithinYear(GetBeginingOfWindowTime(a_time, a_window), 7 * m_multiplicity - 1,
                           a_time.GetYear());
}

NDateTime AggrWeekWindow::GetBeginingOfNextWindowTime(const NDateTime&, int) const
{
    // A candle of a day or longer has no closing time to bear: this fails when the first window opens, not earlier.
    throw KalventoException(
        "AggrWeekWindow::GetBeginingOfNextWindowTime", __LINE__,
        "Wyjątek AggrWeekWindow! EOD w stylu MetaStocka agreguj z innym typem czasu niż EMetaStockWindowEnd."_cp1250);
}
