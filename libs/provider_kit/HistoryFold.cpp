#include "provider_kit/HistoryFold.h"

#include "folding/AggregatorTools.h"
#include "platform/CodePage.h"
#include "provider_kit/TickShape.h"
#include "time/KalventoException.h"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <utility>

bool HistoryFold::Reaches(const StoreInstrument& a_instrument, IntervalAndMultiplicity a_output)
{
    const IntervalAndMultiplicity rows = a_instrument.interval;
    if (rows.Equals(a_output))
        return true;
    return a_output.IsValid() && a_output.GetMultiplicity() <= std::numeric_limits<unsigned short>::max() &&
           AggregatorTools::IsAggregationPossible(rows.GetInterval(), rows.GetMultiplicity(),
                                                  a_output.GetInterval(), a_output.GetMultiplicity());
}

HistoryFold::HistoryFold(const StoreInstrument& a_instrument, IntervalAndMultiplicity a_output)
    : m_isPlain(a_instrument.interval.Equals(a_output)),
      m_rowsAreCandles(!a_instrument.interval.IsSingleTick()),
      m_output(a_output)
{
    if (!Reaches(a_instrument, a_output))
        throw KalventoException("HistoryFold::HistoryFold", __LINE__,
                                "Nie można zagregować danych do tego interwału: a_output"_cp1250);
    if (m_isPlain)
        return;
    const std::set<DSProp> series = TickShapeOf(a_instrument.series);
    const ESeriesId main = AggregatorTools::GetMainAggregationSeries(series).GetSeriesID();
    m_series = {IntervalOpen, IntervalMax, IntervalMin, main};
    for (const DSProp& property : series)
        if (property.GetSeriesID() != main)
            m_series.push_back(property.GetSeriesID());
    m_row.resize(m_series.size());
    for (double& value : m_row)
        m_fields.push_back(&value);
    m_aggregator.emplace(a_output.GetInterval(), static_cast<unsigned short>(a_output.GetMultiplicity()),
                         ELastRecordTime, AggregatorTools::PrepareAggregationTypes(series));
}

History HistoryFold::Add(History&& a_rows)
{
    if (m_isPlain)
        return std::move(a_rows);

    std::vector<const double*> columns(m_series.size(), nullptr);
    for (std::size_t field = m_rowsAreCandles ? 0 : S_candleFields; field < m_series.size(); ++field) {
        const auto column = std::as_const(a_rows).find(m_series[field]);
        if (column == std::as_const(a_rows).end() || column->second.size() < a_rows.GetRecordsCount())
            throw std::invalid_argument("Wierszom brakuje serii: a_rows"_cp1250);
        columns[field] = column->second.data();
    }

    Candles candles;
    candles.fields.resize(m_series.size());
    for (std::size_t row = 0; row < a_rows.GetRecordsCount(); ++row) {
        for (std::size_t field = 0; field < columns.size(); ++field)
            m_row[field] = columns[field] != nullptr ? columns[field][row] : 0.0;
        NDateTime time = a_rows.TimeSeries()[row];
        if (!m_aggregator->SumWithWindow(&time, &m_fields, m_rowsAreCandles) && m_hasOpen)
            CloseCandle(candles);
        m_open = m_row;
        m_openTime = time;
        m_hasOpen = true;
    }
    return Assemble(std::move(candles));
}

History HistoryFold::Finish()
{
    Candles candles;
    candles.fields.resize(m_series.size());
    if (m_hasOpen)
        CloseCandle(candles);
    m_hasOpen = false;
    return Assemble(std::move(candles));
}

void HistoryFold::CloseCandle(Candles& a_candles) const
{
    a_candles.times.push_back(m_openTime);
    for (std::size_t field = 0; field < m_open.size(); ++field)
        a_candles.fields[field].push_back(m_open[field]);
}

History HistoryFold::Assemble(Candles&& a_candles) const
{
    History::Columns columns;
    for (std::size_t field = 0; field < m_series.size(); ++field)
        columns.emplace_back(m_series[field], std::move(a_candles.fields[field]));
    std::sort(columns.begin(), columns.end(),
              [](const auto& a_left, const auto& a_right) { return a_left.first < a_right.first; });
    return {m_output.GetInterval(), m_output.GetMultiplicity(), std::move(a_candles.times),
            std::move(columns)};
}
