#pragma once

#include "platform/Export.h"
#include "series/DataSeriesSet.h"

/// The block that ties a live subscription to what has already passed: its last candle stays open for the rows that
/// follow. Holds no state beyond its base; written and read like any other set.
class KALVENTO_API Synchronization : public DataSeriesSet {
public:
    Synchronization(EInterval a_interval, unsigned int a_multiplicity);
    Synchronization(EInterval a_interval, unsigned int a_multiplicity, const std::set<ESeriesId>& a_series);
    Synchronization(EInterval a_interval, unsigned int a_multiplicity, const std::set<DSProp>& a_series);
    /// Single ticks.
    explicit Synchronization(const std::set<DSProp>& a_series);
    Synchronization(EInterval a_interval, unsigned int a_multiplicity, std::vector<NDateTime>&& a_times,
                    Columns&& a_columns);
    explicit Synchronization(std::istream& a_stream);

    Synchronization(const Synchronization&) = default;
    Synchronization& operator=(const Synchronization&) = default;
    Synchronization(Synchronization&&) noexcept = default;
    Synchronization& operator=(Synchronization&&) noexcept = default;
    ~Synchronization() override = default;
};
