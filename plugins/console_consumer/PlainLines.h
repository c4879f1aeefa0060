#pragma once

#include "series/LatestRecords.h"
#include "series/Offers.h"
#include "series/Record.h"

#include <optional>
#include <string>
#include <string_view>

/// Lines for programs that read what a subscription brings: fields with semicolons between them, times to the second,
/// numbers in the shortest form that reads back as the same double, an empty field for what is not known. UTF-8, with a
/// line feed.
namespace PlainLines {

/// `symbol;time;state;open;high;low;close;volume`. The time is that of the candle's last row.
std::string Candle(std::string_view a_symbol, std::string_view a_state, const Record& a_candle);
/// `symbol;time;book;` and for each of five levels `volume;bid;ask;volume`. a_time: for a book without one.
std::string Book(std::string_view a_symbol, const Offers& a_offers, const std::optional<NDateTime>& a_time);
/// `symbol;time;trade;price;volume`.
std::string Trade(std::string_view a_symbol, const LatestRecords::LastRecord& a_trade);

} // namespace PlainLines
