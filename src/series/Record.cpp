#include "series/Record.h"

#include "platform/CodePage.h"
#include "series/Series.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>

namespace {

constexpr std::size_t S_candleSeriesCount = 3;

template<class Element>
Record::Values MakeValues(const std::set<Element>& a_series)
{
    if (a_series.empty())
        throw std::invalid_argument("zbiór serii jest pusty: a_series"_cp1250);

    Record::Values values;
    values.reserve(a_series.size() + S_candleSeriesCount);
    for (const Element& series : a_series) {
        if constexpr (std::is_same_v<Element, DSProp>)
            values.emplace_back(series.GetSeriesID(), 0.0);
        else
            values.emplace_back(series, 0.0);
    }
    return values;
}

// Ascending by identifier, then by value. A NaN goes last, so that this stays an order whatever the values are.
bool IsBefore(const Record::Value& a_left, const Record::Value& a_right)
{
    if (a_left.first != a_right.first)
        return a_left.first < a_right.first;
    if (std::isnan(a_left.second) || std::isnan(a_right.second))
        return !std::isnan(a_left.second) && std::isnan(a_right.second);
    return a_left.second < a_right.second;
}

} // namespace

Record::Record(const std::set<ESeriesId>& a_series) : m_values(MakeValues(a_series)) {}

Record::Record(const std::set<DSProp>& a_series) : m_values(MakeValues(a_series)) {}

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
    if (m_values.empty())
        throw std::runtime_error("brak serii podstawowej"_cp1250);

    bool hasCandleSeries = false;
    bool hasPrice = false;
    bool isSorted = true;
    const Value* previous = nullptr;
    for (const Value& value : m_values) {
        hasCandleSeries |= VeloTools::Series::IsAggregationSeries(value.first);
        hasPrice |= value.first == Price;
        isSorted &= !previous || previous->first < value.first || !IsBefore(value, *previous);
        previous = &value;
    }
    if (hasCandleSeries)
        throw std::runtime_error("Rekord zawiera już serie agregacyjne"_cp1250);
    if (!hasPrice)
        throw std::runtime_error("brak serii podstawowej"_cp1250);

    // Live rows come sorted, so the three go straight to their place.
    static constexpr std::array<Value, S_candleSeriesCount> S_candleSeries{
        {{IntervalOpen, 0.0}, {IntervalMax, 0.0}, {IntervalMin, 0.0}}};
    auto place = m_values.begin();
    while (place != m_values.end() && (!isSorted || place->first < IntervalOpen))
        ++place;
    m_values.insert(place, S_candleSeries.begin(), S_candleSeries.end());
    if (!isSorted)
        std::ranges::sort(m_values, IsBefore);
}
