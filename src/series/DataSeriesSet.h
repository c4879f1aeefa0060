#pragma once

#include "platform/Export.h"
#include "series/DSProp.h"
#include "series/ESeriesId.h"
#include "series/Record.h"
#include "time/EInterval.h"
#include "time/IntervalAndMultiplicity.h"
#include "time/NDateTime.h"

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <set>
#include <utility>
#include <vector>

class Aggregator;

/// The column store: a block of market data of one instrument at one interval, a time column and one column of doubles
/// for each series, columns in ascending order of identifier. History and Synchronization are its public faces.
///
/// Row i is entry i of the time column and of every value column. The caller keeps all columns as long as the time
/// column, and IsValid tests it: the operations that take whole columns accept anything. Owns everything by value; one
/// thread at a time, passed between threads by move.
class KALVENTO_API DataSeriesSet {
public:
    using Column = std::pair<ESeriesId, std::vector<double>>;
    using Columns = std::vector<Column>;
    using iterator = Columns::iterator;
    using const_iterator = Columns::const_iterator;

    /// Version of the binary form.
    static constexpr std::int32_t BinaryVersion = 1;

    /// No columns, no rows.
    DataSeriesSet(EInterval a_interval, unsigned int a_multiplicity);
    /// One empty column for each element, in the set's order. An empty set raises std::invalid_argument.
    DataSeriesSet(EInterval a_interval, unsigned int a_multiplicity, const std::set<ESeriesId>& a_series);
    /// The same from the identifiers; labels, aggregation and precisions don't enter the set.
    DataSeriesSet(EInterval a_interval, unsigned int a_multiplicity, const std::set<DSProp>& a_series);
    /// Takes both vectors over, without a test and without sorting.
    DataSeriesSet(EInterval a_interval, unsigned int a_multiplicity, std::vector<NDateTime>&& a_times,
                  Columns&& a_columns);
    /// Starts empty and calls Read.
    explicit DataSeriesSet(std::istream& a_stream);

    DataSeriesSet(const DataSeriesSet&) = default;
    DataSeriesSet& operator=(const DataSeriesSet&) = default;
    DataSeriesSet(DataSeriesSet&&) noexcept = default;
    DataSeriesSet& operator=(DataSeriesSet&&) noexcept = default;
    virtual ~DataSeriesSet() = default;

    iterator begin() { return m_columns.begin(); }
    iterator end() { return m_columns.end(); }
    const_iterator begin() const { return m_columns.begin(); }
    const_iterator end() const { return m_columns.end(); }
    /// The first column of that identifier, or end. Linear.
    iterator find(ESeriesId a_seriesId);
    const_iterator find(ESeriesId a_seriesId) const;

    const std::vector<NDateTime>& TimeSeries() const& { return m_times; }
    /// The time column, for moving out.
    std::vector<NDateTime>&& TimeSeries() && { return std::move(m_times); }
    IntervalAndMultiplicity GetIntervalData() const { return m_intervalData; }
    std::size_t GetRecordsCount() const { return m_times.size(); }
    /// No rows, whatever the columns hold.
    bool IsEmpty() const { return m_times.empty(); }
    /// Capacity of the time column.
    std::size_t Capacity() const { return m_times.capacity(); }
    std::size_t SeriesCount() const { return m_columns.size(); }
    /// First and last time; false on an empty set, which leaves the arguments alone.
    bool GetTimes(NDateTime& a_first, NDateTime& a_last) const;
    std::set<ESeriesId> GetSeries() const;
    /// A record of the set's shape: all values 0.0, the zero time. A set without columns raises std::invalid_argument.
    Record GetEmptyRecord() const { return Record(GetSeries()); }
    /// The last value of each column (0.0 for a column without values) with the last time. A set without rows raises
    /// std::exception.
    Record GetLastRecord() const;

    /// Appends a row, values by position: the identifiers aren't compared, so a record is built with GetEmptyRecord or
    /// from the same set of series. False, changing nothing, when the counts of series differ or when the time isn't
    /// later than the last one.
    bool AddData(const Record& a_record);
    /// Replaces the contents of the column, or adds it in its place. False for Time.
    bool AddNewSeries(ESeriesId a_seriesId, const std::vector<double>& a_values);
    /// Puts the range in front of the column's values, or adds the column in its place. The range may not belong to
    /// this set. False for Time.
    bool AddNewSeries(ESeriesId a_seriesId, std::vector<double>::const_iterator a_first,
                      std::vector<double>::const_iterator a_last);
    /// Replaces the time column.
    void SetNewTimes(const std::vector<NDateTime>& a_times) { m_times = a_times; }
    void SetNewTimes(std::vector<NDateTime>::const_iterator a_first,
                     std::vector<NDateTime>::const_iterator a_last);
    /// Empties every column; the columns and their capacities stay.
    void RemoveAllRecords();
    /// Room for so many rows; nothing on a set that has rows.
    void ReserveSize(std::size_t a_size);

    /// Adds the three candle columns, a zero for each row. Raises std::runtime_error, changing nothing, when one
    /// exists.
    void AddAggregationSeries();
    /// Removes whichever of the three candle columns exist; the interval data stays.
    void DeleteAggregationSeries();
    /// Folds the rows in place to the output interval of the aggregator, whose exceptions pass through and leave the
    /// rows half folded. a_columns has one entry for each column and receives their first values in the aggregator's
    /// order. False with a line in the log when no rows come out, when a column is shorter than the time column, or
    /// when a_columns doesn't fit the columns; the set keeps its length then. Allocates nothing in the set.
    bool AgregateData(ESeriesId a_main, Aggregator& a_aggregator, std::vector<double*>& a_columns);

    /// Does nothing; VectorTimeTester::CheckIntegrity is the working test.
    void CheckIntegrity(const NDateTime* /*a_day*/) const {}

    /// Reads the binary form and appends to the columns that are there already; times and interval data are replaced.
    /// Another version raises KalventoException. Nothing is validated: call IsValid afterwards. What a stream that ends
    /// early lacks is zero; a list that claims more than that gets at most 32,768 zero entries beyond what was there,
    /// and a set at most 64 empty columns, so that a false count takes no memory. A count that no vector can hold raises std::length_error.
    void Read(std::istream& a_stream);
    /// Writes the binary form. Stream errors stay with the stream.
    void Write(std::ostream& a_stream) const;

    /// Columns as long as the time column, a valid interval, and the candle columns where they belong. Logs why not,
    /// except for a bad interval.
    bool IsValid() const;

protected:
    std::vector<NDateTime>& Times() { return m_times; }

private:
    friend class AggregatorWrapper;

    // The three candle columns of a set; none may be missing.
    struct CandleColumns {
        std::vector<double>* open;
        std::vector<double>* high;
        std::vector<double>* low;
    };

    void Read_v1(std::istream& a_stream);
    void Sort();
    void DecreaseSize(std::size_t a_size);
    CandleColumns AddCandleColumns(std::size_t a_size);
    bool AimColumns(ESeriesId a_main, std::vector<double*>& a_columns);
    bool FinishAggregation(std::size_t a_rows, const Aggregator& a_aggregator);
    /// AddAggregationSeries and AgregateData of single ticks in one, with the same results and failures. The candle
    /// columns grow with the candles: three columns of the ticks' length would cost more than the fold.
    bool AgregateTicks(ESeriesId a_main, Aggregator& a_aggregator, std::vector<double*>& a_columns);

    Columns m_columns;
    std::vector<NDateTime> m_times;
    IntervalAndMultiplicity m_intervalData;
};
