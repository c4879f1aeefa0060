#include "aggregation/AggrWeekWindow.h"

#include "aggregation/YearClock.h"
#include "platform/CodePage.h"
#include "time/KalventoException.h"

#include <algorithm>
#include <array>
#include <chrono>

using namespace kalvento::internal;

namespace {
// A leap year that starts on a Sunday has weeks 0 to 53.
constexpr std::size_t S_weeks = 54;
constexpr std::size_t S_days = 366;
} // namespace

/// The weeks of a year: number, first month and first day. There are but 14 kinds of years.
struct AggrWeekWindow::YearTable {
    std::array<unsigned int, S_weeks> startMonthByWeek{};
    std::array<unsigned int, S_weeks> startDayByWeek{};
    std::array<int, S_days> weekByDay{}; // by day of year, from 0
    std::size_t weeks = 0;
    std::size_t days = 0;

    static const YearTable& Of(unsigned int a_year);

private:
    void Fill(std::chrono::year a_year);
};

void AggrWeekWindow::YearTable::Fill(std::chrono::year a_year)
{
    using namespace std::chrono;
    const sys_days first{a_year / January / 1};
    const sys_days behind{(a_year + years(1)) / January / 1};
    for (sys_days day = first; day < behind; day += std::chrono::days(1)) {
        // The week of 1 January is week 0 however short it is; a 1 January that is a Monday opens no second one.
        if (day == first || weekday(day) == Monday) {
            const year_month_day date(day);
            startMonthByWeek[weeks] = static_cast<unsigned int>(date.month());
            startDayByWeek[weeks] = static_cast<unsigned int>(date.day());
            ++weeks;
        }
        weekByDay[days++] = static_cast<int>(weeks) - 1;
    }
}

const AggrWeekWindow::YearTable& AggrWeekWindow::YearTable::Of(unsigned int a_year)
{
    using namespace std::chrono;
    const auto kindOf = [](year a_of) {
        const std::size_t begins = weekday(sys_days(a_of / January / 1)).c_encoding();
        return begins + (a_of.is_leap() ? 7U : 0U);
    };
    // The calendar repeats after 28 years, of which there is no exception between 1972 and 1999.
    static const auto S_tables = [&kindOf] {
        std::array<YearTable, 14> tables;
        for (int each = 1972; each < 2000; ++each)
            if (YearTable& table = tables[kindOf(year(each))]; table.days == 0)
                table.Fill(year(each));
        return tables;
    }();
    return S_tables[kindOf(year(static_cast<int>(a_year)))];
}

AggrWeekWindow::AggrWeekWindow(unsigned short a_multiplicity, EAggrTimeResult a_timeResult)
    : WindowOfYear(a_multiplicity, a_timeResult)
{
    if (a_multiplicity > 51)
        throw KalventoException("AggrWeekWindow::AggrWeekWindow", __LINE__,
                                "Wyjątek AggrWeekWindow! Zbyt duża krotność interwału tygodniowego."_cp1250);

    m_slotsPerDay = S_weeks;
    static const YearTable S_noYear;
    m_table = &S_noYear;
}

void AggrWeekWindow::TakeTable(unsigned int a_year) const
{
    if (a_year == m_tablesYear)
        return;
    m_tablesYear = a_year;
    m_table = &YearTable::Of(a_year);
    if (m_table->days == S_days)
        m_weekOfDay366 = m_table->weekByDay.back();
    m_hadWeek53 = m_hadWeek53 || m_table->weeks == S_weeks;
}

int AggrWeekWindow::WeekOfDay(std::size_t a_day) const
{
    const std::size_t day = a_day < S_days ? a_day : 0;
    return day + 1 == S_days ? m_weekOfDay366 : m_table->weekByDay[day];
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
    TakeTable(static_cast<unsigned int>(a_time.GetYear()));
    return WeekOfDay(a_time.GetDayOfYear() - 1) / m_multiplicity;
}

NDateTime AggrWeekWindow::GetBeginingOfWindowTime(const NDateTime& a_time, int a_window) const
{
    const std::int64_t place = std::int64_t{m_multiplicity} * a_window;
    const auto week = static_cast<std::size_t>(std::clamp<std::int64_t>(place, 0, S_weeks - 1));
    if (week + 1 == S_weeks && m_hadWeek53)
        return {a_time.GetYear(), 12, 31}; // there is one only in years that end on its Monday
    return {a_time.GetYear(), m_table->startMonthByWeek[week], m_table->startDayByWeek[week]};
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
