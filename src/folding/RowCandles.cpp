#include "folding/RowCandles.h"

#include "aggregation/EAggrTimeResult.h"
#include "folding/PieceFolder.h"
#include "platform/CodePage.h"
#include "series/History.h"
#include "series/Record.h"
#include "series/Synchronization.h"
#include "velo/Log.h"
#include "velo/LogAllExceptions.h"

#include <algorithm>
#include <utility>

namespace kalvento::internal {

namespace {

constexpr const char* S_placeHistory = "SubscriptionCandles::AddHistory";
constexpr const char* S_placeSynchronization = "SubscriptionCandles::SetSynchronization";
constexpr const char* S_placeRecord = "SubscriptionCandles::AddRecord";

constexpr const char* S_wrongShape = "Serie lub interwał danych nie pasują do świec: dane pominięto"_cp1250;
constexpr const char* S_wrongOrder = "Część historii nie jest późniejsza od poprzednich: pominięto"_cp1250;

bool Refuse(const char* a_place, int a_line, const char* a_message)
{
    VeloTools::Log::Instance().Write(a_place, a_line, a_message);
    return false;
}

std::set<DSProp> WithoutCandleSeries(std::set<DSProp> a_series)
{
    std::erase_if(a_series, [](const DSProp& a_property) { return a_property.IsAggregationSeries(); });
    return a_series;
}

std::set<DSProp> WithCandleSeries(std::set<DSProp> a_series)
{
    a_series.insert({DSProp(IntervalOpen), DSProp(IntervalMax), DSProp(IntervalMin)});
    return a_series;
}

bool IsCandleSeries(ESeriesId a_series)
{
    return a_series >= IntervalOpen && a_series <= IntervalMin;
}

// Rows of either shape as rows of the candle shape.
ColumnBlock BlockOf(DataSeriesSet&& a_rows, const std::vector<ESeriesId>& a_columns, ESeriesId a_main)
{
    ColumnBlock block;
    block.rows = a_rows.GetRecordsCount();
    const std::vector<double> main = a_rows.find(a_main)->second;
    const bool isTickShape = a_rows.SeriesCount() != a_columns.size();
    auto source = a_rows.begin();
    for (const ESeriesId series : a_columns)
        block.columns.push_back(isTickShape && IsCandleSeries(series) ? main : std::move((source++)->second));
    block.times = std::move(a_rows).TimeSeries();
    return block;
}

ColumnBlock BlockOf(const Record& a_row, const std::vector<ESeriesId>& a_columns, ESeriesId a_main)
{
    ColumnBlock block;
    block.rows = 1;
    block.times = {a_row.GetTime()};
    auto source = a_row.begin();
    for (const ESeriesId series : a_columns)
        block.columns.push_back({IsCandleSeries(series) ? a_row.find(a_main)->second : (source++)->second});
    return block;
}

} // namespace

RowCandles::RowCandles(const std::set<DSProp>& a_series, IntervalAndMultiplicity a_interval)
    : m_series(WithoutCandleSeries(a_series)),
      m_interval(a_interval),
      m_candleSeries(WithCandleSeries(m_series)),
      m_blank(m_series, ELastRecordTime, a_interval.GetInterval(),
              static_cast<unsigned short>(a_interval.GetMultiplicity()))
{
    for (const DSProp& property : m_candleSeries)
        m_columns.push_back(property.GetSeriesID());
}

bool RowCandles::HasShape(const DataSeriesSet& a_set, bool a_candles) const
{
    const std::set<DSProp>& series = a_candles ? m_candleSeries : m_series;
    return std::ranges::equal(series, a_set, {}, &DSProp::GetSeriesID, &DataSeriesSet::Column::first) &&
           std::ranges::all_of(a_set, [&](const auto& a_column) {
               return a_column.second.size() == a_set.GetRecordsCount();
           });
}

bool RowCandles::AddHistory(History&& a_history)
{
    if (a_history.IsEmpty())
        return true;
    const IntervalAndMultiplicity interval = a_history.GetIntervalData();
    const bool isTicks = interval.IsSingleTick();
    // Candles of several ticks can't be combined into others, since their ticks are no longer known.
    if (!a_history.IsValid() || !HasShape(a_history, !isTicks) ||
        !PieceFolder::Reaches(interval, m_interval) ||
        (!isTicks && m_interval.IsTick() && !interval.Equals(m_interval)))
        return Refuse(S_placeHistory, __LINE__, S_wrongShape);
    if (GetCount() > 0 && !(m_candles.times[GetCount() - 1] < a_history.TimeSeries().front()))
        return Refuse(S_placeHistory, __LINE__, S_wrongOrder);
    if (isTicks || !interval.Equals(m_interval))
        return AddRows(std::move(a_history));

    const ColumnBlock candles = BlockOf(std::move(a_history), m_columns, m_blank.GetMainAggSeriesId());
    m_candles.Append(candles, 0, candles.rows);
    RowsAreLastCandle();
    return true;
}

bool RowCandles::SetSynchronization(Synchronization&& a_synchronization)
{
    if (a_synchronization.IsEmpty())
        return true;
    if (!a_synchronization.GetIntervalData().IsSingleTick() || !HasShape(a_synchronization, false))
        return Refuse(S_placeSynchronization, __LINE__, S_wrongShape);
    CutBack(a_synchronization.TimeSeries().front());
    return AddRows(std::move(a_synchronization));
}

// Removes the rows from a_firstTime on, and the candles that held them.
void RowCandles::CutBack(const NDateTime& a_firstTime)
{
    m_live.reset();
    const std::size_t kept = m_candles.CountBefore(a_firstTime);
    if (kept == GetCount())
        return;
    const std::size_t rows = kept + 1 == GetCount() ? m_rows.CountBefore(a_firstTime) : 0;
    if (rows > 0) {
        m_rows.rows = rows; // the last candle is folded from them anew
        return;
    }
    m_candles.rows = kept;
    RowsAreLastCandle();
}

void RowCandles::RowsAreLastCandle()
{
    m_live.reset();
    m_rows.rows = 0;
    if (GetCount() > 0 && !m_interval.IsTick())
        m_rows.Append(m_candles, GetCount() - 1, GetCount());
}

// Folds the rows that follow together with those of the last candle.
bool RowCandles::AddRows(DataSeriesSet&& a_rows)
{
    try {
        m_live.reset();
        const ColumnBlock added = BlockOf(std::move(a_rows), m_columns, m_blank.GetMainAggSeriesId());
        const std::size_t finished = GetCount() - (m_rows.rows > 0 ? 1 : 0);
        m_rows.Append(added, 0, added.rows);
        // All have an open, high and low, so the engine takes them as candles of several ticks.
        const IntervalAndMultiplicity shape(EIntervalTick, m_interval.IsSingleTick() ? 1 : 2);
        PieceFolder folder(m_candleSeries, shape, m_interval);
        ColumnBlock rows = m_rows;
        ColumnBlock candles;
        folder.Fold(rows, true, candles);
        m_candles.rows = finished;
        m_candles.Append(candles, 0, candles.rows);
        // A fold doesn't say where the last candle began, but its rows are later than the candle before.
        if (candles.rows > 1)
            m_rows.RemoveBefore(m_rows.CountUpTo(candles.times[candles.rows - 2]));
        return true;
    } catch (...) {
        LogAllExceptions("SubscriptionCandles::AddRows", __LINE__);
        return false;
    }
}

bool RowCandles::OpenLive()
{
    m_live.emplace(m_blank);
    if (GetCount() == 0)
        return true;
    if (m_rows.rows == 0)
        m_rows.Append(m_candles, GetCount() - 1, GetCount());
    // A candle handed back counts as one tick, so a window of ticks is filled again with those that it holds.
    Record first = m_interval.IsTick() ? m_rows.At(0, m_columns) : m_candles.At(GetCount() - 1, m_columns);
    bool isOpen = m_live->SetCurrentRecord(first);
    for (std::size_t row = 1; m_interval.IsTick() && row < m_rows.rows; ++row) {
        Record::Values values;
        for (const auto& value : m_rows.At(row, m_columns))
            if (!IsCandleSeries(value.first))
                values.push_back(value);
        Record tick(m_rows.times[row], std::move(values));
        bool sameWindow = false;
        isOpen = m_live->AggregateRecord(tick, sameWindow) && isOpen;
    }
    return isOpen;
}

std::optional<Record> RowCandles::ToTickShape(const Record& a_record) const
{
    Record row(m_series);
    row.SetTime(a_record.GetTime());
    for (auto& [seriesId, value] : row) {
        const auto found = a_record.find(seriesId);
        if (found == a_record.end())
            return {};
        value = found->second;
    }
    return row;
}

bool RowCandles::AddRecord(const Record& a_record)
{
    const std::optional<Record> row = ToTickShape(a_record);
    if (!row || !row->IsValid())
        return Refuse(S_placeRecord, __LINE__, S_wrongShape);
    if (GetCount() > 0 && row->GetTime() < m_candles.times[GetCount() - 1])
        return false;
    if (!m_live && !OpenLive())
        return false;
    Record candle = *row;
    bool sameWindow = false;
    if (!m_live->AggregateRecord(candle, sameWindow))
        return false;
    if (!sameWindow || GetCount() == 0)
        m_rows.rows = 0;
    else
        --m_candles.rows;
    const ESeriesId main = m_blank.GetMainAggSeriesId();
    m_rows.Append(BlockOf(*row, m_columns, main), 0, 1);
    ColumnBlock changed;
    changed.times = {candle.GetTime()};
    for (const auto& [series, value] : candle)
        changed.columns.push_back({value});
    m_candles.Append(changed, 0, 1);
    return true;
}

} // namespace kalvento::internal
