// Folding a history is what a user waits for when a chart opens or its interval changes. The reference folds one row at
// a time, with scratch doubles, field pointers and a virtual window call a row; the copy is a memcpy of the 40 bytes a
// row (time, price, volume) that folding has to read.
#include "aggregation/Aggregator.h"
#include "bench/Pair.h"
#include "folding/AggregatorWrapper.h"
#include "series/DataSeriesSet.h"
#include "series/History.h"
#include "support/PlainAggregator.h"

#include <cstring>
#include <memory>
#include <random>

namespace {

struct Market {
    std::size_t rows;
    std::size_t sessions;
    std::size_t candleEvery; // rows share a time in groups of so many; 0: spread over the session
    bool lateRows;           // a quarter of the rows bears a time some seconds back
    bool fractions;          // volumes with a fraction
    bool candles;            // one row a minute with open, high and low
};

constexpr Market S_busy = {20'000'000, 60, 0, false, false, false};
constexpr Market S_thin = {20'000'000, 6'000, 0, false, false, false};
constexpr Market S_ownCandles = {5'000'000, 200, 1, false, false, false};
constexpr Market S_late = {5'000'000, 60, 0, true, false, false};
constexpr Market S_fractions = {20'000'000, 60, 0, false, true, false};
constexpr Market S_inCache = {10'000, 1, 0, false, false, false};
constexpr Market S_minutes = {3'000'000, 6'250, 0, false, false, true};

/// Columns: open, high, low, price, volume.
struct Rows {
    std::vector<NDateTime> times;
    std::vector<double> columns[5];

    std::vector<double*> Pointers()
    {
        std::vector<double*> pointers;
        for (auto& column : columns)
            pointers.push_back(column.data());
        return pointers;
    }
};

Rows MakeRows(const Market& a_market)
{
    constexpr double sessionSeconds = 28'800.0;
    std::mt19937_64 random(1);
    Rows rows;
    rows.times.reserve(a_market.rows);
    for (auto& column : rows.columns)
        column.resize(a_market.rows);
    const std::size_t perSession = (a_market.rows + a_market.sessions - 1) / a_market.sessions;
    NDateTime day(2003, 1, 1);
    double price = 100.0;
    NDateTime before;
    for (std::size_t row = 0; row < a_market.rows; ++row) {
        const std::size_t place = row % perSession;
        if (place == 0)
            day.ShiftDays(1);
        auto second = static_cast<unsigned int>(static_cast<double>(place) / static_cast<double>(perSession) *
                                                sessionSeconds);
        if (a_market.candleEvery != 0)
            second = static_cast<unsigned int>(place / a_market.candleEvery);
        NDateTime time = day;
        time.SetTime(9 + second / 3600, second / 60 % 60, second % 60);
        if (!(before < time)) {
            time = before;
            time.ShiftMilliSec();
        }
        before = time;
        if (a_market.lateRows && random() % 4 == 0)
            time.ShiftSec(-5);
        rows.times.push_back(time);
        price += static_cast<double>(random() % 3) * 0.01 - 0.01;
        rows.columns[3][row] = price;
        rows.columns[4][row] = a_market.fractions ? static_cast<double>(random() % 1000) / 7.0
                                                  : static_cast<double>(random() % 1000);
        if (a_market.candles) {
            rows.columns[0][row] = price - 0.01;
            rows.columns[1][row] = price + 0.02;
            rows.columns[2][row] = price - 0.03;
        }
    }
    return rows;
}

/// One market at a time is kept: two of the large ones fill the memory of a small machine.
Rows& RowsOf(const Market& a_market)
{
    static std::unique_ptr<Rows> kept;
    static const Market* keptMarket = nullptr;
    if (keptMarket != &a_market) {
        kept.reset();
        kept = std::make_unique<Rows>(MakeRows(a_market));
        keptMarket = &a_market;
    }
    return *kept;
}

/// Puts the front of a folded history back; the rest was never written.
void Restore(Rows& a_rows, const Rows& a_source, std::size_t a_written)
{
    const auto count = static_cast<std::ptrdiff_t>(a_written);
    std::copy_n(a_source.times.begin(), count, a_rows.times.begin());
    for (std::size_t column = 0; column < 5; ++column)
        std::copy_n(a_source.columns[column].begin(), count, a_rows.columns[column].begin());
}

const std::vector<EAggrType> S_types = {EAggrTypeOhlc, EAggrTypeSum};

struct Folder {
    Folder(const Market& a_market, EInterval a_interval, unsigned short a_multiplicity)
        : source(RowsOf(a_market)),
          rows(source),
          columns(rows.Pointers()),
          count(static_cast<unsigned int>(a_market.rows)),
          candles(a_market.candles),
          engine(a_interval, a_multiplicity, ELastRecordTime, S_types),
          reference(a_interval, a_multiplicity, ELastRecordTime, S_types)
    {}

    void Prepare()
    {
        Restore(rows, source, made);
        engine.ClearLastValue();
        reference.Reset();
    }
    void Fold()
    {
        made =
            engine.Aggregate(candles ? EIntervalMinute : EIntervalTick, 1, count, rows.times.data(), columns);
    }
    void FoldPlainly() { made = reference.Aggregate(candles, count, rows.times.data(), columns); }
    // The reference stamps the times of all rows that it refuses or folds.
    void PrepareAfterReference()
    {
        rows.times = source.times;
        Prepare();
    }

    /// A fast wrong answer is no answer.
    bool Agree()
    {
        Fold();
        Rows folded = rows;
        const unsigned int foldedCount = made;
        Prepare();
        FoldPlainly();
        bool same = made == foldedCount &&
                    std::memcmp(rows.times.data(), folded.times.data(), made * sizeof(NDateTime)) == 0;
        for (std::size_t column = 0; column < 5; ++column)
            same = same && std::memcmp(rows.columns[column].data(), folded.columns[column].data(),
                                       made * sizeof(double)) == 0;
        PrepareAfterReference();
        return same;
    }

    const Rows& source;
    Rows rows;
    std::vector<double*> columns;
    unsigned int count;
    bool candles;
    Aggregator engine;
    plain::Aggregator reference;
    unsigned int made = 0;
};

void BM_AgainstReference(benchmark::State& a_state, const Market& a_market, EInterval a_interval,
                         unsigned short a_multiplicity, double a_bar)
{
    Folder folder(a_market, a_interval, a_multiplicity);
    if (!folder.Agree())
        a_state.SkipWithError("the engine and the reference differ");
    pair::Run(
        a_state, pair::Wanted::SubjectFaster, a_bar, [&] { folder.PrepareAfterReference(); },
        [&] { folder.Fold(); }, [&] { folder.Prepare(); }, [&] { folder.FoldPlainly(); });
    a_state.SetItemsProcessed(a_state.iterations() * folder.count);
}

/// The way that a store of series goes: DataSeriesSet::AgregateData on a set that has its candle columns.
void BM_SetAgainstCopy(benchmark::State& a_state, const Market& a_market, unsigned short a_minutes,
                       double a_bar)
{
    const Rows& source = RowsOf(a_market);
    Aggregator aggregator(EIntervalMinute, a_minutes, ELastRecordTime, S_types);
    std::unique_ptr<DataSeriesSet> set;
    std::vector<double*> columns(5);
    std::vector<char> copy(source.times.size() * 40);
    const auto prepare = [&] {
        DataSeriesSet::Columns setColumns;
        constexpr ESeriesId ids[] = {Price, Volume, IntervalOpen, IntervalMax, IntervalMin};
        constexpr std::size_t from[] = {3, 4, 0, 1, 2};
        for (std::size_t column = 0; column < 5; ++column)
            setColumns.emplace_back(ids[column], source.columns[from[column]]);
        set.reset();
        set = std::make_unique<DataSeriesSet>(EIntervalTick, 1, std::vector<NDateTime>(source.times),
                                              std::move(setColumns));
        aggregator.ClearLastValue();
    };
    pair::Run(
        a_state, pair::Wanted::SubjectTime, a_bar, prepare,
        [&] { set->AgregateData(Price, aggregator, columns); }, [] {},
        [&] {
            char* place = copy.data();
            const auto take = [&](const void* a_from, std::size_t a_bytes) {
                std::memcpy(place, a_from, a_bytes);
                place += a_bytes;
            };
            take(source.times.data(), source.times.size() * sizeof(NDateTime));
            take(source.columns[3].data(), source.times.size() * sizeof(double));
            take(source.columns[4].data(), source.times.size() * sizeof(double));
            benchmark::DoNotOptimize(copy.data());
        });
    a_state.SetItemsProcessed(a_state.iterations() * static_cast<std::int64_t>(source.times.size()));
}

/// What a consumer calls, on a history of single ticks without candle columns, over the bare fold of the same rows.
void BM_WrapperAgainstFold(benchmark::State& a_state, const Market& a_market, double a_bar)
{
    Folder folder(a_market, EIntervalMinute, 1);
    const std::set<DSProp> series = {DSProp(Price), DSProp(Volume)};
    AggregatorWrapper wrapper(series, ELastRecordTime, EIntervalMinute, 1);
    std::unique_ptr<History> history;
    bool folded = true;
    const auto prepare = [&] {
        history.reset();
        history = std::make_unique<History>(
            EIntervalTick, 1, std::vector<NDateTime>(folder.source.times),
            DataSeriesSet::Columns{{Price, folder.source.columns[3]}, {Volume, folder.source.columns[4]}});
        wrapper.ClearLastValue();
    };
    pair::Run(
        a_state, pair::Wanted::SubjectTime, a_bar, prepare,
        [&] { folded = wrapper.AgregateHistory(*history) && folded; }, [&] { folder.Prepare(); },
        [&] { folder.Fold(); });
    if (!folded)
        a_state.SkipWithError("the wrapper refused the history");
    a_state.SetItemsProcessed(a_state.iterations() * folder.count);
}

/// A candle as one would write it by hand for this one case: the same rows and the same rules for late rows and
/// windows.
struct HandWrittenCandle {
    void Update(const NDateTime& a_time, double a_price, double a_volume)
    {
        if (a_time < last)
            return;
        last = a_time;
        const auto minute = static_cast<int>(a_time.GetHour() * 60 + a_time.GetMinute());
        const auto day = static_cast<int>(a_time.GetDayOfYear());
        if (minute != openMinute || day != openDay) {
            openMinute = minute;
            openDay = day;
            open = high = low = close = a_price;
            volume = a_volume;
            return;
        }
        high = a_price > high ? a_price : high;
        low = a_price < low ? a_price : low;
        close = a_price;
        volume += a_volume;
    }

    NDateTime last;
    int openMinute = -1;
    int openDay = -1;
    double open = 0.0, high = 0.0, low = 0.0, close = 0.0, volume = 0.0;
};

constexpr Market S_day = {28'800, 1, 0, false, false, false};

/// A live row into the engine, as the last step before a consumer sees it.
void BM_LiveRowAgainstHandWritten(benchmark::State& a_state, bool a_wrapper, double a_bar)
{
    const Rows& source = RowsOf(S_day);
    const std::set<DSProp> series = {DSProp(Price), DSProp(Volume)};
    Aggregator aggregator(EIntervalMinute, 1, ELastRecordTime, S_types);
    AggregatorWrapper wrapper(series, ELastRecordTime, EIntervalMinute, 1);
    HandWrittenCandle candle;
    double row[5] = {};
    std::vector<double*> fields = {row, row + 1, row + 2, row + 3, row + 4};
    const Record tick(series);
    std::vector<Record> records;
    for (std::size_t place = 0; a_wrapper && place < source.times.size(); ++place) {
        records.push_back(tick);
        records.back().SetTime(source.times[place]);
        records.back().SetData(Price, source.columns[3][place]);
        records.back().SetData(Volume, source.columns[4][place]);
    }
    std::vector<Record> work;
    const auto fold = [&] {
        for (std::size_t place = 0; place < source.times.size(); ++place) {
            NDateTime time = source.times[place];
            row[3] = source.columns[3][place];
            row[4] = source.columns[4][place];
            benchmark::DoNotOptimize(aggregator.SumWithWindow(&time, &fields, false));
            benchmark::DoNotOptimize(row);
        }
    };
    const auto wrap = [&] {
        bool sameWindow = false;
        for (Record& live : work) {
            benchmark::DoNotOptimize(wrapper.AggregateRecord(live, sameWindow));
            benchmark::DoNotOptimize(sameWindow);
        }
    };
    const auto prepareSubject = [&] {
        aggregator.SetCurrentRecord(nullptr, nullptr);
        wrapper.ClearLastValue();
        work = records;
    };
    const auto byHand = [&] {
        for (std::size_t place = 0; place < source.times.size(); ++place) {
            candle.Update(source.times[place], source.columns[3][place], source.columns[4][place]);
            benchmark::DoNotOptimize(candle);
        }
    };
    const auto prepareOther = [&] { candle = {}; };
    if (a_wrapper)
        pair::Run(a_state, pair::Wanted::SubjectTime, a_bar, prepareSubject, wrap, prepareOther, byHand);
    else
        pair::Run(a_state, pair::Wanted::SubjectTime, a_bar, prepareSubject, fold, prepareOther, byHand);
    a_state.SetItemsProcessed(a_state.iterations() * static_cast<std::int64_t>(source.times.size()));
}

#define FOLD_BENCHMARK(name, function, rounds, ...)                                                          \
    BENCHMARK_CAPTURE(function, name, __VA_ARGS__)                                                           \
        ->UseManualTime()                                                                                    \
        ->Iterations(rounds)                                                                                 \
        ->Unit(benchmark::kMillisecond)

FOLD_BENCHMARK(busy_1min, BM_AgainstReference, 7, S_busy, EIntervalMinute, 1, 5.0);
FOLD_BENCHMARK(busy_5min, BM_AgainstReference, 7, S_busy, EIntervalMinute, 5, 5.0);
FOLD_BENCHMARK(busy_1min, BM_SetAgainstCopy, 9, S_busy, 1, 0.70);
FOLD_BENCHMARK(busy_5min, BM_SetAgainstCopy, 9, S_busy, 5, 0.70);
FOLD_BENCHMARK(busy_1min, BM_WrapperAgainstFold, 9, S_busy, 1.6);
FOLD_BENCHMARK(thin_1min, BM_AgainstReference, 7, S_thin, EIntervalMinute, 1, 2.5);
FOLD_BENCHMARK(fractional_volume_1min, BM_AgainstReference, 7, S_fractions, EIntervalMinute, 1, 4.0);
FOLD_BENCHMARK(own_candle_each_1s, BM_AgainstReference, 9, S_ownCandles, EIntervalSecond, 1, 1.0);
FOLD_BENCHMARK(own_candle_each_tick, BM_AgainstReference, 9, S_ownCandles, EIntervalTick, 1, 1.0);
FOLD_BENCHMARK(quarter_late_1min, BM_AgainstReference, 9, S_late, EIntervalMinute, 1, 1.0);
FOLD_BENCHMARK(in_cache_1min, BM_AgainstReference, 2001, S_inCache, EIntervalMinute, 1, 4.0);
FOLD_BENCHMARK(minutes_to_5min, BM_AgainstReference, 15, S_minutes, EIntervalMinute, 5, 3.0);
FOLD_BENCHMARK(minutes_to_1h, BM_AgainstReference, 15, S_minutes, EIntervalHour, 1, 3.0);
FOLD_BENCHMARK(minutes_to_1d, BM_AgainstReference, 15, S_minutes, EIntervalDay, 1, 3.0);

FOLD_BENCHMARK(SumWithWindow, BM_LiveRowAgainstHandWritten, 101, false, 2.5);
FOLD_BENCHMARK(AggregateRecord, BM_LiveRowAgainstHandWritten, 101, true, 6.0);

} // namespace

BENCHMARK_MAIN();
