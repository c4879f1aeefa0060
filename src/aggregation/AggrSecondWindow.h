#pragma once

#include "aggregation/SlotWindow.h"
#include "time/TimeParts.h"

/// Windows of 1 to 59 seconds, counted from midnight.
/// Made by AggrWindowsFactory only.
class KALVENTO_API AggrSecondWindow
    : public kalvento::internal::SlotWindow<AggrSecondWindow, static_cast<int>(TimeParts::S_secondsOfDay)> {
public:
    NDateTime GetBorderOfWindowTime(const NDateTime& a_time, int a_window) const override;

private:
    friend class AggrWindowsFactory;
    friend class kalvento::internal::SlotWindow<AggrSecondWindow,
                                                static_cast<int>(TimeParts::S_secondsOfDay)>;
    AggrSecondWindow(unsigned short a_multiplicity, EAggrTimeResult a_timeResult);

    static std::size_t PlaceOf(const NDateTime& a_time) { return a_time.GetAbsoluteTime(); }
};
