#pragma once

#include "series/DSProp.h"

#include <set>

namespace kalvento::internal {

/// The series that ticks have: those given without the three of candles.
inline std::set<DSProp> TickShape(std::set<DSProp> a_series)
{
    std::erase_if(a_series, [](const DSProp& a_property) { return a_property.IsAggregationSeries(); });
    return a_series;
}

} // namespace kalvento::internal
