#pragma once

#include "platform/Export.h"
#include "series/DataSeriesSet.h"

/// The block that ties a live subscription to what has already passed: its last candle stays open for the rows that
/// follow. Holds no state beyond its base; written and read like any other set.
class KALVENTO_API Synchronization : public DataSeriesSet {
public:
    using DataSeriesSet::DataSeriesSet;
    /// Single ticks.
    explicit Synchronization(const std::set<DSProp>& a_series);
};
