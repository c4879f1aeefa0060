#pragma once

#include "aggregation/WindowOfYear.h"

/// Windows of 1 to 365 days, counted from 1 January.
/// Made by AggrWindowsFactory only.
class KALVENTO_API AggrDayWindow : public kalvento::internal::WindowOfYear {
public:
    NDateTime GetBeginingOfWindowTime(const NDateTime& a_time, int a_window) const override;
    NDateTime GetBorderOfWindowTime(const NDateTime& a_time, int a_window) const override;
    NDateTime GetBeginingOfNextWindowTime(const NDateTime& a_time, int a_window) const override;
    int GetWindowNumber(const NDateTime& a_time) const override;

private:
    friend class AggrWindowsFactory;
    AggrDayWindow(unsigned short a_multiplicity, EAggrTimeResult a_timeResult);
};
