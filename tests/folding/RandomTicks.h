#pragma once

#include "series/DSProp.h"
#include "series/DataSeriesSet.h"
#include "series/SeriesTestTools.h"
#include "support/Testing.h"

namespace kalvento::tests {

/// Price and volume, the price folded as told.
inline std::set<DSProp> PriceAndVolume(EAggrType a_price = EAggrTypeOhlc)
{
    return {DSProp(Price, a_price, L"", EPrecisionNone), DSProp(Volume)};
}

/// Ticks of some days in random steps, often several in one second, equal prices among them, with a year's pause in the
/// middle: up to the same day of the year.
inline DataSeriesSet RandomTicks(std::size_t a_count, unsigned int a_seed)
{
    std::mt19937 random(a_seed);
    std::vector<NDateTime> times;
    std::vector<double> prices;
    std::vector<double> volumes;
    NDateTime time = At(9, 0);
    for (std::size_t row = 0; row < a_count; ++row) {
        times.push_back(time);
        prices.push_back(100.0 + static_cast<double>(random() % 9) / 10.0);
        volumes.push_back(static_cast<double>(1 + random() % 50) / 10.0);
        if (row == a_count / 2)
            time.ShiftDays(365);
        else if (random() % 4 == 0)
            time.ShiftMilliSec();
        else
            time.ShiftSec(1 + static_cast<int>(random() % (random() % 20 == 0 ? 40000 : 40)));
    }
    return {EIntervalTick, 1, std::move(times), {{Price, std::move(prices)}, {Volume, std::move(volumes)}}};
}

} // namespace kalvento::tests
