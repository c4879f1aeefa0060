#pragma once

#include "folding/AggregatorWrapper.h"
#include "folding/ColumnBlock.h"
#include "history_operations/HistoryOperations.h"
#include "platform/Export.h"
#include "series/DSProp.h"
#include "series/History.h"
#include "series/Record.h"
#include "time/IntervalAndMultiplicity.h"
#include "time/NDateTime.h"

#include <cstddef>
#include <optional>
#include <set>
#include <vector>

class Synchronization;

/// The candles of one subscription, as a chart or a table shows them, built from what a provider hands to a consumer: a
/// consumer passes on what ProcessOperations, ProcessHistory, ProcessHistoryEnd, ProcessSynchronization and
/// ProcessRecord bring, and reads candles. However the rows are spread over these, the candles are those of one fold of
/// all the rows, bit for bit. (Finer candles are rows of their own here: their sums enter as they are. A window of
/// ticks that came as a candle can't be continued; providers begin the synchronization with the row that opened it.)
///
/// A record changes the last candle or adds one, and AddRecord tells which. After any other operation, operations on
/// the history included, candles may have changed from any place on: read them anew.
///
/// Operations that get data answer false (or nothing) for what doesn't fit the series or the interval; they leave a
/// line in the log and change nothing. Takes memory for the candles and for the rows of the last one. Not safe from
/// several threads.
class KALVENTO_API SubscriptionCandles {
public:
    /// What a record did.
    struct Change {
        Record candle; ///< As it stands now: the candle shape, the time of its last row.
        bool isNew;    ///< It follows the last candle; otherwise it takes the last one's place.
    };

    /// a_series: those of the asset's rows, with or without the three candle series. The interval: that of the candles.
    /// Raises as AggregatorWrapper does.
    SubscriptionCandles(const std::set<DSProp>& a_series, EInterval a_interval,
                        unsigned short a_multiplicity);

    /// The corporate operations known by now, at any time; they replace those told before. Data that come from now on
    /// are corrected by them before they are folded; a provider sends them before the data that they concern.
    void SetOperations(const HistoryOperations& a_operations);
    /// A part of the past, later than the parts before: ticks, candles of the interval, or finer candles.
    bool AddHistory(History&& a_history);
    /// No part follows.
    void HistoryEnd() { m_historyEnded = true; }
    /// Single ticks. They replace the candles held from the time of the first of them on.
    bool SetSynchronization(Synchronization&& a_synchronization);
    /// A live row of the tick shape; series that aren't held are left out. A row that is earlier than the last one is
    /// dropped: after a break of the connection it had come already.
    std::optional<Change> AddRecord(const Record& a_record);

    bool HasHistoryEnded() const { return m_historyEnded; }
    IntervalAndMultiplicity GetInterval() const { return m_interval; }
    /// Candles held.
    std::size_t GetCount() const { return m_candles.rows; }
    /// The candle of that place, from 0 on; a_place below GetCount.
    Record GetCandle(std::size_t a_place) const;
    /// A copy of the last a_count candles, fewer where fewer are held.
    History GetLastCandles(std::size_t a_count) const;

private:
    bool HasShape(const DataSeriesSet& a_set, bool a_candles) const;
    History Correct(DataSeriesSet&& a_set) const;
    bool AddRows(DataSeriesSet&& a_rows);
    void CutBack(const NDateTime& a_firstTime);
    void RowsAreLastCandle();
    bool OpenLive();
    std::optional<Record> ToTickShape(const Record& a_record) const;

    std::set<DSProp> m_series; // the tick shape
    IntervalAndMultiplicity m_interval;
    std::set<DSProp> m_candleSeries;
    std::vector<ESeriesId> m_columns; // of m_candles and m_rows: the candle shape
    AggregatorWrapper m_blank;        // what folders are copied from: a copy's next row begins a candle
    std::optional<HistoryOperations> m_operations;
    ColumnBlock m_candles;
    // The rows that the last candle is made of, in the candle shape: a tick is a candle of one price. A candle whose
    // rows aren't known is a row itself, but for a window of ticks, which has none then.
    ColumnBlock m_rows;
    std::optional<AggregatorWrapper> m_live; // the last candle is open in it
    bool m_historyEnded = false;
};
