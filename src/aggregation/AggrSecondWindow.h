#pragma once

#include "aggregation/AggrBase.h"

#include <vector>

/// Windows of 1 to 59 seconds, counted from midnight.
/// Made by AggrWindowsFactory only.
class KALVENTO_API AggrSecondWindow : public AggrBase {
public:
    void GetWindowLimits(const NDateTime& a_time, NDateTime* a_begin, NDateTime* a_end) const override;
    bool IsInCurrentWindow(const NDateTime& a_time) override;
    NDateTime GetBeginingOfWindowTime(const NDateTime& a_time, int a_window) const override;
    NDateTime GetBorderOfWindowTime(const NDateTime& a_time, int a_window) const override;
    NDateTime GetBeginingOfNextWindowTime(const NDateTime& a_time, int a_window) const override;

private:
    friend class AggrWindowsFactory;
    AggrSecondWindow(unsigned short a_multiplicity, EAggrTimeResult a_timeResult);

    // By slot: the time of day at which it begins. Lookups, so that no window start needs a calendar conversion.
    std::vector<unsigned short> m_hourBySlot;
    std::vector<unsigned short> m_minuteBySlot;
    std::vector<unsigned short> m_secondBySlot;
    std::vector<int> m_slotBySecond; // by second of the day
};
