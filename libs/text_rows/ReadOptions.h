#pragma once

#include "series/ESeriesId.h"

#include <cstdint>
#include <map>
#include <set>
#include <string>

namespace kalvento::rows {

/// What happens to a row whose time isn't later than the time before it.
enum EOrderRule : std::uint8_t {
    /// It is moved up to just after the one before by the ordering counter, as live rows are. Where more than one row in
    /// 1,000 (and more than three) is earlier than one before it, the run ends: then the input has another order.
    EOrderRaiseFew,
    EOrderRaise,  ///< It is moved up, however many there are.
    EOrderRefuse, ///< The run ends and names the place.
    EOrderDrop    ///< It is left out and counted.
};

/// What happens to a line that can't be read.
enum EBadLines : std::uint8_t {
    EBadLinesStop,  ///< The run ends and names the place, what was found and what would be accepted.
    EBadLinesReject ///< It is set aside (ReadHooks::setAside) and counted.
};

/// How rows of a text file are to be read. The defaults find out what they can.
struct ReadOptions {
    char delimiter = 0;  ///< 0: found from the header line.
    char decimal = 0;    ///< '.' or ','; 0: found from the first rows.
    bool header = true;  ///< Whether the first line names the columns; if not, `columns` gives places from 1.
    bool strict = false; ///< Refuse columns that mean nothing instead of leaving them out with a note.
    std::map<std::string, std::string> columns; ///< Our name to the file's name, or its place from 1.
    /// Rows always have a price: the first column of one of these series stands in for it where there is none, as in a
    /// book.
    std::set<ESeriesId> pricesFrom;
    std::map<std::string, std::string> folds; ///< Our name to ohlc, ohlcsum, ohlclast, sum or last.
    std::string
        timeFormat; ///< Empty: detected. Otherwise like `%Y-%m-%d %H:%M:%S`, or unix, unixms, unixus, unixns.
    std::string zone;       ///< Zone of times without one; empty: as written.
    std::string outputZone; ///< Zone in which windows lie and results are written; empty: that of the input.
    std::string from;       ///< First whole day, YYYY-MM-DD; empty: no limit.
    std::string to;         ///< Last whole day, included.
    std::string symbolColumn;  ///< The column that tells instruments apart; empty: one instrument.
    bool findSymbols = false;  ///< Without symbolColumn: a column of a usual name for that, if there is one.
    std::string symbol;        ///< Only rows of this instrument are taken; empty: all.
    bool oneSymbol = false;    ///< A second instrument is refused at its first row.
    std::string inputInterval; ///< Interval of candles; empty: the smallest step between the first rows.
    bool stampedWithEnd = false; ///< Candles bear the end of their window.
    EOrderRule order = EOrderRaiseFew;
    EBadLines badLines = EBadLinesStop;
    bool sort = false; ///< Rows are sorted by their times first, equal times staying in their order.
    bool turn =
        true; ///< Rows that run from the newest to the oldest are turned; if not, EOrderRaiseFew refuses them.
    bool fractions = false;    ///< Fills RowBlock::fractions.
    bool dropRepeated = false; ///< Rows that repeat another one exactly are left out.
    bool growing = false; ///< The source may grow: a last line waits for its line feed, and no end is final.
};

} // namespace kalvento::rows
