#pragma once

#include "folding/AggregatorWrapper.h"
#include "folding/CandleDifference.h"
#include "platform/Export.h"
#include "series/DSProp.h"
#include "series/DataSeriesSet.h"
#include "series/History.h"
#include "time/IntervalAndMultiplicity.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <vector>

/// How the rows of one instrument fold, told by folding them on every road that live data takes. One thread at a time.
class KALVENTO_API Proof {
public:
    /// The roads from rows to candles. The first is what the others are compared with.
    enum ERoad : std::uint8_t {
        ERoadHistory,        ///< All rows in one go.
        ERoadLive,           ///< Row by row.
        ERoadHandOver,       ///< History up to a row, SetCurrentRecord of its last record, live rows.
        ERoadSynchronization ///< Synchronization from the begin of the window up to a row, live rows.
    };
    /// How many hand-overs are done, and of how many.
    using OnHandOver = std::function<void(std::size_t a_done, std::size_t a_total)>;
    /// A road that leads to other candles.
    struct Finding {
        ERoad road = ERoadLive;
        std::size_t row = 0; ///< The row handed over at, from 0; of no meaning for ERoadLive.
        CandleDifference difference;
    };
    struct Result {
        std::size_t rows = 0;
        std::size_t candles = 0;
        std::size_t handOvers = 0; ///< Rows that were handed over at.
        bool wholeHistories =
            true; ///< The handed-over histories began with the first row, and not with a candle shortly before.
        std::optional<Finding> finding; ///< The first difference; empty: every road gives the same candles.
    };

    /// a_ticks: valid, single ticks, times not falling; kept by reference. a_properties: their series, the tick shape.
    /// Other rows, and more ticks a candle than a window counts, raise std::invalid_argument; series and intervals that
    /// AggregatorWrapper doesn't take raise as there.
    Proof(const DataSeriesSet& a_ticks, const std::set<DSProp>& a_properties,
          IntervalAndMultiplicity a_interval);

    /// Runs the roads. a_samples: how many rows are handed over at; every row where there are no more than that. Else a
    /// third each of the rows lie anywhere, begin a candle, and end one: the places where a state could be carried
    /// wrongly. The same rows for the same input. 0: every row up to 2000 rows, else 200 of them, and fewer, evenly,
    /// where candles are so long that the rows after each hand-over would take minutes. a_onHandOver may be empty.
    /// Raises KalventoException when the engine refuses what it should fold; the log says why.
    Result Run(std::size_t a_samples = 0, const OnHandOver& a_onHandOver = {});

private:
    class LiveCandles;

    std::optional<Finding> ProveLive();
    std::optional<Finding> ProveHandOver(std::size_t a_row, ERoad a_road, bool a_fromFirstRow) const;
    std::vector<std::size_t> ChooseRows(std::size_t a_samples) const;
    std::vector<std::size_t> Thin(const std::vector<std::size_t>& a_rows) const;
    std::size_t OpenCandle(std::size_t a_row) const;

    const DataSeriesSet& m_ticks;
    AggregatorWrapper m_fresh;             // copied for each road, which starts without an open candle
    History m_candles;                     // of ERoadHistory
    std::vector<std::size_t> m_candleRows; // the first row of each candle
};
