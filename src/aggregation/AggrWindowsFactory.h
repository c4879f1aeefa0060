#pragma once

#include "aggregation/AggrBase.h"
#include "time/EInterval.h"

#include <memory>

/// The only way to make a window, so that no window exists outside its interval's limits.
class KALVENTO_API AggrWindowsFactory {
public:
    /// The window class of an interval from tick to year. An unknown interval, multiplicity 0, a multiplicity above the
    /// interval's limit, or a time result that ticks can't have raises KalventoException.
    static std::unique_ptr<AggrBase> GetAggrWindowClass(EInterval a_interval, unsigned short a_multiplicity,
                                                        EAggrTimeResult a_timeResult);
};
