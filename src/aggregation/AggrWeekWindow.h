#pragma once

#include "aggregation/WindowOfYear.h"

#include <vector>

/// Windows of 1 to 51 weeks from Monday to Sunday, counted from 1 January, whose week may be short.
/// Made by AggrWindowsFactory only.
class KALVENTO_API AggrWeekWindow : public kalvento::internal::WindowOfYear {
public:
    void GetWindowLimits(const NDateTime& a_time, NDateTime* a_begin, NDateTime* a_end) const override;
    NDateTime GetBeginingOfWindowTime(const NDateTime& a_time, int a_window) const override;
    NDateTime GetBorderOfWindowTime(const NDateTime& a_time, int a_window) const override;
    NDateTime GetBeginingOfNextWindowTime(const NDateTime& a_time, int a_window) const override;
    int GetWindowNumber(const NDateTime& a_time) const override;

private:
    friend class AggrWindowsFactory;
    AggrWeekWindow(unsigned short a_multiplicity, EAggrTimeResult a_timeResult);

    /// Weeks of a year: number, first month and first day.
    void FillTables(unsigned int a_year) const;

    // The tables of one year at a time; rebuilt for a row of another year.
    mutable std::vector<unsigned int> m_startMonthByWeek;
    mutable std::vector<unsigned int> m_startDayByWeek;
    mutable std::vector<int> m_weekByDay; // by day of year, from 0
    mutable unsigned int m_tablesYear = 0;
};
