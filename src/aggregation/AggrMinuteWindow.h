#pragma once

#include "aggregation/SlotWindow.h"
#include "time/TimeParts.h"

/// Windows of 1 to 59 minutes, counted from midnight.
/// Made by AggrWindowsFactory only.
class KALVENTO_API AggrMinuteWindow
    : public kalvento::internal::SlotWindow<AggrMinuteWindow, TimeParts::S_minutesOfDay> {
public:
    NDateTime GetBorderOfWindowTime(const NDateTime& a_time, int a_window) const override;

private:
    friend class AggrWindowsFactory;
    friend class kalvento::internal::SlotWindow<AggrMinuteWindow, TimeParts::S_minutesOfDay>;
    AggrMinuteWindow(unsigned short a_multiplicity, EAggrTimeResult a_timeResult);

    static std::size_t PlaceOf(const NDateTime& a_time) { return a_time.GetHour() * 60 + a_time.GetMinute(); }
};
