#pragma once

#include "aggregation/SlotWindow.h"

/// Windows of 1 to 24 hours, counted from midnight.
/// Made by AggrWindowsFactory only.
class KALVENTO_API AggrHourWindow : public kalvento::internal::SlotWindow<AggrHourWindow, 24> {
public:
    NDateTime GetBorderOfWindowTime(const NDateTime& a_time, int a_window) const override;

private:
    friend class AggrWindowsFactory;
    friend class kalvento::internal::SlotWindow<AggrHourWindow, 24>;
    AggrHourWindow(unsigned short a_multiplicity, EAggrTimeResult a_timeResult);

    static std::size_t PlaceOf(const NDateTime& a_time) { return a_time.GetHour(); }
};
