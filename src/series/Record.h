#pragma once

#include "platform/Export.h"
#include "series/DSProp.h"
#include "series/ESeriesId.h"
#include "time/NDateTime.h"

#include <cstddef>
#include <set>
#include <utility>
#include <vector>

/// One row of series values at one time: one tick or one candle. Which series it holds is decided when it is built.
/// A value type: copies are independent, one thread at a time; a moved-from record has no pairs and keeps its time.
///
/// A record holds one allocation, which keeps room for the three candle series from when it is made: growing it at
/// each live row costs more than all the rest of folding that row.
class KALVENTO_API Record {
public:
    using Value = std::pair<ESeriesId, double>;
    using Values = std::vector<Value>;
    using iterator = Values::iterator;
    using const_iterator = Values::const_iterator;

    /// One pair for each element, in the set's order, value 0.0; the zero time. An empty set raises
    /// std::invalid_argument.
    explicit Record(const std::set<ESeriesId>& a_series);
    /// The same from the identifiers; several indicators give several pairs of one identifier.
    explicit Record(const std::set<DSProp>& a_series);
    /// Takes the pairs over as they are, sorted or not, with whatever room they have.
    Record(const NDateTime& a_time, Values&& a_values) : m_values(std::move(a_values)), m_time(a_time) {}

    /// The copy keeps room for the candle series too.
    Record(const Record& a_other);
    /// Allocates only where this record's room is short.
    Record& operator=(const Record& a_other);
    Record(Record&&) noexcept = default;
    Record& operator=(Record&&) noexcept = default;
    ~Record() = default;

    iterator begin() { return m_values.begin(); }
    iterator end() { return m_values.end(); }
    const_iterator begin() const { return m_values.begin(); }
    const_iterator end() const { return m_values.end(); }

    /// The first pair of that identifier, or end. Linear.
    iterator find(ESeriesId a_seriesId)
    {
        iterator pair = begin();
        while (pair != end() && pair->first != a_seriesId)
            ++pair;
        return pair;
    }
    const_iterator find(ESeriesId a_seriesId) const
    {
        const_iterator pair = begin();
        while (pair != end() && pair->first != a_seriesId)
            ++pair;
        return pair;
    }
    bool HasSeries(ESeriesId a_seriesId) const { return find(a_seriesId) != end(); }
    std::size_t SeriesCount() const { return m_values.size(); }

    /// Sets the first pair of that identifier. False, changing nothing, for 0, for Time and for a series that the
    /// record doesn't hold: a record never gains a series here.
    bool SetData(ESeriesId a_seriesId, double a_value)
    {
        if (a_seriesId == 0 || a_seriesId == Time)
            return false;
        const iterator pair = find(a_seriesId);
        if (pair == end())
            return false;
        pair->second = a_value;
        return true;
    }

    const NDateTime& GetTime() const { return m_time; }
    void SetTime(const NDateTime& a_time) { m_time = a_time; }
    /// The time's status is valid. The zero time of a new record is.
    bool IsValid() const { return m_time.IsValid(); }
    /// Removes all pairs; the time and the storage stay.
    void Clear() { m_values.clear(); }

    /// Turns the shape of a tick into the shape of a candle: adds IntervalOpen, IntervalMax and IntervalMin with 0.0 and
    /// orders the pairs by identifier, equal ones by value (a NaN last). Doesn't allocate where there is room.
    /// Raises std::runtime_error, changing nothing, on a record that is empty, that holds one of the three already, or
    /// that lacks Price.
    void AddAggregationSeries();

private:
    Values m_values;
    NDateTime m_time;
};
