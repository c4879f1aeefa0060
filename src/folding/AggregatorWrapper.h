#pragma once

#include "aggregation/EAggrTimeResult.h"
#include "aggregation/EAggrType.h"
#include "platform/Export.h"
#include "series/DSProp.h"
#include "series/ESeriesId.h"
#include "time/EInterval.h"
#include "time/NDateTime.h"

#include <memory>
#include <set>
#include <string_view>
#include <vector>

class Aggregator;
class History;
class Record;
class Settings;
class Synchronization;

/// Folds records and blocks of one set of series into candles of one interval. Construction raises; the four working
/// operations never throw: a refused input gives false and a line in the log.
///
/// A usual life: AgregateHistory and SetCurrentRecord of its last record, or AgregateSynchro, which does both; then
/// AggregateRecord for each live row. One thread at a time, constant operations included.
class KALVENTO_API AggregatorWrapper {
public:
    static constexpr std::string_view XML_INTERVAL_ID = "IntervalId";
    static constexpr std::string_view XML_MULTIPLICITY = "Multiplicity";
    static constexpr std::string_view XML_AGGREGATION_TIME = "AggregationTime";

    /// a_dsProps: the tick shape, one of them of a main type. a_timeResult only travels through SerializeState: candles
    /// always bear the time of their last row, since continuing one depends on that. Raises KalventoException without a
    /// main type or for an interval that no window takes, std::invalid_argument when a candle series is among them.
    AggregatorWrapper(const std::set<DSProp>& a_dsProps, EAggrTimeResult a_timeResult, EInterval a_interval,
                      unsigned short a_multiplicity);
    /// Reads what SerializeState wrote; the multiplicity is cut to 16 bits.
    AggregatorWrapper(const std::set<DSProp>& a_dsProps, const Settings& a_settings);

    /// The open candle isn't copied: the copy's next row begins a candle.
    AggregatorWrapper(const AggregatorWrapper& a_other);
    AggregatorWrapper& operator=(const AggregatorWrapper& a_other);
    AggregatorWrapper(AggregatorWrapper&&) noexcept;
    AggregatorWrapper& operator=(AggregatorWrapper&&) noexcept;
    ~AggregatorWrapper();

    /// Folds one live row of the tick shape; the record comes back as the candle so far, its own time kept.
    /// a_sameWindow: true when it replaces the last candle, false when it begins a new one. Doesn't allocate where the
    /// record has room for the candle series.
    bool AggregateRecord(Record& a_record, bool& a_sameWindow);
    /// Folds a block of the tick shape in place and leaves its last candle open for AggregateRecord. A failure inside
    /// the fold leaves the candle columns added.
    bool AgregateSynchro(Synchronization& a_synchro);
    /// Folds a valid history in place. Afterwards SetCurrentRecord or ClearLastValue must come before the next row. A
    /// failure inside the fold leaves the candle columns added.
    bool AgregateHistory(History& a_history);
    /// Opens the candle that an aggregated record describes. The record has the candle shape.
    bool SetCurrentRecord(Record& a_record);
    /// Forgets the values, not the open window.
    void ClearLastValue();

    /// First instant of the window in which a time lies, and of the next; see Aggregator.
    void GetWindowLimits(const NDateTime& a_time, NDateTime* a_begin, NDateTime* a_end) const;
    /// EIntervalEmpty for a moved-from wrapper.
    EInterval GetOutputInterval() const;
    /// 0 for a moved-from wrapper.
    unsigned int GetOutputMultiplicity() const;
    ESeriesId GetMainAggSeriesId() const { return m_mainSeries; }
    /// Equal output interval and multiplicity. Not for moved-from wrappers.
    bool HaveTheSameIntevals(const AggregatorWrapper& a_other) const;

    void SerializeState(Settings& a_settings) const;

private:
    bool ValidateSeriesList(const std::set<DSProp>& a_dsProps) const;
    bool PrepareRecordSeries(Record& a_record);

    ESeriesId m_mainSeries;
    EAggrTimeResult m_aggregationTime;
    std::vector<EAggrType> m_types;
    std::vector<double*> m_fields; // aimed anew before each use, valid only during a call
    std::unique_ptr<Aggregator> m_aggregator;
};
