#pragma once

#include "aggregation/Aggregator.h"
#include "folding/AggregatorTools.h"
#include "series/RandomTicks.h"

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

/// What the engine makes of the rows at once.
inline History Folded(History a_rows, const std::set<DSProp>& a_properties, IntervalAndMultiplicity a_candles,
                      EAggrTimeResult a_stamp = ELastRecordTime)
{
    Aggregator engine(a_candles.GetInterval(), static_cast<unsigned short>(a_candles.GetMultiplicity()),
                      a_stamp, AggregatorTools::PrepareAggregationTypes(a_properties));
    std::vector<double*> fields(a_properties.size() + 3);
    if (a_rows.IsSingleTickHistory())
        a_rows.AddAggregationSeries();
    EXPECT_TRUE(a_rows.IsEmpty() || a_rows.AgregateData(Price, engine, fields));
    return a_rows;
}

/// A name for a failed test.
inline std::string Shown(IntervalAndMultiplicity a_interval)
{
    return std::to_string(a_interval.GetInterval()) + " x " + std::to_string(a_interval.GetMultiplicity());
}

} // namespace kalvento::tests
