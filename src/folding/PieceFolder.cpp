#include "folding/PieceFolder.h"

#include "aggregation/AggrWindowsFactory.h"
#include "folding/AggregatorTools.h"
#include "platform/CodePage.h"
#include "series/FieldAim.h"
#include "series/TickShape.h"
#include "time/KalventoException.h"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <utility>

namespace {

unsigned short MultiplicityOf(IntervalAndMultiplicity a_interval)
{
    return static_cast<unsigned short>(a_interval.GetMultiplicity());
}

// The engine runs on the time of the candle's first or last row; a time made from the window is put on the finished
// candle. The end of a window lies in the next one: a candle stamped with it could not be continued.
EAggrTimeResult RowStamp(EAggrTimeResult a_stamp)
{
    return a_stamp == ELastRecordTime ? ELastRecordTime : EFirstRecordTime;
}

IntervalAndMultiplicity Checked(IntervalAndMultiplicity a_rows, IntervalAndMultiplicity a_candles,
                                EAggrTimeResult a_stamp)
{
    if (!PieceFolder::Reaches(a_rows, a_candles))
        throw KalventoException("PieceFolder::PieceFolder", __LINE__,
                                "Nie można zagregować danych do tego interwału: a_candles"_cp1250);
    if (!PieceFolder::CanBear(a_candles, a_stamp))
        throw KalventoException("PieceFolder::PieceFolder", __LINE__,
                                "Świece tego interwału nie mogą mieć takiego czasu: a_stamp"_cp1250);
    return a_candles;
}

} // namespace

bool PieceFolder::Reaches(IntervalAndMultiplicity a_rows, IntervalAndMultiplicity a_candles)
{
    return a_candles.IsValid() && a_candles.GetMultiplicity() <= std::numeric_limits<unsigned short>::max() &&
           AggregatorTools::IsAggregationPossible(a_rows.GetInterval(), a_rows.GetMultiplicity(),
                                                  a_candles.GetInterval(), a_candles.GetMultiplicity());
}

bool PieceFolder::CanBear(IntervalAndMultiplicity a_candles, EAggrTimeResult a_stamp)
{
    if (a_candles.IsTick())
        return a_stamp == EFirstRecordTime || a_stamp == ELastRecordTime;
    return !a_candles.IsEod() || a_stamp != EMetaStockWindowEnd;
}

PieceFolder::PieceFolder(const std::set<DSProp>& a_series, IntervalAndMultiplicity a_rows,
                         IntervalAndMultiplicity a_candles, EAggrTimeResult a_stamp, ESameInterval a_same)
    : m_candleInterval(Checked(a_rows, a_candles, a_stamp)),
      m_rowInterval(a_rows),
      m_stamp(a_stamp),
      m_passes(a_same == EPassSame && a_rows.Equals(a_candles)),
      m_main(AggregatorTools::GetMainAggregationSeries(a_series).GetSeriesID()),
      m_rowColumns(a_series.size()),
      m_aggregator(a_candles.GetInterval(), MultiplicityOf(a_candles), RowStamp(a_stamp),
                   AggregatorTools::PrepareAggregationTypes(kalvento::internal::TickShape(a_series))),
      m_stamper(a_candles.GetInterval(), MultiplicityOf(a_candles), a_stamp, {EAggrTypeOhlc})
{
    for (const DSProp& property : a_series) {
        m_ticks = m_ticks && !property.IsAggregationSeries();
        if (property.GetSeriesID() == m_main)
            m_mainPlace = m_series.size();
        m_places.push_back(m_series.size());
        m_series.push_back(property.GetSeriesID());
    }
    m_fields.resize(m_series.size() + (m_ticks ? S_candleFields : 0), nullptr);
    if (!m_ticks || m_passes)
        return;
    for (std::size_t field = 0; field < S_candleFields; ++field) {
        const auto series = static_cast<ESeriesId>(IntervalOpen + field);
        const auto place = std::lower_bound(m_series.begin(), m_series.end(), series) - m_series.begin();
        m_series.insert(m_series.begin() + place, series);
        m_places.insert(m_places.begin() + place, m_rowColumns + field);
    }
}

// A column of the candles by its place.
std::vector<double>& PieceFolder::Column(ColumnBlock& a_rows, std::size_t a_place)
{
    const std::size_t place = m_places[a_place];
    return place < m_rowColumns ? a_rows.columns[place] : m_candleFields[place - m_rowColumns];
}

std::size_t PieceFolder::Fold(ColumnBlock& a_rows, bool a_last, ColumnBlock& a_candles)
{
    a_candles.rows = 0;
    if (a_rows.rows == 0)
        return 0;
    if (m_passes) {
        a_candles.Append(a_rows, 0, a_rows.rows);
        return 0;
    }
    if (m_ticks) {
        for (std::vector<double>& field : m_candleFields)
            if (field.size() < a_rows.times.size())
                field.resize(a_rows.times.size());
    }
    return m_candleInterval.IsTick() ? FoldTicks(a_rows, a_last, a_candles)
                                     : FoldTime(a_rows, a_last, a_candles);
}

std::size_t PieceFolder::FoldTime(ColumnBlock& a_rows, bool a_last, ColumnBlock& a_candles)
{
    IntervalAndMultiplicity interval = m_rowInterval;
    if (m_ticks) {
        // A tick is a candle of one price; in that form every row can follow the candle that is still open.
        const std::ptrdiff_t first = m_carries ? 1 : 0;
        const std::vector<double>& prices = a_rows.columns[m_mainPlace];
        for (std::vector<double>& field : m_candleFields)
            std::copy(prices.begin() + first, prices.begin() + static_cast<std::ptrdiff_t>(a_rows.rows),
                      field.begin() + first);
        interval.Set(EIntervalTick, 2);
    }
    const std::size_t candles = FoldInPlace(a_rows, a_rows.rows, interval);
    const std::size_t finished = a_last ? candles : candles - 1;
    TakeCandles(a_rows, finished, a_candles);
    m_carries = !a_last;
    if (a_last)
        return 0;
    a_rows.times[0] = a_rows.times[finished];
    for (std::size_t place = 0; place < m_series.size(); ++place) {
        std::vector<double>& column = Column(a_rows, place);
        column[0] = column[finished];
    }
    return 1;
}

// A window of ticks counts its rows, and a candle handed back counts as one: so the rows of the last candle, at most
// 65535, wait as they are until they are complete.
std::size_t PieceFolder::FoldTicks(ColumnBlock& a_rows, bool a_last, ColumnBlock& a_candles)
{
    std::size_t count = a_rows.rows;
    if (!a_last) {
        const auto window = AggrWindowsFactory::GetAggrWindowClass(
            EIntervalTick, MultiplicityOf(m_candleInterval), EFirstRecordTime);
        std::size_t lastBegin = 0;
        for (std::size_t row = 0; row < count; ++row) {
            if (!window->IsInCurrentWindow(a_rows.times[row]))
                lastBegin = row;
        }
        count = lastBegin;
    }
    const std::size_t waiting = a_rows.rows - count;
    if (count > 0) {
        // The fold leaves its traces only in the rows before those that wait.
        TakeCandles(a_rows, FoldInPlace(a_rows, count, m_rowInterval), a_candles);
        a_rows.RemoveBefore(count);
    }
    return waiting;
}

std::size_t PieceFolder::FoldInPlace(ColumnBlock& a_rows, std::size_t a_count,
                                     IntervalAndMultiplicity a_interval)
{
    kalvento::internal::FieldAim aim(m_main, m_fields);
    for (std::size_t place = 0; place < m_series.size(); ++place)
        aim.Aim(m_series[place], Column(a_rows, place).data());
    const unsigned int candles =
        m_aggregator.Aggregate(a_interval.GetInterval(), MultiplicityOf(a_interval),
                               static_cast<unsigned int>(a_count), a_rows.times.data(), m_fields);
    m_aggregator.ClearLastValue();
    return candles;
}

void PieceFolder::TakeCandles(ColumnBlock& a_rows, std::size_t a_count, ColumnBlock& a_candles)
{
    a_candles.Reserve(a_count, m_series.size());
    a_candles.rows = a_count;
    const auto count = static_cast<std::ptrdiff_t>(a_count);
    std::copy(a_rows.times.begin(), a_rows.times.begin() + count, a_candles.times.begin());
    for (std::size_t place = 0; place < m_series.size(); ++place) {
        const std::vector<double>& column = Column(a_rows, place);
        std::copy(column.begin(), column.begin() + count, a_candles.columns[place].begin());
    }
    if (m_stamp == EFirstRecordTime || m_stamp == ELastRecordTime)
        return;
    std::array<double, S_candleFields + 1> values{};
    std::vector<double*> fields = {&values[0], &values[1], &values[2], &values[3]};
    for (std::size_t row = 0; row < a_count; ++row)
        m_stamper.SumWithWindow(&a_candles.times[row], &fields, true);
}

History PieceFolder::Add(History&& a_rows)
{
    if (m_passes)
        return std::move(a_rows);

    const std::size_t count = a_rows.GetRecordsCount();
    std::vector<const std::vector<double>*> sources(m_rowColumns, nullptr);
    for (std::size_t place = 0; place < m_series.size(); ++place) {
        if (m_places[place] >= m_rowColumns)
            continue;
        const auto column = std::as_const(a_rows).find(m_series[place]);
        if (column == std::as_const(a_rows).end() || column->second.size() < count)
            throw std::invalid_argument("Wierszom brakuje serii: a_rows"_cp1250);
        sources[m_places[place]] = &column->second;
    }
    const auto kept = static_cast<std::ptrdiff_t>(m_piece.rows);
    m_piece.Reserve(m_piece.rows + count, m_rowColumns);
    std::copy(a_rows.TimeSeries().begin(), a_rows.TimeSeries().end(), m_piece.times.begin() + kept);
    for (std::size_t column = 0; column < m_rowColumns; ++column)
        std::copy_n(sources[column]->begin(), count, m_piece.columns[column].begin() + kept);
    m_piece.rows += count;
    return TakePiece(false);
}

History PieceFolder::TakePiece(bool a_last)
{
    m_piece.rows = Fold(m_piece, a_last, m_candles);
    return m_candles.Between(0, m_candles.rows, m_series, m_candleInterval);
}
