#pragma once

#include "aggregation/EAggrType.h"
#include "platform/Export.h"
#include "series/ESeriesId.h"
#include "velo/EPrecision.h"

#include <cstddef>
#include <set>
#include <span>
#include <string_view>
#include <vector>

class DSProp;

/// What is known of a series by its number alone. Any number may be asked about, unlisted ones too; safe from any
/// thread.
namespace VeloTools::Series {

/// Polish label for the user; empty for a number outside 1 to 55.
KALVENTO_API std::wstring_view DefaultLabel(ESeriesId a_seriesId);
/// EAggrTypeOhlc for Price, EAggrTypeSum for Volume, EAggrTypeLast for all others.
KALVENTO_API EAggrType DefaultAggregationType(ESeriesId a_seriesId);
/// Decimal places: 2 for prices and turnover, 0 for volumes and counts, -1 for 0 and Indicator. Raises
/// std::invalid_argument for Time, VirtualSeries and every number from 56 upward.
KALVENTO_API EPrecision DefaultPrecision(ESeriesId a_seriesId);

/// The three series of a candle that aggregation makes.
inline bool IsAggregationSeries(ESeriesId a_seriesId)
{
    return a_seriesId >= IntervalOpen && a_seriesId <= IntervalMin;
}
/// Series that have a value at every row: Price, Volume, Lop, the candle series, Indicator, VirtualSeries.
KALVENTO_API bool IsContinuousSeries(ESeriesId a_seriesId);
/// Price-like series.
KALVENTO_API bool IsValueSeries(ESeriesId a_seriesId);
KALVENTO_API bool IsVolumeSeries(ESeriesId a_seriesId);

/// Places of a_series in the order in which people read the columns of a candle: open, high, low, close, then the rest
/// as they come. Of a series that occurs twice, only the first moves to the front.
KALVENTO_API std::vector<std::size_t> ReadingOrder(std::span<const ESeriesId> a_series);

/// True when the set holds the series, and for every series of the offer table (Bid1 to AskOrders5) whatever the set,
/// since offers travel beside it.
KALVENTO_API bool CheckIfCSorOffersContainsGivenSeries(const std::set<ESeriesId>& a_series,
                                                       ESeriesId a_seriesId);
KALVENTO_API bool CheckIfCSorOffersContainsGivenSeries(const std::set<DSProp>& a_series,
                                                       ESeriesId a_seriesId);

/// A series number from a name: FNV-1a over 64 bits (http://www.isthe.com/chongo/tech/comp/fnv/), cut to 32. The narrow
/// form runs over the bytes, the wide one over UTF-16 code units, low byte first, so the two differ for the same text.
KALVENTO_API ESeriesId GenerateId(std::string_view a_name);
KALVENTO_API ESeriesId GenerateId(std::wstring_view a_name);

} // namespace VeloTools::Series
