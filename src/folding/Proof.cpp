#include "folding/Proof.h"

#include "folding/RowsBetween.h"
#include "platform/CodePage.h"
#include "series/Record.h"
#include "series/Synchronization.h"
#include "time/KalventoException.h"

#include <algorithm>
#include <limits>
#include <random>
#include <stdexcept>
#include <utility>

using kalvento::internal::RowsBetween;

namespace {

// At how many rows live data takes over, unless the caller says.
constexpr std::size_t S_samples = 200;
constexpr std::size_t S_everyRowUpTo = 2000;
// Histories are handed over from the first row on, as long as that folds no more rows than this.
constexpr std::size_t S_greatestWork = 50'000'000;
// Otherwise they begin this many candles before the one that is handed over.
constexpr std::size_t S_candlesBefore = 2;
// Live rows follow a hand-over until this many candles have begun after the open one. A candle's state comes from its
// own rows alone, so from the second one on the run could only repeat what the row-by-row road has shown.
constexpr std::size_t S_candlesAfter = 2;
// Rows folded one by one for all hand-overs together, unless the caller says: it takes some seconds.
constexpr std::size_t S_greatestLiveWork = 20'000'000;
constexpr std::size_t S_fewestSamples = 9;

DataSeriesSet::Columns EmptyColumnsOf(const DataSeriesSet& a_set)
{
    DataSeriesSet::Columns columns;
    for (const auto& [series, values] : a_set)
        columns.emplace_back(series, std::vector<double>());
    return columns;
}

AggregatorWrapper MakeWrapper(const DataSeriesSet& a_ticks, const std::set<DSProp>& a_properties,
                              IntervalAndMultiplicity a_interval)
{
    if (!a_ticks.GetIntervalData().IsSingleTick() || !a_ticks.IsValid())
        throw std::invalid_argument("Niepoprawny argument: a_ticks"_cp1250);
    if (a_interval.GetMultiplicity() > std::numeric_limits<unsigned short>::max())
        throw std::invalid_argument("Niepoprawny argument: a_interval"_cp1250);
    return {a_properties, ELastRecordTime, a_interval.GetInterval(),
            static_cast<unsigned short>(a_interval.GetMultiplicity())};
}

void RaiseUnless(bool a_folded, const char* a_message)
{
    if (!a_folded)
        throw KalventoException("Proof::Run", __LINE__, a_message);
}

} // namespace

/// Candles as a receiver of live rows keeps them: each row replaces the last one or begins one.
class Proof::LiveCandles {
public:
    LiveCandles(const Proof& a_proof, AggregatorWrapper& a_wrapper)
        : m_proof(a_proof),
          m_wrapper(a_wrapper),
          m_empty(a_proof.m_ticks.GetEmptyRecord()),
          m_columns(EmptyColumnsOf(a_proof.m_candles))
    {}

    /// Goes on with candles that were folded in one go.
    void TakeOver(const DataSeriesSet& a_candles)
    {
        m_times = a_candles.TimeSeries();
        m_columns.assign(a_candles.begin(), a_candles.end());
    }

    /// True when the row began a candle.
    bool Take(std::size_t a_row)
    {
        Record record = m_empty;
        record.SetTime(m_proof.m_ticks.TimeSeries()[a_row]);
        auto value = record.begin();
        for (const auto& [series, values] : m_proof.m_ticks)
            (value++)->second = values[a_row];
        bool sameWindow = false;
        RaiseUnless(m_wrapper.AggregateRecord(record, sameWindow), "Nie można zagregować wiersza"_cp1250);
        // The first row begins a candle even if the engine held an open window: there is none to replace.
        const bool isNew = !sameWindow || m_times.empty();
        const std::size_t size = m_times.size() + (isNew ? 1 : 0);
        m_times.resize(size);
        m_times.back() = record.GetTime();
        value = record.begin();
        for (auto& [series, values] : m_columns) {
            values.resize(size);
            values.back() = (value++)->second;
        }
        return isNew;
    }

    /// The candles, without the last one if a_dropLast; nothing is left here.
    DataSeriesSet Finish(bool a_dropLast = false)
    {
        if (a_dropLast) {
            m_times.pop_back();
            for (auto& [series, values] : m_columns)
                values.pop_back();
        }
        return {m_wrapper.GetOutputInterval(), m_wrapper.GetOutputMultiplicity(), std::move(m_times),
                std::move(m_columns)};
    }

private:
    const Proof& m_proof;
    AggregatorWrapper& m_wrapper;
    const Record m_empty;
    std::vector<NDateTime> m_times;
    DataSeriesSet::Columns m_columns;
};

Proof::Proof(const DataSeriesSet& a_ticks, const std::set<DSProp>& a_properties,
             IntervalAndMultiplicity a_interval)
    : m_ticks(a_ticks), m_fresh(MakeWrapper(a_ticks, a_properties, a_interval)), m_candles(EIntervalTick, 1)
{}

Proof::Result Proof::Run(std::size_t a_samples, const OnHandOver& a_onHandOver)
{
    Result result;
    result.rows = m_ticks.GetRecordsCount();
    if (m_ticks.IsEmpty())
        return result;
    m_candles = RowsBetween<History>(m_ticks, 0, result.rows);
    RaiseUnless(AggregatorWrapper(m_fresh).AgregateHistory(m_candles), "Nie można zagregować wierszy"_cp1250);
    result.candles = m_candles.GetRecordsCount();
    result.finding = ProveLive();
    if (result.finding)
        return result;

    const std::size_t unasked = result.rows <= S_everyRowUpTo ? result.rows : S_samples;
    const std::vector<std::size_t> rows = a_samples > 0 ? ChooseRows(a_samples) : Thin(ChooseRows(unasked));
    result.wholeHistories = rows.size() <= S_greatestWork / result.rows;
    for (const std::size_t row : rows) {
        for (const ERoad road : {ERoadHandOver, ERoadSynchronization}) {
            result.finding = ProveHandOver(row, road, result.wholeHistories);
            if (result.finding)
                return result;
        }
        ++result.handOvers;
        if (a_onHandOver)
            a_onHandOver(result.handOvers, rows.size());
    }
    return result;
}

// The candle that a row went into.
std::size_t Proof::OpenCandle(std::size_t a_row) const
{
    const auto next = std::upper_bound(m_candleRows.begin(), m_candleRows.end(), a_row);
    return static_cast<std::size_t>(next - m_candleRows.begin()) - 1;
}

std::optional<Proof::Finding> Proof::ProveLive()
{
    AggregatorWrapper wrapper(m_fresh);
    LiveCandles candles(*this, wrapper);
    m_candleRows.clear();
    for (std::size_t row = 0; row < m_ticks.GetRecordsCount(); ++row)
        if (candles.Take(row))
            m_candleRows.push_back(row);
    if (const auto difference = CandleDifference::Find(m_candles, candles.Finish()))
        return Finding{ERoadLive, 0, *difference};
    return std::nullopt;
}

std::optional<Proof::Finding> Proof::ProveHandOver(std::size_t a_row, ERoad a_road, bool a_fromFirstRow) const
{
    const std::size_t open = OpenCandle(a_row);
    AggregatorWrapper wrapper(m_fresh);
    LiveCandles candles(*this, wrapper);
    std::size_t first = open;
    if (a_road == ERoadHandOver) {
        first = a_fromFirstRow || open < S_candlesBefore ? 0 : open - S_candlesBefore;
        auto past = RowsBetween<History>(m_ticks, m_candleRows[first], a_row + 1);
        RaiseUnless(wrapper.AgregateHistory(past), "Nie można zagregować historii"_cp1250);
        Record last = past.GetLastRecord();
        RaiseUnless(wrapper.SetCurrentRecord(last), "Nie można otworzyć ostatniej świecy historii"_cp1250);
        candles.TakeOver(past);
    } else {
        auto past = RowsBetween<Synchronization>(m_ticks, m_candleRows[open], a_row + 1);
        RaiseUnless(wrapper.AgregateSynchro(past), "Nie można zagregować synchronizacji"_cp1250);
        candles.TakeOver(past);
    }

    std::size_t begun = 0;
    std::size_t row = a_row + 1;
    while (row < m_ticks.GetRecordsCount() && begun <= S_candlesAfter)
        begun += candles.Take(row++) ? 1U : 0U;
    // Where rows are left, the last candle may have only the first of its rows: it can't be compared yet.
    const bool isCut = row < m_ticks.GetRecordsCount();
    if (const auto difference = CandleDifference::Find(m_candles, candles.Finish(isCut), first, isCut))
        return Finding{a_road, a_row, *difference};
    return std::nullopt;
}

std::vector<std::size_t> Proof::ChooseRows(std::size_t a_samples) const
{
    const std::size_t count = m_ticks.GetRecordsCount();
    std::vector<std::size_t> rows;
    if (count <= a_samples) {
        for (std::size_t row = 0; row < count; ++row)
            rows.push_back(row);
        return rows;
    }
    std::mt19937_64 random(count);
    for (std::size_t sample = 0; sample < a_samples; ++sample) {
        const std::size_t begin = count / a_samples * sample;
        const std::size_t row = begin + static_cast<std::size_t>(random() % (count / a_samples));
        const std::size_t open = OpenCandle(row);
        if (sample % 3 == 0)
            rows.push_back(row);
        else if (sample % 3 == 1)
            rows.push_back(m_candleRows[open]);
        else
            rows.push_back((open + 1 < m_candleRows.size() ? m_candleRows[open + 1] : count) - 1);
    }
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    return rows;
}

std::vector<std::size_t> Proof::Thin(const std::vector<std::size_t>& a_rows) const
{
    std::size_t work = 0;
    for (const std::size_t row : a_rows) {
        const std::size_t open = OpenCandle(row);
        const std::size_t next = open + S_candlesAfter + 1;
        work += (next < m_candleRows.size() ? m_candleRows[next] : m_ticks.GetRecordsCount()) -
                m_candleRows[open];
    }
    // Each row is handed over twice, as a history and as a synchronization. An odd step keeps the three kinds of rows mixed.
    const std::size_t step = std::min(2 * work / S_greatestLiveWork + 1,
                                      std::max(a_rows.size() / S_fewestSamples, std::size_t{1})) |
                             1U;
    std::vector<std::size_t> kept;
    for (std::size_t place = 0; place < a_rows.size(); place += step)
        kept.push_back(a_rows[place]);
    return kept;
}
