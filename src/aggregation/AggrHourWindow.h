#pragma once

#include "aggregation/AggrBase.h"

#include <vector>

/// Windows of 1 to 24 hours, counted from midnight.
/// Made by AggrWindowsFactory only.
class KALVENTO_API AggrHourWindow : public AggrBase {
public:
    void GetWindowLimits(const NDateTime& a_time, NDateTime* a_begin, NDateTime* a_end) const override;
    bool IsInCurrentWindow(const NDateTime& a_time) override;
    NDateTime GetBeginingOfWindowTime(const NDateTime& a_time, int a_window) const override;
    NDateTime GetBorderOfWindowTime(const NDateTime& a_time, int a_window) const override;
    NDateTime GetBeginingOfNextWindowTime(const NDateTime& a_time, int a_window) const override;

private:
    friend class AggrWindowsFactory;
    AggrHourWindow(unsigned short a_multiplicity, EAggrTimeResult a_timeResult);

    std::vector<unsigned short> m_hourBySlot;
    std::vector<int> m_slotByHour;
};
