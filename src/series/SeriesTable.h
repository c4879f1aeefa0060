#pragma once

#include "aggregation/EAggrType.h"
#include "platform/Export.h"
#include "series/ESeriesId.h"
#include "velo/EPrecision.h"

#include <array>
#include <optional>
#include <span>
#include <string_view>

/// The one table of the series vocabulary: labels, keys, defaults and names all come from here.
namespace kalvento::internal {

/// One series of the vocabulary. All texts are static and ended by a zero.
struct SeriesInfo {
    ESeriesId id;
    std::string_view enumerator; ///< Name in the code, "IntervalMax".
    std::string_view key;        ///< Key by which links name the series, lower-case ASCII; empty for none.
    std::wstring_view label;     ///< Polish label for the user.
    std::string_view name;       ///< English name for headers of text tables, "high"; every series has one.
    EAggrType aggrType;          ///< Default aggregation.
    std::optional<EPrecision> precision; ///< Default decimal places; empty where the series has none.
};

/// Price-like series, in the order in which their precisions are set.
inline constexpr std::array<ESeriesId, 25> S_valueSeries{
    Price, IntervalOpen, IntervalMax, IntervalMin, Tko,  Open,       Close,     Reference, Max,
    Min,   StaticMin,    StaticMax,   Settlement,  Bid1, Bid2,       Bid3,      Bid4,      Bid5,
    Ask1,  Ask2,         Ask3,        Ask4,        Ask5, DynamicMin, DynamicMax};

inline constexpr std::array<ESeriesId, 13> S_volumeSeries{
    Volume,     VolumeTotal, BidVolume1, BidVolume2, BidVolume3, BidVolume4, BidVolume5,
    AskVolume1, AskVolume2,  AskVolume3, AskVolume4, AskVolume5, Two};

/// All series, 1 to 55, in the order of their numbers.
KALVENTO_API std::span<const SeriesInfo> SeriesTable();

/// The entry of a number; null for a number outside 1 to 55.
KALVENTO_API const SeriesInfo* FindSeries(ESeriesId a_seriesId);

/// The entry of an English name, of an enumerator or of a key, in this order, letters compared exactly; "close" is
/// Price too, since the last price of a candle is its close. Null when nothing has that name.
KALVENTO_API const SeriesInfo* FindSeriesByName(std::string_view a_name);

} // namespace kalvento::internal
