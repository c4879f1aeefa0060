#include "series/SettableVariables.h"

#include "platform/CodePage.h"
#include "time/KalventoException.h"

#include <algorithm>

namespace {

using State = ValueSeriesCS<double>;

ESeriesId IdOf(ESeriesId a_seriesId)
{
    return a_seriesId;
}

ESeriesId IdOf(const DSProp& a_series)
{
    return a_series.GetSeriesID();
}

template<class Element>
SettableVariables::Values MakeValues(const std::set<Element>& a_series)
{
    if (a_series.empty())
        throw KalventoException("SettableVariables::SettableVariables", __LINE__,
                                "zbiór serii jest pusty: a_series"_cp1250);
    SettableVariables::Values values;
    values.reserve(a_series.size());
    for (const Element& series : a_series)
        values.emplace_back(IdOf(series), State());
    return values;
}

template<class T>
void SetChanged(ValueSeriesCS<T>& a_target, const T& a_value)
{
    a_target = {a_value, State::S_changed};
}

template<class T>
void MarkAsSeen(ValueSeriesCS<T>& a_target)
{
    if (a_target.IsSet())
        a_target.state = State::S_unchanged;
}

template<class T>
void Merge(const ValueSeriesCS<T>& a_later, ValueSeriesCS<T>& a_target)
{
    if (a_later.state == State::S_changed)
        a_target = a_later;
    else if (a_later.state == State::S_notSet)
        a_target.state = State::S_notSet;
}

} // namespace

SettableVariables::SettableVariables(const std::set<ESeriesId>& a_series) : m_values(MakeValues(a_series)) {}

SettableVariables::SettableVariables(const std::set<DSProp>& a_series) : m_values(MakeValues(a_series)) {}

SettableVariables::iterator SettableVariables::find(ESeriesId a_seriesId)
{
    return std::ranges::find(m_values, a_seriesId, &Value::first);
}

SettableVariables::const_iterator SettableVariables::find(ESeriesId a_seriesId) const
{
    return std::ranges::find(m_values, a_seriesId, &Value::first);
}

void SettableVariables::SetTime(const NDateTime& a_time)
{
    SetChanged(m_time, a_time);
}

void SettableVariables::SetData(ESeriesId a_seriesId, double a_value)
{
    if (const iterator entry = find(a_seriesId); entry != end())
        SetChanged(entry->second, a_value);
}

void SettableVariables::SetDataIfChanged(ESeriesId a_seriesId, double a_value)
{
    const iterator entry = find(a_seriesId);
    if (entry == end() || (entry->second.IsSet() && entry->second.value == a_value))
        return;
    SetChanged(entry->second, a_value);
}

void SettableVariables::ResetDataSeries(ESeriesId a_seriesId)
{
    if (const iterator entry = find(a_seriesId); entry != end())
        entry->second.state = State::S_notSet;
}

void SettableVariables::ResetAllSeries()
{
    for (Value& entry : m_values)
        entry.second.state = State::S_notSet;
    m_time.state = State::S_notSet;
}

void SettableVariables::ClearUsageChangedValue()
{
    for (Value& entry : m_values)
        MarkAsSeen(entry.second);
    MarkAsSeen(m_time);
}

bool SettableVariables::IsAnyDataSeriesSetOrChanged() const
{
    return std::ranges::any_of(m_values, [](const Value& a_entry) { return a_entry.second.IsSet(); });
}

void SettableVariables::MergeChangesValues(const SettableVariables& a_other)
{
    for (const Value& later : a_other)
        if (const iterator entry = find(later.first); entry != end())
            Merge(later.second, entry->second);
    Merge(a_other.m_time, m_time);
}

bool SettableVariables::IsValid() const
{
    if (TimeFieldIsSet() && !m_time.value.IsValid())
        return false;
    return !m_values.empty();
}
