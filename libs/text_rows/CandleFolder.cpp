#include "text_rows/CandleFolder.h"

#include "aggregation/AggrWindowsFactory.h"
#include "text_rows/IntervalNotation.h"
#include "series/ESeriesId.h"

#include <algorithm>
#include <array>

namespace kalvento::tool {

namespace {

constexpr unsigned int S_greatestFolded = 65535;

// Types in the engine's order: the main series first, then the others as they stand.
std::vector<EAggrType> EngineTypes(const RowLayout& a_layout)
{
    std::vector<EAggrType> types(1, EAggrTypeOhlc);
    for (std::size_t place = 0; place < a_layout.series.size(); ++place) {
        const ESeriesId series = a_layout.series[place];
        if (series == Price)
            types.front() = a_layout.folds[place];
        else if (series != IntervalOpen && series != IntervalMax && series != IntervalMin)
            types.push_back(a_layout.folds[place]);
    }
    return types;
}

bool HasCandles(const RowLayout& a_layout)
{
    return std::find(a_layout.series.begin(), a_layout.series.end(), IntervalOpen) != a_layout.series.end();
}

// The engine runs on the time of the candle's first or last row; a time made from the window is put on the finished
// candle. The end of a window lies in the next one: a candle that bore it could not be carried on.
EAggrTimeResult RowStamp(EAggrTimeResult a_stamp)
{
    return a_stamp == ELastRecordTime ? ELastRecordTime : EFirstRecordTime;
}

void CheckFold(const RowLayout& a_input, IntervalAndMultiplicity a_output, EAggrTimeResult a_stamp)
{
    const IntervalAndMultiplicity input = a_input.interval;
    const bool finer = a_output.GetInterval() < input.GetInterval() ||
                       (a_output.GetInterval() == input.GetInterval() &&
                        a_output.GetMultiplicity() < input.GetMultiplicity());
    if (finer)
        throw ToolError(EExitUsage, "rows of " + FormatInterval(input) + " can't be folded into " +
                                        FormatInterval(a_output) + "; expected --interval " +
                                        FormatInterval(input) + " or longer");
    if (a_output.GetMultiplicity() > S_greatestFolded)
        throw ToolError(EExitUsage, "--interval: found " + FormatInterval(a_output) +
                                        ", the folding goes up to 65535 of a unit");
    if (a_output.IsTick() && a_stamp != EFirstRecordTime && a_stamp != ELastRecordTime)
        throw ToolError(EExitUsage, "--stamp: ticks have no window in time; expected first or last");
    if (a_output.IsEod() && a_stamp == EMetaStockWindowEnd)
        throw ToolError(EExitUsage,
                        "--stamp end: only candles shorter than a day bear the end of their window; "
                        "expected first, last, begin or border");
}

} // namespace

CandleFolder::CandleFolder(const RowLayout& a_input, IntervalAndMultiplicity a_output,
                           EAggrTimeResult a_stamp)
    : m_input((CheckFold(a_input, a_output, a_stamp), a_input)),
      m_layout(a_input),
      m_stamp(a_stamp),
      m_aggregator(a_output.GetInterval(), static_cast<unsigned short>(a_output.GetMultiplicity()),
                   RowStamp(a_stamp), EngineTypes(a_input)),
      m_stamper(a_output.GetInterval(), static_cast<unsigned short>(a_output.GetMultiplicity()), a_stamp,
                {EAggrTypeOhlc}),
      m_ticks(!HasCandles(a_input))
{
    m_layout.interval = a_output;
    if (m_ticks && !a_output.IsSingleTick()) {
        for (const ESeriesId series : {IntervalOpen, IntervalMax, IntervalMin}) {
            const auto place = std::lower_bound(m_layout.series.begin(), m_layout.series.end(), series);
            m_layout.folds.insert(m_layout.folds.begin() + (place - m_layout.series.begin()), EAggrTypeLast);
            m_layout.series.insert(place, series);
        }
    }
    for (const ESeriesId series : m_layout.series) {
        const auto found = std::find(m_input.series.begin(), m_input.series.end(), series);
        m_sources.push_back(static_cast<std::size_t>(found - m_input.series.begin()));
    }
}

// A candle column by its place in the output's layout.
std::vector<double>& CandleFolder::Column(RowBlock& a_rows, std::size_t a_place)
{
    if (m_sources[a_place] < m_input.series.size())
        return a_rows.columns[m_sources[a_place]];
    const ESeriesId series = m_layout.series[a_place];
    return series == IntervalOpen ? m_open : series == IntervalMax ? m_high : m_low;
}

std::size_t CandleFolder::Fold(RowBlock& a_rows, bool a_last, RowBlock& a_candles)
{
    a_candles.rows = 0;
    if (a_rows.rows == 0)
        return 0;
    if (m_layout.interval.IsSingleTick()) {
        TakeCandles(a_rows, a_rows.rows, a_candles);
        return 0;
    }
    return m_layout.interval.IsTick() ? FoldTicks(a_rows, a_last, a_candles)
                                      : FoldTime(a_rows, a_last, a_candles);
}

std::size_t CandleFolder::FoldTime(RowBlock& a_rows, bool a_last, RowBlock& a_candles)
{
    const std::size_t count = a_rows.rows;
    EInterval interval = m_input.interval.GetInterval();
    unsigned int multiplicity = m_input.interval.GetMultiplicity();
    if (m_ticks) {
        // A tick is a candle of one price; as candles all rows can follow the one that is carried on.
        const std::size_t first = m_carries ? 1 : 0;
        const auto place =
            std::find(m_input.series.begin(), m_input.series.end(), Price) - m_input.series.begin();
        const std::vector<double>& prices = a_rows.columns[static_cast<std::size_t>(place)];
        for (std::vector<double>* column : {&m_open, &m_high, &m_low}) {
            if (column->size() < a_rows.times.size())
                column->resize(a_rows.times.size());
            std::copy(prices.begin() + static_cast<std::ptrdiff_t>(first),
                      prices.begin() + static_cast<std::ptrdiff_t>(count),
                      column->begin() + static_cast<std::ptrdiff_t>(first));
        }
        interval = EIntervalTick;
        multiplicity = 2;
    }
    const std::size_t candles = FoldInPlace(a_rows, count, interval, multiplicity);
    const std::size_t finished = a_last ? candles : candles - 1;
    TakeCandles(a_rows, finished, a_candles);
    m_carries = !a_last;
    if (a_last)
        return 0;
    a_rows.times[0] = a_rows.times[finished];
    for (std::size_t place = 0; place < m_layout.series.size(); ++place) {
        std::vector<double>& column = Column(a_rows, place);
        column[0] = column[finished];
    }
    return 1;
}

// A window of ticks counts its rows, and a candle handed back counts as one: so the rows of the last candle, at most
// 65535, wait as they are until they are complete.
std::size_t CandleFolder::FoldTicks(RowBlock& a_rows, bool a_last, RowBlock& a_candles)
{
    std::size_t count = a_rows.rows;
    if (!a_last) {
        const auto window = AggrWindowsFactory::GetAggrWindowClass(
            EIntervalTick, static_cast<unsigned short>(m_layout.interval.GetMultiplicity()),
            EFirstRecordTime);
        std::size_t lastBegin = 0;
        for (std::size_t row = 0; row < count; ++row) {
            if (!window->IsInCurrentWindow(a_rows.times[row]))
                lastBegin = row;
        }
        count = lastBegin;
    }
    const std::size_t waiting = a_rows.rows - count;
    if (count > 0) {
        // Kept aside, for the fold leaves its own traces only in the rows before.
        for (std::vector<double>* column : {&m_open, &m_high, &m_low}) {
            if (m_ticks && column->size() < a_rows.times.size())
                column->resize(a_rows.times.size());
        }
        TakeCandles(a_rows, FoldInPlace(a_rows, count, EIntervalTick, m_input.interval.GetMultiplicity()),
                    a_candles);
        const auto from = static_cast<std::ptrdiff_t>(count);
        const auto to = static_cast<std::ptrdiff_t>(a_rows.rows);
        std::copy(a_rows.times.begin() + from, a_rows.times.begin() + to, a_rows.times.begin());
        for (std::vector<double>& column : a_rows.columns)
            std::copy(column.begin() + from, column.begin() + to, column.begin());
    }
    return waiting;
}

unsigned int CandleFolder::FoldInPlace(RowBlock& a_rows, std::size_t a_count, EInterval a_interval,
                                       unsigned int a_multiplicity)
{
    std::vector<double*> columns(4);
    for (std::size_t place = 0; place < m_layout.series.size(); ++place) {
        double* values = Column(a_rows, place).data();
        switch (m_layout.series[place]) {
        case IntervalOpen:
            columns[0] = values;
            break;
        case IntervalMax:
            columns[1] = values;
            break;
        case IntervalMin:
            columns[2] = values;
            break;
        case Price:
            columns[3] = values;
            break;
        default:
            columns.push_back(values);
            break;
        }
    }
    const unsigned int candles =
        m_aggregator.Aggregate(a_interval, static_cast<unsigned short>(a_multiplicity),
                               static_cast<unsigned int>(a_count), a_rows.times.data(), columns);
    m_aggregator.ClearLastValue();
    return candles;
}

void CandleFolder::TakeCandles(RowBlock& a_rows, std::size_t a_count, RowBlock& a_candles)
{
    a_candles.Reserve(a_count, m_layout.series.size(), false);
    a_candles.rows = a_count;
    const auto count = static_cast<std::ptrdiff_t>(a_count);
    std::copy(a_rows.times.begin(), a_rows.times.begin() + count, a_candles.times.begin());
    for (std::size_t place = 0; place < m_layout.series.size(); ++place) {
        const std::vector<double>& column = Column(a_rows, place);
        std::copy(column.begin(), column.begin() + count, a_candles.columns[place].begin());
    }
    if (m_stamp == EFirstRecordTime || m_stamp == ELastRecordTime)
        return;
    std::array<double, 4> values{};
    std::vector<double*> fields = {&values[0], &values[1], &values[2], &values[3]};
    for (std::size_t row = 0; row < a_count; ++row)
        m_stamper.SumWithWindow(&a_candles.times[row], &fields, true);
}

} // namespace kalvento::tool
