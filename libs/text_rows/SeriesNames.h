#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

enum ESeriesId : std::uint32_t;

namespace kalvento::rows {

/// The English column name of a series: "close" for Price in candles and "price" in ticks, "open", "high", "low" for
/// the three of a candle, "session_open" and so on for those of a session. Series without a name of their own
/// (generated numbers) read "series_123".
std::string ColumnName(ESeriesId a_series, bool a_candles);

/// A column name as names are compared: small letters, without blanks, '_', '-', '<' and '>'.
std::string PlainName(std::string_view a_name);

/// The series that a column name means: a series key ("kurs", "wolumen", "kupi2"), an English name as ColumnName gives
/// it or as exchanges write it ("last", "qty", "open"), or "series_123". Goes by PlainName.
/// Time for the names of a column that holds the whole time. Empty for a name that means no series.
std::optional<ESeriesId> SeriesFromName(std::string_view a_name);

} // namespace kalvento::rows
