#include "folding/Explanation.h"

#include "aggregation/AggrWindowsFactory.h"
#include "folding/RowsBetween.h"
#include "platform/CodePage.h"
#include "series/History.h"
#include "series/Series.h"
#include "series/TickShape.h"
#include "time/KalventoException.h"
#include "time/TimeParts.h"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <utility>

namespace {

AggregatorWrapper MakeWrapper(const std::set<DSProp>& a_properties, IntervalAndMultiplicity a_interval)
{
    if (a_interval.GetMultiplicity() > std::numeric_limits<unsigned short>::max())
        throw std::invalid_argument("Niepoprawny argument: a_interval"_cp1250);
    return {kalvento::internal::TickShape(a_properties), ELastRecordTime, a_interval.GetInterval(),
            static_cast<unsigned short>(a_interval.GetMultiplicity())};
}

} // namespace

Explanation::Explanation(const DataSeriesSet& a_rows, std::vector<Source> a_sources,
                         std::vector<Source> a_refused, const std::set<DSProp>& a_properties,
                         IntervalAndMultiplicity a_interval)
    : m_rows(a_rows),
      m_sources(std::move(a_sources)),
      m_refused(std::move(a_refused)),
      m_ticks(a_interval.IsTick()),
      m_wrapper(MakeWrapper(a_properties, a_interval)),
      m_window(AggrWindowsFactory::GetAggrWindowClass(
          a_interval.GetInterval(), static_cast<unsigned short>(a_interval.GetMultiplicity()),
          ELastRecordTime))
{
    if (!m_rows.IsValid() || m_sources.size() != m_rows.GetRecordsCount())
        throw std::invalid_argument("Niepoprawny argument: a_rows, a_sources"_cp1250);
    for (const DSProp& property : a_properties)
        m_types[property.GetSeriesID()] = property.GetAggrType();
    for (const ESeriesId series : {IntervalOpen, IntervalMax, IntervalMin})
        m_types[series] = m_types[m_wrapper.GetMainAggSeriesId()];
    // Rows come in order, so the engine asks nothing else than this to begin a candle.
    for (std::size_t row = 0; row < m_sources.size(); ++row) {
        if (!m_window->IsInCurrentWindow(m_rows.TimeSeries()[row]))
            m_candles.push_back({row, row});
        m_candles.back().end = row + 1;
    }
}

NDateTime Explanation::BeginOf(const NDateTime& a_time) const
{
    return m_window->GetBeginingOfWindowTime(a_time, m_window->GetWindowNumber(a_time));
}

NDateTime Explanation::TimeOf(std::size_t a_candle) const
{
    const NDateTime& first = m_rows.TimeSeries()[m_candles.at(a_candle).begin];
    return m_ticks ? first : BeginOf(first);
}

std::optional<std::size_t> Explanation::Find(const NDateTime& a_at) const
{
    const std::vector<NDateTime>& times = m_rows.TimeSeries();
    if (m_ticks) {
        const auto found = std::ranges::find_if(m_candles, [&](const Span& a_candle) {
            return !TimeParts::IsSecondEarlier(a_at, times[a_candle.begin]) &&
                   !TimeParts::IsSecondEarlier(times[a_candle.end - 1], a_at);
        });
        return found == m_candles.end() ? std::nullopt
                                        : std::optional(static_cast<std::size_t>(found - m_candles.begin()));
    }
    const NDateTime begin = BeginOf(a_at);
    // From the first row not before the window on; a candle may hold rows of more than one (Candle::isMixed).
    const auto row =
        std::ranges::partition_point(times, [&](const NDateTime& a_time) { return a_time < begin; });
    if (row == times.end() || BeginOf(*row) != begin)
        return std::nullopt;
    const auto place = static_cast<std::size_t>(row - times.begin());
    const auto next = std::ranges::partition_point(
        m_candles, [&](const Span& a_candle) { return a_candle.begin <= place; });
    return static_cast<std::size_t>(next - m_candles.begin()) - 1;
}

// How many candles of the same day lie before; what counts candles of ticks.
std::size_t Explanation::PlaceInDay(std::size_t a_candle) const
{
    std::size_t place = 0;
    while (place < a_candle && TimeOf(a_candle - place - 1).SameDay(TimeOf(a_candle)))
        ++place;
    return place;
}

std::optional<Explanation::Candle> Explanation::Explain(const NDateTime& a_at) const
{
    const auto place = Find(a_at);
    if (!place)
        return std::nullopt;
    Candle candle;
    candle.place = *place;
    candle.rows = m_candles[*place];
    if (m_ticks) {
        candle.number = static_cast<int>(PlaceInDay(*place));
    } else {
        candle.number = m_window->GetWindowNumber(a_at);
        candle.begin = m_window->GetBeginingOfWindowTime(a_at, candle.number);
        candle.border = m_window->GetBorderOfWindowTime(a_at, candle.number);
        candle.isMixed = TimeOf(*place) != BeginOf(m_rows.TimeSeries()[candle.rows.end - 1]);
    }
    ListValues(candle);
    ListRows(candle);
    return candle;
}

// The values come from the engine; where they come from is looked up in the rows.
void Explanation::ListValues(Candle& a_candle) const
{
    auto folded = kalvento::internal::RowsBetween<History>(m_rows, a_candle.rows.begin, a_candle.rows.end);
    const bool isFolded = m_wrapper.AgregateHistory(folded);
    m_wrapper.ClearLastValue();
    if (!isFolded)
        throw KalventoException("Explanation::ListValues", __LINE__,
                                "Nie można zagregować wierszy świecy"_cp1250);
    if (folded.IsSingleTickHistory())
        folded.DeleteAggregationSeries();
    std::vector<ESeriesId> series;
    for (const auto& column : folded)
        series.push_back(column.first);
    for (const std::size_t place : VeloTools::Series::ReadingOrder(series)) {
        const auto& [id, values] = *(folded.begin() + static_cast<std::ptrdiff_t>(place));
        a_candle.values.push_back(ValueOf(id, values.front(), a_candle.rows));
    }
}

Explanation::Value Explanation::ValueOf(ESeriesId a_series, double a_value, const Span& a_rows) const
{
    Value value{a_series, a_value, Value::EFromRow, a_rows.end - 1};
    const EAggrType type = m_types.at(a_series);
    if (type == EAggrTypeOhlcSum || type == EAggrTypeSum) {
        value.from = Value::EFromRows;
    } else if (type == EAggrTypeOhlc && a_series == IntervalOpen) {
        value.row = a_rows.begin;
    } else if (type == EAggrTypeOhlc && a_series != m_wrapper.GetMainAggSeriesId()) {
        auto column = m_rows.find(a_series);
        if (column == m_rows.end())
            column = m_rows.find(m_wrapper.GetMainAggSeriesId());
        const auto first = column->second.begin();
        const auto end = first + static_cast<std::ptrdiff_t>(a_rows.end);
        const auto found = std::find(first + static_cast<std::ptrdiff_t>(a_rows.begin), end, a_value);
        value.from = found == end ? Value::EFromNone : Value::EFromRow;
        value.row = static_cast<std::size_t>(found - first);
    }
    return value;
}

bool Explanation::IsInWindow(const NDateTime& a_time, const Candle& a_candle) const
{
    return !m_ticks && BeginOf(a_time) == a_candle.begin;
}

void Explanation::ListRows(Candle& a_candle) const
{
    const auto [begin, end] = a_candle.rows;
    for (std::size_t place = 0; place < m_refused.size(); ++place) {
        const Source& row = m_refused[place];
        const bool isBetween = (begin == 0 || row.origin > m_sources[begin - 1].origin) &&
                               (end == m_sources.size() || row.origin < m_sources[end].origin);
        const bool hasTime = row.written.GetMonth() > 0;
        if (m_ticks || !hasTime ? isBetween : IsInWindow(row.written, a_candle))
            a_candle.refused.push_back(place);
    }
    for (std::size_t row = 0; row < m_sources.size(); ++row) {
        if (!TimeParts::IsSecondEarlier(m_sources[row].written, m_rows.TimeSeries()[row]))
            continue;
        if (row >= begin && row < end)
            a_candle.raised.push_back(row);
        else if (IsInWindow(m_sources[row].written, a_candle))
            a_candle.lost.push_back(row);
    }
}
