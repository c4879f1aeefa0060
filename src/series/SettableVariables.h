#pragma once

#include "platform/Export.h"
#include "series/DSProp.h"
#include "series/ESeriesId.h"
#include "series/ValueSeriesCS.h"
#include "time/NDateTime.h"

#include <cstddef>
#include <set>
#include <utility>
#include <vector>

/// Values that arrive one at a time: a fixed set of series, each with a state of not set, changed or unchanged, and the
/// time of the data with the same state. A writer sets values; a reader takes those of state 1 and calls
/// ClearUsageChangedValue.
///
/// The set is fixed when the object is built; setting another series does nothing, so that a feed may send more than
/// the window asked for. A value type: copies are independent, one thread at a time; a moved-from object holds no
/// series.
class KALVENTO_API SettableVariables {
public:
    using Value = std::pair<ESeriesId, ValueSeriesCS<double>>;
    using Values = std::vector<Value>;
    using iterator = Values::iterator;
    using const_iterator = Values::const_iterator;

    /// One entry for each element, in the set's order, 0.0 and not set. An empty set raises KalventoException (and not
    /// std::invalid_argument, as Record does).
    explicit SettableVariables(const std::set<ESeriesId>& a_series);
    /// The same from the identifiers; several indicators give several entries of one identifier, and every operation
    /// meets the first of them.
    explicit SettableVariables(const std::set<DSProp>& a_series);

    iterator begin() { return m_values.begin(); }
    iterator end() { return m_values.end(); }
    const_iterator begin() const { return m_values.begin(); }
    const_iterator end() const { return m_values.end(); }

    /// The first entry of that identifier, or end. Linear.
    iterator find(ESeriesId a_seriesId);
    const_iterator find(ESeriesId a_seriesId) const;
    bool HasSeries(ESeriesId a_seriesId) const { return find(a_seriesId) != end(); }
    std::size_t SeriesCount() const { return m_values.size(); }

    const ValueSeriesCS<NDateTime>& GetTime() const { return m_time; }
    /// State 1, also for an equal time.
    void SetTime(const NDateTime& a_time);
    bool TimeFieldIsSet() const { return m_time.IsSet(); }

    /// When this state was generated. Not part of any state or merge.
    const NDateTime& GetGeneratedTime() const { return m_generatedTime; }
    void SetGeneratedTime(const NDateTime& a_time) { m_generatedTime = a_time; }

    /// State 1, also for an equal value.
    void SetData(ESeriesId a_seriesId, double a_value);
    /// As SetData, but does nothing where the series is set to exactly this value; so a NaN always counts as a change.
    void SetDataIfChanged(ESeriesId a_seriesId, double a_value);

    /// Makes it not set; the value stays.
    void ResetDataSeries(ESeriesId a_seriesId);
    /// The same for all series and for the time.
    void ResetAllSeries();

    /// All that is set, the time included, becomes unchanged (state 2): the reader has taken the changes over.
    void ClearUsageChangedValue();

    /// Some series is set, whether changed or not.
    bool IsAnyDataSeriesSetOrChanged() const;
    /// The same, and the time counts too.
    bool IsAnySeriesSetOrChanged() const { return TimeFieldIsSet() || IsAnyDataSeriesSetOrChanged(); }

    /// Carries the changes of a later snapshot into this one: what is not set there is reset here, what changed there
    /// is taken over as changed, and what is unchanged there stays as it is here. The time likewise. Series that this
    /// object lacks are ignored.
    void MergeChangesValues(const SettableVariables& a_other);

    /// False where the time is set to an invalid one, and where there is no series.
    bool IsValid() const;
    /// Removes the series; both times stay. Afterwards every setter of a series does nothing.
    void Clear() { m_values.clear(); }

private:
    Values m_values;
    ValueSeriesCS<NDateTime> m_time;
    NDateTime m_generatedTime;
};
