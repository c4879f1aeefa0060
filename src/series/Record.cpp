#include "series/Record.h"

#include "platform/CodePage.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace {

template<class Element>
Record::Values MakeValues(const std::set<Element>& a_series, std::size_t a_room)
{
    if (a_series.empty())
        throw std::invalid_argument("zbiór serii jest pusty: a_series"_cp1250);

    Record::Values values;
    values.reserve(a_series.size() + a_room);
    for (const Element& series : a_series) {
        if constexpr (std::is_same_v<Element, DSProp>)
            values.emplace_back(series.GetSeriesID(), 0.0);
        else
            values.emplace_back(series, 0.0);
    }
    return values;
}

} // namespace

Record::Record(const std::set<ESeriesId>& a_series) : m_values(MakeValues(a_series, S_candleSeriesCount)) {}

Record::Record(const std::set<DSProp>& a_series) : m_values(MakeValues(a_series, S_candleSeriesCount)) {}

Record::Record(const Record& a_other) : m_time(a_other.m_time)
{
    m_values.reserve(a_other.m_values.size() + S_candleSeriesCount);
    m_values.assign(a_other.m_values.begin(), a_other.m_values.end());
}

Record& Record::operator=(const Record& a_other)
{
    if (this == &a_other)
        return *this;
    if (m_values.capacity() < a_other.m_values.size())
        m_values.reserve(a_other.m_values.size() + S_candleSeriesCount);
    m_values.assign(a_other.m_values.begin(), a_other.m_values.end());
    m_time = a_other.m_time;
    return *this;
}

void Record::AddAggregationSeries()
{
    AddAggregationSeries(GetShape(Price));
}

bool Record::IsBefore(const Value& a_left, const Value& a_right)
{
    if (a_left.first != a_right.first)
        return a_left.first < a_right.first;
    if (std::isnan(a_left.second) || std::isnan(a_right.second))
        return !std::isnan(a_left.second) && std::isnan(a_right.second);
    return a_left.second < a_right.second;
}

void Record::RaiseNoCandle(bool a_hasCandleSeries)
{
    throw std::runtime_error(a_hasCandleSeries ? "Rekord zawiera już serie agregacyjne"_cp1250
                                               : "brak serii podstawowej"_cp1250);
}

void Record::Sort()
{
    std::ranges::sort(m_values, IsBefore);
}
