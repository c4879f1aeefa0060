#pragma once

#include "folding/AggregatorWrapper.h"
#include "folding/ColumnBlock.h"
#include "platform/Export.h"
#include "series/DSProp.h"
#include "time/IntervalAndMultiplicity.h"
#include "time/NDateTime.h"

#include <cstddef>
#include <optional>
#include <set>
#include <vector>

class DataSeriesSet;
class History;
class Record;
class Synchronization;

namespace kalvento::internal {

/// The candles of one subscription as its provider would fold them, without any correction; SubscriptionCandles stands on
/// them. However the rows are spread over the calls, the candles are those of one fold of all the rows, bit for bit. The
/// calls answer false for what doesn't fit, with a line in the log. Memory: the candles, and the rows of the last one.
class KALVENTO_API RowCandles {
public:
    /// See SubscriptionCandles.
    RowCandles(const std::set<DSProp>& a_series, IntervalAndMultiplicity a_interval);

    bool AddHistory(History&& a_history);
    bool SetSynchronization(Synchronization&& a_synchronization);
    /// False also for a row that had come already.
    bool AddRecord(const Record& a_record);

    IntervalAndMultiplicity GetInterval() const { return m_interval; }
    /// The series of the candles.
    const std::set<DSProp>& GetSeries() const { return m_candleSeries; }
    /// Their numbers, those of the columns of GetCandles.
    const std::vector<ESeriesId>& GetColumns() const { return m_columns; }
    const ColumnBlock& GetCandles() const { return m_candles; }
    std::size_t GetCount() const { return m_candles.rows; }

private:
    bool HasShape(const DataSeriesSet& a_set, bool a_candles) const;
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
    ColumnBlock m_candles;
    // The rows that the last candle is made of, in the candle shape: a tick is a candle of one price. A candle whose
    // rows aren't known is a row itself, but for a window of ticks, which has none then.
    ColumnBlock m_rows;
    std::optional<AggregatorWrapper> m_live; // the last candle is open in it
};

} // namespace kalvento::internal
