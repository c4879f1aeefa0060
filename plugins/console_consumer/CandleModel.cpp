#include "console_consumer/CandleModel.h"

#include "aggregation/EAggrTimeResult.h"
#include "platform/CodePage.h"
#include "series/Synchronization.h"
#include "velo/Log.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace {

constexpr const char* S_placeHistory = "CandleModel::AddHistory";
constexpr const char* S_placeSynchronization = "CandleModel::SetSynchronization";
constexpr const char* S_placeRecord = "CandleModel::AddRecord";

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

} // namespace

CandleModel::Rows::Rows(const std::set<DSProp>& a_series, IntervalAndMultiplicity a_interval, bool a_candles)
    : interval(a_interval)
{
    DataSeriesSet shape(a_interval.GetInterval(), a_interval.GetMultiplicity(), a_series);
    if (a_candles)
        shape.AddAggregationSeries();
    columns.assign(shape.begin(), shape.end());
}

void CandleModel::Rows::Append(const DataSeriesSet& a_set, std::size_t a_first, std::size_t a_last)
{
    const auto first = static_cast<std::ptrdiff_t>(a_first);
    const auto last = static_cast<std::ptrdiff_t>(a_last);
    const std::vector<NDateTime>& newTimes = a_set.TimeSeries();
    times.insert(times.end(), newTimes.begin() + first, newTimes.begin() + last);
    auto source = a_set.begin();
    for (auto& column : columns) {
        column.second.insert(column.second.end(), source->second.begin() + first,
                             source->second.begin() + last);
        ++source;
    }
}

void CandleModel::Rows::Append(const Record& a_record)
{
    times.push_back(a_record.GetTime());
    auto value = a_record.begin();
    for (auto& column : columns)
        column.second.push_back((value++)->second);
}

void CandleModel::Rows::Remove(std::size_t a_first, std::size_t a_last)
{
    const auto cut = [&](auto& a_values) {
        a_values.erase(a_values.begin() + static_cast<std::ptrdiff_t>(a_first),
                       a_values.begin() + static_cast<std::ptrdiff_t>(a_last));
    };
    cut(times);
    for (auto& column : columns)
        cut(column.second);
}

Record CandleModel::Rows::At(std::size_t a_row) const
{
    Record::Values values;
    values.reserve(columns.size() + 3);
    for (const auto& [seriesId, column] : columns)
        values.emplace_back(seriesId, column[a_row]);
    return {times[a_row], std::move(values)};
}

bool CandleModel::Rows::HasShapeOf(const DataSeriesSet& a_set) const
{
    return a_set.SeriesCount() == columns.size() &&
           std::equal(
               columns.begin(), columns.end(), a_set.begin(), [&](const auto& a_mine, const auto& a_other) {
                   return a_mine.first == a_other.first && a_other.second.size() == a_set.GetRecordsCount();
               });
}

template<typename Set>
Set CandleModel::Rows::Copy(std::size_t a_first, std::size_t a_last) const
{
    const auto first = static_cast<std::ptrdiff_t>(a_first);
    const auto last = static_cast<std::ptrdiff_t>(a_last);
    DataSeriesSet::Columns copied;
    for (const auto& [seriesId, column] : columns)
        copied.emplace_back(seriesId, std::vector<double>(column.begin() + first, column.begin() + last));
    return Set(interval.GetInterval(), interval.GetMultiplicity(),
               std::vector<NDateTime>(times.begin() + first, times.begin() + last), std::move(copied));
}

CandleModel::CandleModel(const std::set<DSProp>& a_series, EInterval a_interval,
                         unsigned short a_multiplicity)
    : m_series(WithoutCandleSeries(a_series)),
      m_interval(a_interval, a_multiplicity),
      m_blank(m_series, ELastRecordTime, a_interval, a_multiplicity),
      m_candles(m_series, m_interval, true),
      m_openRows(m_series, {EIntervalTick, 1}, false)
{}

void CandleModel::SetOperations(const HistoryOperations& a_operations)
{
    m_operations.reset();
    if (a_operations.begin() != a_operations.end())
        m_operations = a_operations;
}

template<typename Set>
Set CandleModel::Adjust(Set&& a_set) const
{
    if (!m_operations)
        return std::forward<Set>(a_set);
    const IntervalAndMultiplicity interval = a_set.GetIntervalData();
    History history(
        interval.GetInterval(), interval.GetMultiplicity(), std::vector<NDateTime>(a_set.TimeSeries()),
        DataSeriesSet::Columns(std::make_move_iterator(a_set.begin()), std::make_move_iterator(a_set.end())));
    history.ApplyDataOperations(*m_operations);
    DataSeriesSet::Columns columns(std::make_move_iterator(history.begin()),
                                   std::make_move_iterator(history.end()));
    return Set(interval.GetInterval(), interval.GetMultiplicity(), std::move(history).TimeSeries(),
               std::move(columns));
}

bool CandleModel::AddHistory(History&& a_history)
{
    if (a_history.IsEmpty())
        return true;
    const IntervalAndMultiplicity interval = a_history.GetIntervalData();
    const bool isTicks = interval.IsSingleTick();
    const Rows shape(m_series, interval, !isTicks);
    // Candles of some ticks can't be put together to others: their ticks are not known any more.
    if (!a_history.IsValid() || !shape.HasShapeOf(a_history) ||
        (!isTicks && m_interval.IsTick() && !interval.Equals(m_interval)))
        return Refuse(S_placeHistory, __LINE__, S_wrongShape);
    if (GetCount() > 0 && !(m_candles.times.back() < a_history.TimeSeries().front()))
        return Refuse(S_placeHistory, __LINE__, S_wrongOrder);

    if (isTicks) {
        DataSeriesSet::Columns columns(std::make_move_iterator(a_history.begin()),
                                       std::make_move_iterator(a_history.end()));
        return SetSynchronization(
            Synchronization(EIntervalTick, 1, std::move(a_history).TimeSeries(), std::move(columns)));
    }
    History part = Adjust(std::move(a_history));
    if (interval.Equals(m_interval))
        return AddFinishedCandles(part);

    const bool continues = !m_openRows.times.empty() && m_openRows.interval.Equals(interval) && !m_base;
    if (continues &&
        !part.InsertedHistoryAtTheBeginning(m_openRows.Copy<History>(0, m_openRows.times.size())))
        return Refuse(S_placeHistory, __LINE__, S_wrongOrder);
    Rows lastRows = LastRows(part);
    AggregatorWrapper folder(m_blank);
    if (!folder.AgregateHistory(part))
        return false;
    if (continues)
        m_candles.Remove(GetCount() - 1, GetCount());
    m_candles.Append(part, 0, part.GetRecordsCount());
    KeepOpenRows(std::move(lastRows));
    return true;
}

bool CandleModel::AddFinishedCandles(const History& a_history)
{
    m_candles.Append(a_history, 0, a_history.GetRecordsCount());
    m_openRows = Rows(m_series, {EIntervalTick, 1}, false);
    m_base.reset();
    m_live.reset();
    return true;
}

bool CandleModel::SetSynchronization(Synchronization&& a_synchronization)
{
    if (a_synchronization.IsEmpty())
        return true;
    if (!a_synchronization.GetIntervalData().IsSingleTick() ||
        !Rows(m_series, {EIntervalTick, 1}, false).HasShapeOf(a_synchronization))
        return Refuse(S_placeSynchronization, __LINE__, S_wrongShape);

    Synchronization ticks = Adjust(std::move(a_synchronization));
    const NDateTime first = ticks.TimeSeries().front();
    const std::optional<Record> base = TakeBase(first);
    if (m_openRows.times.empty())
        return base ? FoldOnto(*base, ticks) : FoldAnew(std::move(ticks));

    // Rows of the last candle that stay are folded once more with those that follow.
    Rows rows = std::exchange(m_openRows, Rows(m_series, {EIntervalTick, 1}, false));
    rows.Append(ticks, 0, ticks.GetRecordsCount());
    auto all = rows.Copy<Synchronization>(0, rows.times.size());
    return base ? FoldOnto(*base, all) : FoldAnew(std::move(all));
}

// Takes away what lies behind a_firstTime, and the open candle. What is left of that: its rows in m_openRows, and the
// candle returned, which they follow.
std::optional<Record> CandleModel::TakeBase(const NDateTime& a_firstTime)
{
    m_live.reset();
    const auto kept = static_cast<std::size_t>(
        std::lower_bound(m_candles.times.begin(), m_candles.times.end(), a_firstTime) -
        m_candles.times.begin());
    const bool lastIsWhole = kept == GetCount();
    if (GetCount() == 0 || kept + 1 < GetCount() || !m_openRows.interval.IsSingleTick())
        m_openRows = Rows(m_series, {EIntervalTick, 1}, false);
    if (kept + 1 < GetCount())
        m_base.reset();

    if (!m_openRows.times.empty()) {
        std::optional<Record> base = std::exchange(m_base, std::nullopt);
        if (base && !(base->GetTime() < a_firstTime))
            base.reset();
        const auto later = std::lower_bound(m_openRows.times.begin(), m_openRows.times.end(), a_firstTime);
        m_openRows.Remove(static_cast<std::size_t>(later - m_openRows.times.begin()),
                          m_openRows.times.size());
        m_candles.Remove(std::min(kept, GetCount() - 1), GetCount());
        return base;
    }
    m_base.reset();
    m_candles.Remove(kept, GetCount());
    if (!lastIsWhole || kept == 0 || m_interval.IsTick())
        return {};
    NDateTime begin;
    NDateTime end;
    m_blank.GetWindowLimits(a_firstTime, &begin, &end);
    if (m_candles.times.back() < begin)
        return {};
    Record base = m_candles.At(kept - 1);
    m_candles.Remove(kept - 1, kept);
    return base;
}

bool CandleModel::FoldOnto(Record a_base, const DataSeriesSet& a_rows)
{
    m_candles.Append(a_base);
    m_live.emplace(m_blank);
    m_base = a_base;
    if (!m_live->SetCurrentRecord(a_base))
        return false;
    Rows rows(m_series, {EIntervalTick, 1}, false);
    rows.Append(a_rows, 0, a_rows.GetRecordsCount());
    for (std::size_t row = 0; row < rows.times.size(); ++row)
        if (!FoldRow(rows.At(row), nullptr))
            return false;
    return true;
}

bool CandleModel::FoldAnew(Synchronization&& a_rows)
{
    Rows lastRows = LastRows(a_rows);
    AggregatorWrapper folder(m_blank);
    if (!folder.AgregateSynchro(a_rows))
        return false;
    m_candles.Append(a_rows, 0, a_rows.GetRecordsCount());
    KeepOpenRows(std::move(lastRows));
    m_live.emplace(std::move(folder));
    if (m_interval.IsTick())
        ReopenTicks();
    return true;
}

// Of the rows among which all of the last candle's are: a fold doesn't tell where that began, but its time is later than
// that of the candle before.
void CandleModel::KeepOpenRows(Rows a_lastRows)
{
    m_live.reset();
    m_base.reset();
    m_openRows = std::move(a_lastRows);
    if (GetCount() < 2)
        return;
    const auto first =
        std::upper_bound(m_openRows.times.begin(), m_openRows.times.end(), m_candles.times[GetCount() - 2]);
    m_openRows.Remove(0, static_cast<std::size_t>(first - m_openRows.times.begin()));
}

CandleModel::Rows CandleModel::LastRows(const DataSeriesSet& a_rows) const
{
    const std::size_t count = a_rows.GetRecordsCount();
    std::size_t first = count - std::min<std::size_t>(count, m_interval.GetMultiplicity());
    if (!m_interval.IsTick()) {
        NDateTime begin;
        NDateTime end;
        const std::vector<NDateTime>& times = a_rows.TimeSeries();
        m_blank.GetWindowLimits(times.back(), &begin, &end);
        first = static_cast<std::size_t>(std::lower_bound(times.begin(), times.end(), begin) - times.begin());
    }
    const IntervalAndMultiplicity interval = a_rows.GetIntervalData();
    Rows rows(m_series, interval, !interval.IsSingleTick());
    rows.Append(a_rows, first, count);
    return rows;
}

// A candle handed back counts as one tick, so a window of ticks is filled again by those that it holds.
void CandleModel::ReopenTicks()
{
    m_live.emplace(m_blank);
    for (std::size_t row = 0; row < m_openRows.times.size(); ++row) {
        Record record = m_openRows.At(row);
        bool sameWindow = false;
        m_live->AggregateRecord(record, sameWindow);
    }
}

void CandleModel::OpenLive()
{
    m_live.emplace(m_blank);
    if (GetCount() == 0)
        return;
    // The rows of a history's last candle are not known, or they were candles themselves.
    m_openRows = Rows(m_series, {EIntervalTick, 1}, false);
    m_base = GetCandle(GetCount() - 1);
    Record last = *m_base;
    m_live->SetCurrentRecord(last);
}

bool CandleModel::FoldRow(const Record& a_row, Change* a_change)
{
    Record candle(a_row);
    bool sameWindow = false;
    if (!m_live->AggregateRecord(candle, sameWindow))
        return false;
    if (sameWindow && GetCount() > 0) {
        m_candles.Remove(GetCount() - 1, GetCount());
    } else {
        sameWindow = false;
        m_openRows.Clear();
        m_base.reset();
    }
    m_openRows.Append(a_row);
    m_candles.Append(candle);
    if (a_change != nullptr)
        *a_change = {std::move(candle), !sameWindow};
    return true;
}

std::optional<Record> CandleModel::ToTickShape(const Record& a_record) const
{
    Record row(m_series);
    row.SetTime(a_record.GetTime());
    for (auto& [seriesId, value] : row) {
        const auto found = a_record.find(seriesId);
        if (found == a_record.end())
            return {};
        value = found->second;
    }
    if (!m_operations)
        return row;
    History history(m_series, EIntervalTick, 1);
    history.AddData(row);
    history.ApplyDataOperations(*m_operations);
    return history.GetLastRecord();
}

std::optional<CandleModel::Change> CandleModel::AddRecord(const Record& a_record)
{
    const std::optional<Record> row = ToTickShape(a_record);
    if (!row || !row->IsValid()) {
        Refuse(S_placeRecord, __LINE__, S_wrongShape);
        return {};
    }
    if (GetCount() > 0 && row->GetTime() < m_candles.times.back())
        return {};
    if (!m_live)
        OpenLive();
    Change change{*row, false};
    if (!FoldRow(*row, &change))
        return {};
    return change;
}

Record CandleModel::GetCandle(std::size_t a_place) const
{
    return m_candles.At(a_place);
}

History CandleModel::GetLastCandles(std::size_t a_count) const
{
    return m_candles.Copy<History>(GetCount() - std::min(a_count, GetCount()), GetCount());
}
