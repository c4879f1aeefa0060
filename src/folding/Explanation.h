#pragma once

#include "aggregation/AggrBase.h"
#include "aggregation/EAggrType.h"
#include "folding/AggregatorWrapper.h"
#include "platform/Export.h"
#include "series/DSProp.h"
#include "series/DataSeriesSet.h"
#include "series/ESeriesId.h"
#include "time/IntervalAndMultiplicity.h"
#include "time/NDateTime.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <vector>

/// Which rows of one instrument made a candle, which row gave each of its values, and which rows were kept out of it
/// and why. Rows bear an origin: a number of the caller's own, such as a line of a file, of which only the order counts
/// here. Constant operations are not safe from several threads.
class KALVENTO_API Explanation {
public:
    /// Where a row comes from, taken or not.
    struct Source {
        std::uint64_t origin = 0; ///< Rises from row to row.
        NDateTime written; ///< The row's own time; earlier than the time it was taken at where it was raised.
    };
    /// One value of a candle.
    struct Value {
        enum EFrom : std::uint8_t {
            EFromRow,  ///< Of the row `row`.
            EFromRows, ///< The sum of all rows.
            EFromNone  ///< Of no single row: no row's value equals it, as none does a NaN.
        };
        ESeriesId series = Time;
        double value = 0.0;
        EFrom from = EFromRow;
        std::size_t row = 0;
    };
    /// The rows from `begin` to before `end`.
    struct Span {
        std::size_t begin = 0;
        std::size_t end = 0;
    };
    struct Candle {
        std::size_t place = 0; ///< Among the candles.
        Span rows;
        int number = 0;   ///< Of the window; for ticks, how many candles of the same day lie before.
        NDateTime begin;  ///< Of the window that was asked for; zero for ticks.
        NDateTime border; ///< See AggrBase; zero for ticks.
        bool isMixed =
            false; ///< Holds rows of several windows, which were taken for one: see IsInCurrentWindow.
        std::vector<Value> values; ///< In reading order.
        /// Places in the list of refused rows: of those of this window's time, and of those without a time between its
        /// rows.
        std::vector<std::size_t> refused;
        std::vector<std::size_t> raised; ///< Its rows with an earlier time of their own.
        std::vector<std::size_t> lost;   ///< Rows of this window's time that were raised into another candle.
    };

    /// a_rows: valid, times not falling, kept by reference. a_sources: one for each of them. a_refused: the rows that
    /// weren't taken, in their order, without a time where none could be read; why each was refused, its owner knows.
    /// a_properties: the series of the rows, candle series included where the rows are candles. Lists that don't fit
    /// raise std::invalid_argument, as do more ticks a candle than a window counts; series and intervals that
    /// AggregatorWrapper doesn't take raise as there.
    Explanation(const DataSeriesSet& a_rows, std::vector<Source> a_sources, std::vector<Source> a_refused,
                const std::set<DSProp>& a_properties, IntervalAndMultiplicity a_interval);

    /// The rows of each candle, in their order.
    const std::vector<Span>& GetCandles() const { return m_candles; }
    /// The begin of the window of a candle's first row; for ticks that row's time.
    NDateTime TimeOf(std::size_t a_candle) const;
    /// The candle of the window in which a time lies; for ticks the one between whose rows it lies, to the second.
    /// Empty: no row made one. Raises KalventoException when the engine refuses the rows; the log says why.
    std::optional<Candle> Explain(const NDateTime& a_at) const;

private:
    std::optional<std::size_t> Find(const NDateTime& a_at) const;
    std::size_t PlaceInDay(std::size_t a_candle) const;
    bool IsInWindow(const NDateTime& a_time, const Candle& a_candle) const;
    void ListValues(Candle& a_candle) const;
    Value ValueOf(ESeriesId a_series, double a_value, const Span& a_rows) const;
    void ListRows(Candle& a_candle) const;
    NDateTime BeginOf(const NDateTime& a_time) const;

    const DataSeriesSet& m_rows;
    std::vector<Source> m_sources;
    std::vector<Source> m_refused;
    std::map<ESeriesId, EAggrType> m_types;
    bool m_ticks;
    mutable AggregatorWrapper m_wrapper; // without an open candle between calls
    std::unique_ptr<AggrBase> m_window;  // tells where candles begin
    std::vector<Span> m_candles;
};
