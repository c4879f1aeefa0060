#pragma once

#include "series/DataSeriesSet.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace kalvento::internal {

/// The rows from a_begin to before a_end as a set of their own: a History or a Synchronization, of the same interval.
template<typename Set>
Set RowsBetween(const DataSeriesSet& a_rows, std::size_t a_begin, std::size_t a_end)
{
    const auto begin = static_cast<std::ptrdiff_t>(a_begin);
    const auto end = static_cast<std::ptrdiff_t>(a_end);
    std::vector<NDateTime> times(a_rows.TimeSeries().begin() + begin, a_rows.TimeSeries().begin() + end);
    DataSeriesSet::Columns columns;
    for (const auto& [series, values] : a_rows)
        columns.emplace_back(series, std::vector<double>(values.begin() + begin, values.begin() + end));
    return Set(a_rows.GetIntervalData().GetInterval(), a_rows.GetIntervalData().GetMultiplicity(),
               std::move(times), std::move(columns));
}

} // namespace kalvento::internal
