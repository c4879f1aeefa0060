#pragma once

#include "series/History.h"
#include "series/SeriesTestTools.h"
#include "support/Testing.h"

namespace kalvento::tests {

/// Ticks of some days in random steps, often several in one second, equal prices among them, with a year's pause in the
/// middle: up to the same day of the year. Values are decimal fractions, so that another order of additions shows in the
/// sums, unless a_step is a power of two.
inline DataSeriesSet RandomTicks(std::size_t a_count, unsigned int a_seed,
                                 const std::vector<ESeriesId>& a_more = {}, double a_step = 0.1)
{
    std::mt19937 random(a_seed);
    std::vector<NDateTime> times;
    DataSeriesSet::Columns columns = {{Price, {}}, {Volume, {}}};
    for (const ESeriesId series : a_more)
        columns.emplace_back(series, std::vector<double>());
    NDateTime time(2020, 12, 28, 9, 0, 0, 0);
    for (std::size_t row = 0; row < a_count; ++row) {
        times.push_back(time);
        for (auto& [series, values] : columns)
            values.push_back(series == Price ? 100.0 + static_cast<double>(random() % 9) / 10.0
                                             : static_cast<double>(1 + random() % 50) * a_step);
        if (row == a_count / 2)
            time.ShiftDays(365);
        else if (random() % 4 == 0)
            time.ShiftMilliSec();
        else
            time.ShiftSec(1 + static_cast<int>(random() % (random() % 20 == 0 ? 40000 : 40)));
    }
    return {EIntervalTick, 1, std::move(times), std::move(columns)};
}

/// All rows.
inline History HistoryOf(const DataSeriesSet& a_rows)
{
    return Slice<History>(a_rows, 0, a_rows.GetRecordsCount());
}

} // namespace kalvento::tests
