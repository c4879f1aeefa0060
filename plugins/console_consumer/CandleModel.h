#pragma once

#include "folding/AggregatorWrapper.h"
#include "history_operations/HistoryOperations.h"
#include "series/DSProp.h"
#include "series/DataSeriesSet.h"
#include "series/History.h"
#include "series/Record.h"
#include "time/IntervalAndMultiplicity.h"
#include "time/NDateTime.h"

#include <cstddef>
#include <optional>
#include <set>
#include <vector>

class Synchronization;

/// The candles of one subscription, built from what a provider hands over: parts of a history, synchronizations, live
/// records. Whatever is handed over in which of these three, the candles are those of one fold of all the rows, bit for bit.
/// (Finer candles are rows of their own here: their sums enter as they are. A window of ticks can't be gone on with where
/// it came as a candle; providers begin the synchronization with the row that opened it.)
///
/// Operations that get data answer false (or nothing) and leave a line in the log for what doesn't fit the series or the
/// interval; they change nothing then. Not safe from several threads.
class CandleModel {
public:
    /// What a record did.
    struct Change {
        Record candle; ///< As it stands now: the candle shape, the time of its last row.
        bool isNew;    ///< It follows the last candle; otherwise it takes the last one's place.
    };

    /// a_series: those of the asset's rows, with or without the three candle series. The interval: that of the candles.
    /// Raises as AggregatorWrapper does.
    CandleModel(const std::set<DSProp>& a_series, EInterval a_interval, unsigned short a_multiplicity);

    /// All data that come from now on are corrected by them, before they are folded.
    void SetOperations(const HistoryOperations& a_operations);
    /// A part of the past, later than the parts before: ticks, candles of the interval, or finer candles.
    bool AddHistory(History&& a_history);
    /// No part follows.
    void HistoryEnd() { m_historyEnded = true; }
    /// Single ticks. From the first of them on they take the place of the candles held.
    bool SetSynchronization(Synchronization&& a_synchronization);
    /// A live row of the tick shape; series that the model doesn't hold are left out. A row that is earlier than the last
    /// one is dropped: after a break of the connection it has come already.
    std::optional<Change> AddRecord(const Record& a_record);

    bool HasHistoryEnded() const { return m_historyEnded; }
    IntervalAndMultiplicity GetInterval() const { return m_interval; }
    /// Candles held.
    std::size_t GetCount() const { return m_candles.times.size(); }
    /// The candle of that place, from 0 on; a_place below GetCount.
    Record GetCandle(std::size_t a_place) const;
    /// A copy of the last a_count candles, fewer where fewer are held.
    History GetLastCandles(std::size_t a_count) const;

private:
    // Rows of one shape. Unlike a DataSeriesSet its last row can be replaced.
    struct Rows {
        std::vector<NDateTime> times;
        DataSeriesSet::Columns columns;
        IntervalAndMultiplicity interval;

        Rows(const std::set<DSProp>& a_series, IntervalAndMultiplicity a_interval, bool a_candles);
        void Append(const DataSeriesSet& a_set, std::size_t a_first, std::size_t a_last);
        void Append(const Record& a_record);
        void Remove(std::size_t a_first, std::size_t a_last);
        void Clear() { Remove(0, times.size()); }
        Record At(std::size_t a_row) const;
        bool HasShapeOf(const DataSeriesSet& a_set) const;
        template<typename Set>
        Set Copy(std::size_t a_first, std::size_t a_last) const;
    };

    bool AddFinishedCandles(const History& a_history);
    void KeepOpenRows(Rows a_lastRows);
    Rows LastRows(const DataSeriesSet& a_rows) const;
    std::optional<Record> TakeBase(const NDateTime& a_firstTime);
    bool FoldOnto(Record a_base, const DataSeriesSet& a_rows);
    bool FoldAnew(Synchronization&& a_rows);
    void ReopenTicks();
    void OpenLive();
    bool FoldRow(const Record& a_row, Change* a_change);
    std::optional<Record> ToTickShape(const Record& a_record) const;
    template<typename Set>
    Set Adjust(Set&& a_set) const;

    std::set<DSProp> m_series; // the tick shape
    IntervalAndMultiplicity m_interval;
    AggregatorWrapper m_blank; // what folders are copied from: a copy's next row begins a candle
    std::optional<HistoryOperations> m_operations;
    Rows m_candles;
    // The rows that the last candle is made of, for as long as more of them may follow: single ticks or finer candles.
    // With m_base they follow a candle whose rows are not known.
    Rows m_openRows;
    std::optional<Record> m_base;
    std::optional<AggregatorWrapper> m_live; // the last candle is open in it
    bool m_historyEnded = false;
};
