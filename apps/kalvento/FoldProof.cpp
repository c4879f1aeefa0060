#include "kalvento/FoldProof.h"

#include "kalvento/ToolContext.h"
#include "series/Record.h"
#include "series/Synchronization.h"
#include "text_rows/IntervalNotation.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <tuple>
#include <utility>

namespace kalvento::tool {

namespace {

// Handed-over histories begin with the first row as long as so many rows at most are folded for that.
constexpr std::size_t S_greatestWork = 50'000'000;
// Beyond it, so many candles before the one that is handed over.
constexpr std::size_t S_candlesBefore = 2;
// The live rows after a hand-over go on until so many candles behind the open one have begun. A candle's state comes from
// its own rows alone, so from the second one on the run could only repeat what the row-by-row road has shown.
constexpr std::size_t S_candlesAfter = 2;
// Rows folded one by one for all hand-overs together, where the caller leaves it to us: some seconds.
constexpr std::size_t S_greatestLiveWork = 20'000'000;
constexpr std::size_t S_fewestSamples = 9;

bool SameBits(double a_left, double a_right)
{
    return std::bit_cast<std::uint64_t>(a_left) == std::bit_cast<std::uint64_t>(a_right) ||
           (std::isnan(a_left) && std::isnan(a_right));
}

// The fields beside the day number: what `==` of times forgives is a difference here.
bool SameBits(const NDateTime& a_left, const NDateTime& a_right)
{
    const auto parts = [](const NDateTime& a_time) {
        return std::tuple(std::bit_cast<std::uint64_t>(a_time.ToDouble()), a_time.ToOle().GetStatus(),
                          a_time.GetYear(), a_time.GetMonth(), a_time.GetDay(), a_time.GetAbsoluteTime(),
                          a_time.GetMilliSec(), a_time.GetDayOfYear());
    };
    return parts(a_left) == parts(a_right);
}

DataSeriesSet::Columns EmptyColumnsOf(const DataSeriesSet& a_set)
{
    DataSeriesSet::Columns columns;
    for (const auto& [series, values] : a_set)
        columns.emplace_back(series, std::vector<double>());
    return columns;
}

template<typename Set>
Set RowsBetween(const DataSeriesSet& a_ticks, std::size_t a_begin, std::size_t a_end)
{
    const auto begin = static_cast<std::ptrdiff_t>(a_begin);
    const auto end = static_cast<std::ptrdiff_t>(a_end);
    std::vector<NDateTime> times(a_ticks.TimeSeries().begin() + begin, a_ticks.TimeSeries().begin() + end);
    DataSeriesSet::Columns columns;
    for (const auto& [series, values] : a_ticks)
        columns.emplace_back(series, std::vector<double>(values.begin() + begin, values.begin() + end));
    return Set(EIntervalTick, 1, std::move(times), std::move(columns));
}

void RaiseUnless(bool a_folded, const char* a_what)
{
    if (!a_folded)
        throw ToolError(EExitFailure, std::string(a_what) + " can't be folded; the log says why");
}

} // namespace

std::optional<CandleDifference> FindDifference(const DataSeriesSet& a_expected, const DataSeriesSet& a_found,
                                               std::size_t a_first, bool a_mayEndEarly)
{
    const std::vector<NDateTime>& expectedTimes = a_expected.TimeSeries();
    const std::vector<NDateTime>& foundTimes = a_found.TimeSeries();
    CandleDifference difference;
    difference.expectedCount = expectedTimes.size();
    difference.foundCount = a_first + foundTimes.size();
    if (a_expected.GetSeries() != a_found.GetSeries()) {
        difference.kind = CandleDifference::EKindShape;
        return difference;
    }
    const std::size_t end = std::min(expectedTimes.size(), a_first + foundTimes.size());
    for (std::size_t candle = a_first; candle < end; ++candle) {
        difference.candle = candle;
        difference.expectedTime = expectedTimes[candle];
        difference.foundTime = foundTimes[candle - a_first];
        if (!SameBits(difference.expectedTime, difference.foundTime)) {
            difference.kind = CandleDifference::EKindTime;
            return difference;
        }
        auto found = a_found.begin();
        for (const auto& [series, values] : a_expected) {
            difference.series = series;
            difference.expected = values[candle];
            difference.found = (found++)->second[candle - a_first];
            if (!SameBits(difference.expected, difference.found))
                return difference;
        }
    }
    const bool isShort = difference.foundCount < difference.expectedCount;
    if (difference.foundCount == difference.expectedCount || (isShort && a_mayEndEarly))
        return std::nullopt;
    difference.kind = CandleDifference::EKindCount;
    difference.candle = end;
    difference.expectedTime = isShort ? expectedTimes[end] : foundTimes[end - a_first];
    difference.foundTime = difference.expectedTime;
    return difference;
}

/// Candles as a receiver of live rows keeps them: each row replaces the last one or begins one.
class FoldProof::LiveCandles {
public:
    LiveCandles(const FoldProof& a_proof, AggregatorWrapper& a_wrapper)
        : m_proof(a_proof),
          m_wrapper(a_wrapper),
          m_empty(a_proof.m_properties),
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
        RaiseUnless(m_wrapper.AggregateRecord(record, sameWindow), "a row");
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
        return {m_proof.m_interval.GetInterval(), m_proof.m_interval.GetMultiplicity(), std::move(m_times),
                std::move(m_columns)};
    }

private:
    const FoldProof& m_proof;
    AggregatorWrapper& m_wrapper;
    const Record m_empty;
    std::vector<NDateTime> m_times;
    DataSeriesSet::Columns m_columns;
};

FoldProof::FoldProof(const DataSeriesSet& a_ticks, const std::set<DSProp>& a_properties,
                     IntervalAndMultiplicity a_interval)
    : m_ticks(a_ticks), m_properties(a_properties), m_interval(a_interval), m_candles(EIntervalTick, 1)
{
    if (!a_ticks.GetIntervalData().IsSingleTick())
        throw ToolError(EExitUsage, "found candles of " + FormatInterval(a_ticks.GetIntervalData()) +
                                        "; expected single ticks, the only rows that come live");
    if (a_interval.GetMultiplicity() > std::numeric_limits<unsigned short>::max())
        throw ToolError(EExitUsage, "at most 65535 ticks make a candle");
}

AggregatorWrapper FoldProof::MakeWrapper() const
{
    return {m_properties, ELastRecordTime, m_interval.GetInterval(),
            static_cast<unsigned short>(m_interval.GetMultiplicity())};
}

std::optional<FoldProof::Finding> FoldProof::Run(std::size_t a_samples, bool a_mayThin,
                                                 const OnHandOver& a_onHandOver)
{
    if (m_ticks.IsEmpty())
        return std::nullopt;
    m_candles = RowsBetween<History>(m_ticks, 0, m_ticks.GetRecordsCount());
    RaiseUnless(MakeWrapper().AgregateHistory(m_candles), "the rows");
    if (auto finding = ProveLive())
        return finding;

    const std::vector<std::size_t> chosen = ChooseRows(a_samples);
    const std::vector<std::size_t> rows = a_mayThin ? Thin(chosen) : chosen;
    m_wholeHistories = rows.size() <= S_greatestWork / m_ticks.GetRecordsCount();
    for (const std::size_t row : rows) {
        for (const ERoad road : {ERoadHandOver, ERoadSynchronization})
            if (auto finding = ProveHandOver(row, road))
                return finding;
        a_onHandOver(++m_handOvers, rows.size());
    }
    return std::nullopt;
}

std::optional<FoldProof::Finding> FoldProof::ProveLive()
{
    AggregatorWrapper wrapper = MakeWrapper();
    LiveCandles candles(*this, wrapper);
    m_candleRows.clear();
    for (std::size_t row = 0; row < m_ticks.GetRecordsCount(); ++row)
        if (candles.Take(row))
            m_candleRows.push_back(row);
    if (const auto difference = FindDifference(m_candles, candles.Finish()))
        return Finding{ERoadLive, 0, *difference};
    return std::nullopt;
}

std::optional<FoldProof::Finding> FoldProof::ProveHandOver(std::size_t a_row, ERoad a_road) const
{
    const auto behind = std::upper_bound(m_candleRows.begin(), m_candleRows.end(), a_row);
    const auto open = static_cast<std::size_t>(behind - m_candleRows.begin()) - 1;
    AggregatorWrapper wrapper = MakeWrapper();
    LiveCandles candles(*this, wrapper);
    std::size_t first = open;
    if (a_road == ERoadHandOver) {
        first = m_wholeHistories || open < S_candlesBefore ? 0 : open - S_candlesBefore;
        auto past = RowsBetween<History>(m_ticks, m_candleRows[first], a_row + 1);
        RaiseUnless(wrapper.AgregateHistory(past), "a history");
        Record last = past.GetLastRecord();
        RaiseUnless(wrapper.SetCurrentRecord(last), "a history's last candle");
        candles.TakeOver(past);
    } else {
        auto past = RowsBetween<Synchronization>(m_ticks, m_candleRows[open], a_row + 1);
        RaiseUnless(wrapper.AgregateSynchro(past), "a synchronization");
        candles.TakeOver(past);
    }

    std::size_t begun = 0;
    std::size_t row = a_row + 1;
    while (row < m_ticks.GetRecordsCount() && begun <= S_candlesAfter)
        begun += candles.Take(row++) ? 1U : 0U;
    // Where rows are left, the candle begun last has one row of maybe many: it isn't comparable yet.
    const bool isCut = row < m_ticks.GetRecordsCount();
    if (const auto difference = FindDifference(m_candles, candles.Finish(isCut), first, isCut))
        return Finding{a_road, a_row, *difference};
    return std::nullopt;
}

std::vector<std::size_t> FoldProof::ChooseRows(std::size_t a_samples) const
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
        const auto behind = std::upper_bound(m_candleRows.begin(), m_candleRows.end(), row);
        if (sample % 3 == 0)
            rows.push_back(row);
        else if (sample % 3 == 1)
            rows.push_back(*std::prev(behind));
        else
            rows.push_back((behind == m_candleRows.end() ? count : *behind) - 1);
    }
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    return rows;
}

std::vector<std::size_t> FoldProof::Thin(const std::vector<std::size_t>& a_rows) const
{
    std::size_t work = 0;
    for (const std::size_t row : a_rows) {
        const auto open = static_cast<std::size_t>(
            std::upper_bound(m_candleRows.begin(), m_candleRows.end(), row) - m_candleRows.begin() - 1);
        const std::size_t behind = open + S_candlesAfter + 1;
        work += (behind < m_candleRows.size() ? m_candleRows[behind] : m_ticks.GetRecordsCount()) -
                m_candleRows[open];
    }
    // Each goes twice, as a history and as a synchronization. An odd step keeps the three kinds of rows mixed.
    const std::size_t step = std::min(2 * work / S_greatestLiveWork + 1,
                                      std::max(a_rows.size() / S_fewestSamples, std::size_t{1})) |
                             1U;
    std::vector<std::size_t> kept;
    for (std::size_t place = 0; place < a_rows.size(); place += step)
        kept.push_back(a_rows[place]);
    return kept;
}

} // namespace kalvento::tool
