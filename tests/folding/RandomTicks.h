#pragma once

#include "folding/AggregatorWrapper.h"
#include "series/DSProp.h"
#include "series/History.h"
#include "series/SeriesTestTools.h"
#include "support/Testing.h"

namespace kalvento::tests {

/// Price and volume, the price folded as told.
inline std::set<DSProp> PriceAndVolume(EAggrType a_price = EAggrTypeOhlc)
{
    return {DSProp(Price, a_price, L"", EPrecisionNone), DSProp(Volume)};
}

/// Of each kind those that divide what is above them, and those that don't.
inline const std::vector<IntervalAndMultiplicity> S_candleIntervals = {
    {EIntervalTick, 1},    {EIntervalTick, 7},   {EIntervalTick, 1000}, {EIntervalSecond, 9},
    {EIntervalSecond, 30}, {EIntervalMinute, 1}, {EIntervalMinute, 2},  {EIntervalMinute, 5},
    {EIntervalMinute, 7},  {EIntervalHour, 1},   {EIntervalHour, 5},    {EIntervalDay, 1},
    {EIntervalDay, 7},     {EIntervalWeek, 1},   {EIntervalWeek, 2},    {EIntervalMonth, 1},
    {EIntervalYear, 1},    {EIntervalYear, 3}};

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

/// Some of the rows.
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

/// All rows.
inline History HistoryOf(const DataSeriesSet& a_rows)
{
    return Slice<History>(a_rows, 0, a_rows.GetRecordsCount());
}

/// What the engine makes of the rows at once.
inline History Folded(History a_rows, const std::set<DSProp>& a_properties, IntervalAndMultiplicity a_candles,
                      EAggrTimeResult a_stamp = ELastRecordTime)
{
    AggregatorWrapper folder(a_properties, a_stamp, a_candles.GetInterval(),
                             static_cast<unsigned short>(a_candles.GetMultiplicity()));
    EXPECT_TRUE(a_rows.IsEmpty() || folder.AgregateHistory(a_rows));
    return a_rows;
}

/// A name for a failed test.
inline std::string Shown(IntervalAndMultiplicity a_interval)
{
    return std::to_string(a_interval.GetInterval()) + " x " + std::to_string(a_interval.GetMultiplicity());
}

} // namespace kalvento::tests
