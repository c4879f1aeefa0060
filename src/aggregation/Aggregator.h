#pragma once

#include "aggregation/AggrBase.h"
#include "aggregation/AggrValue.h"
#include "aggregation/CandleRoom.h"
#include "aggregation/EAggrTimeResult.h"
#include "aggregation/EAggrType.h"
#include "platform/Export.h"
#include "time/EInterval.h"
#include "time/NDateTime.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

/// Folds rows into candles of one output interval: one live row at a time (SumWithWindow) or a whole history in place
/// (Aggregate). Works on raw columns and knows nothing of series: a row is a time and a list of doubles in the order
/// open, high, low, main series (close), then the other fields, each with its EAggrType.
///
/// Failures raise KalventoException and restore nothing. One thread at a time.
class KALVENTO_API Aggregator {
public:
    /// a_types: the main series' type first (0 to 2), then one per other field (3 or 4). The window's limits on the
    /// multiplicity are checked first.
    Aggregator(EInterval a_interval, unsigned short a_multiplicity, EAggrTimeResult a_timeResult,
               const std::vector<EAggrType>& a_types);
    /// A copy has the source's values, but no open window: its next row opens one.
    Aggregator(const Aggregator& a_other);
    Aggregator& operator=(const Aggregator& a_other);
    Aggregator(Aggregator&& a_other) noexcept;
    Aggregator& operator=(Aggregator&& a_other) noexcept;
    ~Aggregator();

    /// Folds a_count rows in place and returns the number of candles, which stand at the front of a_times and of each
    /// column; what follows is stale. a_columns: one pointer per field to a_count doubles. Open, high and low are read
    /// only where the input is made of candles (an interval of seconds or longer, or several ticks). The last candle
    /// comes out whether or not it was full. Afterwards SetCurrentRecord or ClearLastValue must be called before the
    /// next row. The time of a row that comes too late is not folded in; under ELastRecordTime it leaves the zero time
    /// on the open candle until the next row in time. Does not allocate with the number of rows.
    unsigned int Aggregate(EInterval a_inputInterval, unsigned short a_inputMultiplicity,
                           unsigned int a_count, NDateTime* a_times, const std::vector<double*>& a_columns);

    /// Folds one row into the open candle, or opens a new one, and writes the candle so far back over the row, its time
    /// stamped. a_useOhl: the row's open, high and low hold data. True if the row went into the open candle. A row
    /// earlier than the last one is not folded in (except where candles are stamped with their window's end): it takes
    /// the open candle's content, true. Does not allocate.
    bool SumWithWindow(NDateTime* a_time, std::vector<double*>* a_fields, bool a_useOhl);

    /// Starts over with a finished row as the open candle, which live rows then continue. Null arguments only start
    /// over.
    void SetCurrentRecord(NDateTime* a_time, std::vector<double*>* a_fields);

    /// Zeroes the values and the last time and lifts the wait for a current record. The open window stays: a row in
    /// that window is folded onto zeros.
    void ClearLastValue();

    void GetWindowLimits(const NDateTime& a_time, NDateTime* a_begin, NDateTime* a_end) const;
    EInterval GetOutputInterval() const { return m_outputInterval; }
    unsigned short GetOutputIntervalMultiple() const { return m_outputMultiplicity; }

private:
    friend class DataSeriesSet;

    /// As Aggregate on single ticks, with open, high and low in memory that grows with the candles; the first three
    /// entries of a_columns aren't used.
    unsigned int AggregateTicksGrowing(unsigned int a_count, NDateTime* a_times,
                                       const std::vector<double*>& a_columns,
                                       kalvento::internal::CandleRoom& a_room);

    void InitAggrTypeForSeries(const std::vector<EAggrType>& a_types);
    void CheckHistory(EInterval a_inputInterval, unsigned short a_inputMultiplicity, unsigned int a_count,
                      std::size_t a_columnCount) const;
    bool IsInWindow(const NDateTime& a_time);
    void StampWindow(const NDateTime& a_time);
    void StartOver();
    unsigned int FoldHistory(bool a_useOhl, unsigned int a_count, NDateTime* a_times,
                             const std::vector<double*>& a_columns, kalvento::internal::CandleRoom* a_room);
    unsigned int FoldRowByRow(bool a_useOhl, unsigned int a_count, NDateTime* a_times,
                              const std::vector<double*>& a_columns, kalvento::internal::CandleRoom* a_room);
    template<EInterval Interval, bool RefusesLate>
    unsigned int FoldHistoryOf(bool a_useOhl, unsigned int a_count, NDateTime* a_times,
                               const std::vector<double*>& a_columns, kalvento::internal::CandleRoom* a_room);

    EInterval m_outputInterval;
    unsigned short m_outputMultiplicity;
    bool m_awaitsCurrentRecord = false;
    std::unique_ptr<AggrBase> m_window; // null only when moved from
    NDateTime m_lastTime;               // of the last row in time, as it was given
    std::vector<AggrValue> m_values;    // main series first
    // Fields in which a row must equal the last one to be placed in its window without asking the window.
    std::uint32_t m_slotCalendar = 0;
    std::uint32_t m_slotClock = 0;
    bool m_lastRowIsInWindow =
        false; // the last row in time lies in the open window, and that isn't one of ticks
};
