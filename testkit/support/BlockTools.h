#pragma once

#include "series/DataSeriesSet.h"

#include <sstream>
#include <string>
#include <vector>

/// The bytes of a block of rows: columns, whole times with counters and reserved bytes, interval data.
inline std::string BytesOf(const DataSeriesSet& a_rows)
{
    std::ostringstream bytes;
    a_rows.Write(bytes);
    return std::move(bytes).str();
}

/// Some of the rows, as a block of the kind asked for.
template<class Set>
Set Slice(const DataSeriesSet& a_rows, std::size_t a_first, std::size_t a_last)
{
    const auto cut = [&](const auto& a_values) {
        return std::vector(a_values.begin() + static_cast<std::ptrdiff_t>(a_first),
                           a_values.begin() + static_cast<std::ptrdiff_t>(a_last));
    };
    DataSeriesSet::Columns columns;
    for (const auto& [series, values] : a_rows)
        columns.emplace_back(series, cut(values));
    const IntervalAndMultiplicity interval = a_rows.GetIntervalData();
    return {interval.GetInterval(), interval.GetMultiplicity(), cut(a_rows.TimeSeries()), std::move(columns)};
}
