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
/// A record holds one allocation, which has room for the three candle series from the start: growing it at each live
/// row costs more than all the rest of folding that row.
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

    /// Turns the shape of a tick into the shape of a candle: adds IntervalOpen, IntervalMax and IntervalMin with 0.0
    /// and orders the pairs by identifier, equal ones by value (a NaN last). Doesn't allocate where there is room.
    /// Raises std::runtime_error, changing nothing, on a record that is empty, that holds one of the three already, or
    /// that lacks Price.
    void AddAggregationSeries();

private:
    friend class AggregatorWrapper;

    // What the pairs say about becoming a candle.
    struct Shape {
        std::size_t mainCount = 0; // pairs of the series asked for
        std::size_t priceCount = 0;
        std::size_t candleSeriesCount = 0;
        std::size_t misplacedCount = 0; // pairs that belong before the one in front of them
    };

    // Ascending by identifier, then by value. A NaN goes last, so that this stays an order whatever the values are.
    static bool IsBefore(const Value& a_left, const Value& a_right);

    // On the path of every live row, and so inline, where the wrapper that folds it sees it.
    Shape GetShape(ESeriesId a_main) const
    {
        Shape shape;
        const Value* previous = nullptr;
        for (const Value& value : m_values) {
            shape.mainCount += value.first == a_main ? 1U : 0U;
            shape.priceCount += value.first == Price ? 1U : 0U;
            shape.candleSeriesCount += value.first >= IntervalOpen && value.first <= IntervalMin ? 1U : 0U;
            if (previous != nullptr && previous->first >= value.first)
                shape.misplacedCount += IsBefore(value, *previous) ? 1U : 0U;
            previous = &value;
        }
        return shape;
    }
    /// AddAggregationSeries on a known shape.
    void AddAggregationSeries(const Shape& a_shape)
    {
        if (a_shape.candleSeriesCount > 0 || a_shape.priceCount == 0)
            RaiseNoCandle(a_shape.candleSeriesCount > 0);
        m_values.resize(m_values.size() + S_candleSeriesCount);
        Value* place = m_values.data() + m_values.size() - S_candleSeriesCount;
        // Live rows come sorted, so the three go straight to their place.
        while (a_shape.misplacedCount == 0 && place != m_values.data() && place[-1].first > IntervalMin) {
            --place;
            place[S_candleSeriesCount] = *place;
        }
        place[0] = {IntervalOpen, 0.0};
        place[1] = {IntervalMax, 0.0};
        place[2] = {IntervalMin, 0.0};
        if (a_shape.misplacedCount > 0)
            Sort();
    }
    [[noreturn]] static void RaiseNoCandle(bool a_hasCandleSeries);
    void Sort();

    static constexpr std::size_t S_candleSeriesCount = 3;

    Values m_values;
    NDateTime m_time;
};
