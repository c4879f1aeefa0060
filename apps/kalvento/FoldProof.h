#pragma once

#include "folding/AggregatorWrapper.h"
#include "series/DSProp.h"
#include "series/DataSeriesSet.h"
#include "series/ESeriesId.h"
#include "series/History.h"
#include "time/IntervalAndMultiplicity.h"
#include "time/NDateTime.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <vector>

namespace kalvento::tool {

/// Where two lists of candles part first.
struct CandleDifference {
    enum EKind : std::uint8_t {
        EKindTime,  ///< The candles bear different times: `expectedTime` and `foundTime`.
        EKindValue, ///< `series` differs: `expected` and `found`.
        EKindCount, ///< One list has no such candle; its time is that of the list that has one.
        EKindShape  ///< The lists don't hold the same series.
    };
    EKind kind = EKindValue;
    std::size_t candle = 0; ///< From 0, in the list expected.
    NDateTime expectedTime;
    NDateTime foundTime;
    ESeriesId series = Time;
    double expected = 0.0;
    double found = 0.0;
    std::size_t expectedCount = 0; ///< Candles in the list expected.
    std::size_t foundCount = 0;
};

/// Compares candles bit for bit, times with their counters; any NaN equals any NaN. a_first: the place in a_expected of the
/// first candle of a_found. a_mayEndEarly: a_found may hold less than the rest of a_expected.
std::optional<CandleDifference> FindDifference(const DataSeriesSet& a_expected, const DataSeriesSet& a_found,
                                               std::size_t a_first = 0, bool a_mayEndEarly = false);

/// How the rows of one instrument fold, told by folding them on every road that live data takes. One thread at a time.
class FoldProof {
public:
    /// The roads from rows to candles. The first is what the others are compared with.
    enum ERoad : std::uint8_t {
        ERoadHistory,        ///< All rows in one go.
        ERoadLive,           ///< Row by row.
        ERoadHandOver,       ///< History up to a row, SetCurrentRecord of its last record, live rows.
        ERoadSynchronization ///< Synchronization from the begin of the window up to a row, live rows.
    };
    using OnHandOver = std::function<void(std::size_t a_done, std::size_t a_total)>;
    struct Finding {
        ERoad road = ERoadLive;
        std::size_t row = 0; ///< The row handed over at, from 0; of no meaning for ERoadLive.
        CandleDifference difference;
    };

    /// a_ticks: single ticks, times not falling. a_properties: their series. Raises ToolError (EExitUsage) where the engine
    /// takes no such rows or interval.
    FoldProof(const DataSeriesSet& a_ticks, const std::set<DSProp>& a_properties,
              IntervalAndMultiplicity a_interval);

    /// Runs the roads. a_samples: how many rows are handed over at; every row where there are no more than that. Else a third
    /// each of the rows lie anywhere, begin a candle, and end one: the places where a state could be carried wrongly.
    /// The same rows for the same input. With a_mayThin it takes fewer of them, evenly, where candles are so long that the
    /// rows behind each hand-over would take minutes. a_onHandOver is told how many are done, and of how many.
    /// Raises ToolError (EExitFailure) when the engine refuses what it should fold.
    std::optional<Finding> Run(std::size_t a_samples, bool a_mayThin, const OnHandOver& a_onHandOver);

    std::size_t GetCandleCount() const { return m_candles.GetRecordsCount(); }
    std::size_t GetHandOverCount() const { return m_handOvers; }
    /// Whether the handed-over histories began with the first row, and not with a candle shortly before.
    bool FoldsWholeHistories() const { return m_wholeHistories; }

private:
    class LiveCandles;

    std::optional<Finding> ProveLive();
    std::optional<Finding> ProveHandOver(std::size_t a_row, ERoad a_road) const;
    std::vector<std::size_t> ChooseRows(std::size_t a_samples) const;
    std::vector<std::size_t> Thin(const std::vector<std::size_t>& a_rows) const;
    AggregatorWrapper MakeWrapper() const;

    const DataSeriesSet& m_ticks;
    const std::set<DSProp>& m_properties;
    IntervalAndMultiplicity m_interval;
    History m_candles;                     // of ERoadHistory
    std::vector<std::size_t> m_candleRows; // the first row of each candle
    std::size_t m_handOvers = 0;
    bool m_wholeHistories = true;
};

} // namespace kalvento::tool
