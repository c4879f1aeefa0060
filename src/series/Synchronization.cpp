#include "series/Synchronization.h"

Synchronization::Synchronization(EInterval a_interval, unsigned int a_multiplicity)
    : DataSeriesSet(a_interval, a_multiplicity)
{}

Synchronization::Synchronization(EInterval a_interval, unsigned int a_multiplicity,
                                 const std::set<ESeriesId>& a_series)
    : DataSeriesSet(a_interval, a_multiplicity, a_series)
{}

Synchronization::Synchronization(EInterval a_interval, unsigned int a_multiplicity,
                                 const std::set<DSProp>& a_series)
    : DataSeriesSet(a_interval, a_multiplicity, a_series)
{}

Synchronization::Synchronization(const std::set<DSProp>& a_series) : DataSeriesSet(EIntervalTick, 1, a_series)
{}

Synchronization::Synchronization(EInterval a_interval, unsigned int a_multiplicity,
                                 std::vector<NDateTime>&& a_times, Columns&& a_columns)
    : DataSeriesSet(a_interval, a_multiplicity, std::move(a_times), std::move(a_columns))
{}

Synchronization::Synchronization(std::istream& a_stream) : DataSeriesSet(a_stream) {}
