#pragma once

#include "aggregation/AggrBase.h"

/// Windows of any number of years, counted from year 0.
/// Made by AggrWindowsFactory only.
class KALVENTO_API AggrYearWindow : public AggrBase {
public:
    bool IsInCurrentWindow(const NDateTime& a_time) override;
    NDateTime GetBeginingOfWindowTime(const NDateTime& a_time, int a_window) const override;
    NDateTime GetBorderOfWindowTime(const NDateTime& a_time, int a_window) const override;
    NDateTime GetBeginingOfNextWindowTime(const NDateTime& a_time, int a_window) const override;
    int GetWindowNumber(const NDateTime& a_time) const override;

private:
    friend class AggrWindowsFactory;
    AggrYearWindow(unsigned short a_multiplicity, EAggrTimeResult a_timeResult);
};
