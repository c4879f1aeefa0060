#pragma once

#include "platform/Export.h"
#include "series/DataSeriesSet.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <utility>

class HistoryOperations;
class SingleHistoryOperation;

/// A block of past data. Holds no state beyond its base; written and read like any other set.
class KALVENTO_API History : public DataSeriesSet {
public:
    History(EInterval a_interval, unsigned int a_multiplicity);
    History(const std::set<ESeriesId>& a_series, EInterval a_interval, unsigned int a_multiplicity);
    History(const std::set<DSProp>& a_series, EInterval a_interval, unsigned int a_multiplicity);
    History(EInterval a_interval, unsigned int a_multiplicity, std::vector<NDateTime>&& a_times,
            Columns&& a_columns);
    explicit History(std::istream& a_stream);

    /// Daily or longer.
    bool IsEodHistory() const { return GetIntervalData().IsEod(); }
    /// Single ticks, not candles of several.
    bool IsSingleTickHistory() const { return GetIntervalData().IsSingleTick(); }
    /// Years of the first and of the last time; nothing on an empty history.
    std::optional<std::pair<unsigned long, unsigned long>> GetFirstLastYear() const;
    /// The rows of whole days, both included, whatever the times of day. Needs times in order. Raises
    /// std::invalid_argument when a_from is later than a_to, their times of day included.
    History GetSubHistory(NDateTime a_from, NDateTime a_to) const;
    /// Puts older rows in front. False, changing nothing, unless both are valid, of one interval and one list of
    /// series, and the older rows end before the first row here.
    bool InsertedHistoryAtTheBeginning(const History& a_older);

    /// Puts past prices and volumes on the scale of the present, in place: each operation in the order of the list
    /// scales the rows up to the end of its own day. Prices (Price and the three candle columns) are multiplied by the
    /// effective factor; operations of a type up to 6 also divide Volume and Lop by it. All other columns stay as
    /// delivered. Nothing is rounded, no factor is refused. The history doesn't record it: call it once, on data not
    /// adjusted yet. Needs times in order.
    void ApplyDataOperations(const HistoryOperations& a_operations);

private:
    void ApplyDataOperations(const SingleHistoryOperation& a_operation);
    // The three below end with the column where that is shorter than a_count; a missing column is no error.
    void CalculateSeriesValues(ESeriesId a_seriesId, std::size_t a_count,
                               const std::function<void(double&)>& a_calculate);
    void MultiplaySeriesValues(ESeriesId a_seriesId, std::size_t a_count, double a_factor);
    void DivideSeriesValues(ESeriesId a_seriesId, std::size_t a_count, double a_factor);
    static bool HasTheSameIntervalMultiplicity(const History& a_left, const History& a_right);
    static bool HasTheSameSeries(const History& a_left, const History& a_right);
};
