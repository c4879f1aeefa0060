#include "series/Synchronization.h"

Synchronization::Synchronization(const std::set<DSProp>& a_series) : DataSeriesSet(EIntervalTick, 1, a_series)
{}
