#pragma once

#include "aggregation/WindowOfYear.h"

/// Windows of 1 to 11 months, counted from January.
/// Made by AggrWindowsFactory only.
class KALVENTO_API AggrMonthWindow : public kalvento::internal::WindowOfYear {
public:
    void GetWindowLimits(const NDateTime& a_time, NDateTime* a_begin, NDateTime* a_end) const override;
    NDateTime GetBeginingOfWindowTime(const NDateTime& a_time, int a_window) const override;
    NDateTime GetBorderOfWindowTime(const NDateTime& a_time, int a_window) const override;
    NDateTime GetBeginingOfNextWindowTime(const NDateTime& a_time, int a_window) const override;
    int GetWindowNumber(const NDateTime& a_time) const override;

private:
    friend class AggrWindowsFactory;
    AggrMonthWindow(unsigned short a_multiplicity, EAggrTimeResult a_timeResult);
};
