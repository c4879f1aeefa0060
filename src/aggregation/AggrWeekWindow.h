#pragma once

#include "aggregation/WindowOfYear.h"

#include <cstddef>

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

    struct YearTable;
    void TakeTable(unsigned int a_year) const;
    int WeekOfDay(std::size_t a_day) const;

    // The weeks of one year at a time, in a table that all windows share. Charts were stored by windows that wrote each
    // year over the one before, so the places that only some years have keep what the last year with them left there.
    mutable const YearTable* m_table;
    mutable unsigned int m_tablesYear = 0;
    mutable int m_weekOfDay366 = 0;
    mutable bool m_hadWeek53 = false;
};
