// A user opens an instrument: its block is read, cut to the days on the screen and written back. Beside each stands the
// plain copying of the same bytes, since the ratio is what counts: a block costs little more than moving its memory.
// The live row is the path of every tick that comes in; beside it stands a candle updated by hand.
#include "folding/AggregatorWrapper.h"
#include "series/History.h"
#include "series/Record.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <cstring>
#include <istream>
#include <malloc.h>
#include <memory>
#include <ostream>
#include <streambuf>
#include <string>
#include <vector>

namespace {

/// A stream buffer over memory of a fixed size.
class MemoryBuffer : public std::streambuf {
public:
    explicit MemoryBuffer(std::vector<char>& a_memory) : m_memory(a_memory) { Rewind(); }
    void Rewind()
    {
        char* const begin = m_memory.data();
        setg(begin, begin, begin + m_memory.size());
        setp(begin, begin + m_memory.size());
    }

    std::size_t Written() const { return static_cast<std::size_t>(pptr() - pbase()); }

private:
    std::vector<char>& m_memory;
};

History MakeHistory(std::size_t a_rows)
{
    std::vector<NDateTime> times(a_rows);
    NDateTime time(2021, 1, 4, 9, 0, 0, 0);
    for (NDateTime& place : times) {
        place = time;
        time.ShiftSec(1);
    }
    DataSeriesSet::Columns columns;
    for (const ESeriesId series : {Price, Volume, Lop, Bid1, Ask1}) {
        columns.emplace_back(series, std::vector<double>(a_rows));
        for (std::size_t row = 0; row < a_rows; ++row)
            columns.back().second[row] = static_cast<double>(row % 1000 + series);
    }
    return {EIntervalTick, 1, std::move(times), std::move(columns)};
}

std::vector<char> BytesOf(const History& a_history)
{
    std::vector<char> bytes(1000 + a_history.GetRecordsCount() * (sizeof(NDateTime) + 5 * sizeof(double)));
    MemoryBuffer buffer(bytes);
    std::ostream stream(&buffer);
    a_history.Write(stream);
    bytes.resize(buffer.Written());
    return bytes;
}

/// Whether freed blocks of this size stay in the process (warm) or go back to the system (fresh).
void KeepFreedMemory(bool a_keep)
{
    mallopt(M_MMAP_THRESHOLD, a_keep ? 1 << 30 : 128 << 10);
    mallopt(M_TRIM_THRESHOLD, a_keep ? 2000000000 : 128 << 10);
}

constexpr std::int64_t S_blockRows = 1 << 20; // 64 MB

void BM_WriteBlock(benchmark::State& a_state)
{
    const History history = MakeHistory(static_cast<std::size_t>(a_state.range(0)));
    std::vector<char> memory = BytesOf(history);
    MemoryBuffer buffer(memory);
    for (auto _ : a_state) {
        buffer.Rewind();
        std::ostream stream(&buffer);
        history.Write(stream);
        benchmark::ClobberMemory();
    }
    a_state.SetBytesProcessed(a_state.iterations() * static_cast<std::int64_t>(memory.size()));
}
BENCHMARK(BM_WriteBlock)->Arg(S_blockRows);

void BM_PlainWrite(benchmark::State& a_state)
{
    const std::vector<char> bytes = BytesOf(MakeHistory(static_cast<std::size_t>(a_state.range(0))));
    std::vector<char> memory(bytes.size());
    MemoryBuffer buffer(memory);
    for (auto _ : a_state) {
        buffer.Rewind();
        std::ostream stream(&buffer);
        stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        benchmark::ClobberMemory();
    }
    a_state.SetBytesProcessed(a_state.iterations() * static_cast<std::int64_t>(bytes.size()));
}
BENCHMARK(BM_PlainWrite)->Arg(S_blockRows);

void BM_ReadBlock(benchmark::State& a_state)
{
    KeepFreedMemory(a_state.range(1) != 0);
    std::vector<char> bytes = BytesOf(MakeHistory(static_cast<std::size_t>(a_state.range(0))));
    MemoryBuffer buffer(bytes);
    for (auto _ : a_state) {
        buffer.Rewind();
        std::istream stream(&buffer);
        const History history(stream);
        benchmark::DoNotOptimize(history.begin());
    }
    a_state.SetBytesProcessed(a_state.iterations() * static_cast<std::int64_t>(bytes.size()));
}
BENCHMARK(BM_ReadBlock)->ArgNames({"rows", "warm"})->Args({S_blockRows, 0})->Args({S_blockRows, 1});

void BM_PlainRead(benchmark::State& a_state)
{
    KeepFreedMemory(a_state.range(1) != 0);
    std::vector<char> bytes = BytesOf(MakeHistory(static_cast<std::size_t>(a_state.range(0))));
    MemoryBuffer buffer(bytes);
    for (auto _ : a_state) {
        buffer.Rewind();
        std::istream stream(&buffer);
        const std::unique_ptr<char, decltype(&std::free)> memory(
            static_cast<char*>(std::malloc(bytes.size())), &std::free);
        stream.read(memory.get(), static_cast<std::streamsize>(bytes.size()));
        benchmark::DoNotOptimize(memory.get());
    }
    a_state.SetBytesProcessed(a_state.iterations() * static_cast<std::int64_t>(bytes.size()));
}
BENCHMARK(BM_PlainRead)->ArgNames({"rows", "warm"})->Args({S_blockRows, 0})->Args({S_blockRows, 1});

void BM_SubHistory(benchmark::State& a_state)
{
    KeepFreedMemory(false);
    const History history = MakeHistory(static_cast<std::size_t>(a_state.range(0)));
    const NDateTime first = history.TimeSeries().front();
    const NDateTime last = history.TimeSeries().back();
    for (auto _ : a_state) {
        const History part = history.GetSubHistory(first, last);
        benchmark::DoNotOptimize(part.begin());
    }
    a_state.SetItemsProcessed(a_state.iterations() * a_state.range(0));
}
BENCHMARK(BM_SubHistory)->Arg(S_blockRows)->Arg(20000000)->Unit(benchmark::kMillisecond);

void BM_PlainCopy(benchmark::State& a_state)
{
    KeepFreedMemory(false);
    const History history = MakeHistory(static_cast<std::size_t>(a_state.range(0)));
    const auto copy = [](const void* a_source, std::size_t a_size) {
        std::unique_ptr<char, decltype(&std::free)> memory(static_cast<char*>(std::malloc(a_size)),
                                                           &std::free);
        std::memcpy(memory.get(), a_source, a_size);
        return memory;
    };
    for (auto _ : a_state) {
        std::vector<std::unique_ptr<char, decltype(&std::free)>> parts;
        parts.push_back(copy(history.TimeSeries().data(), history.GetRecordsCount() * sizeof(NDateTime)));
        for (const auto& [seriesId, values] : history)
            parts.push_back(copy(values.data(), values.size() * sizeof(double)));
        benchmark::DoNotOptimize(parts.data());
    }
    a_state.SetItemsProcessed(a_state.iterations() * a_state.range(0));
}
BENCHMARK(BM_PlainCopy)->Arg(S_blockRows)->Arg(20000000)->Unit(benchmark::kMillisecond);

constexpr std::size_t S_liveRows = 4096;

std::vector<Record> MakeRows(std::size_t a_count)
{
    std::vector<Record> rows;
    Record record(std::set<ESeriesId>{Price, Volume});
    NDateTime time(2021, 1, 4, 9, 0, 0, 0);
    for (std::size_t row = 0; row < a_count; ++row) {
        record.SetTime(time);
        record.SetData(Price, 100.0 + static_cast<double>(row * 7 % 13));
        record.SetData(Volume, static_cast<double>(row % 9));
        rows.push_back(record);
        time.ShiftSec(1);
    }
    return rows;
}

void BM_LiveRow(benchmark::State& a_state)
{
    const std::vector<Record> rows = MakeRows(S_liveRows);
    AggregatorWrapper wrapper({DSProp(Price), DSProp(Volume)}, ELastRecordTime, EIntervalMinute, 1);
    Record working = rows.front();
    bool sameWindow = false;
    std::size_t row = 0;
    for (auto _ : a_state) {
        working = rows[row];
        benchmark::DoNotOptimize(wrapper.AggregateRecord(working, sameWindow));
        benchmark::DoNotOptimize(working.begin());
        row = (row + 1) % S_liveRows;
        if (row == 0)
            wrapper.ClearLastValue(); // the day begins again
    }
    a_state.SetItemsProcessed(a_state.iterations());
}
BENCHMARK(BM_LiveRow);

// What AggregateRecord has to beat: the copy of the row alone, as the live path is given it.
void BM_LiveRowCopyOnly(benchmark::State& a_state)
{
    const std::vector<Record> rows = MakeRows(S_liveRows);
    Record working = rows.front();
    std::size_t row = 0;
    for (auto _ : a_state) {
        working = rows[row];
        benchmark::DoNotOptimize(working.begin());
        row = (row + 1) % S_liveRows;
    }
    a_state.SetItemsProcessed(a_state.iterations());
}
BENCHMARK(BM_LiveRowCopyOnly);

void BM_PlainStructRow(benchmark::State& a_state)
{
    struct Tick {
        std::int64_t second;
        double price;
        double volume;
    };
    struct Candle {
        std::int64_t window = -1;
        double open = 0.0, high = 0.0, low = 0.0, close = 0.0, volume = 0.0;
    };
    std::vector<Tick> ticks;
    for (std::int64_t row = 0; row < static_cast<std::int64_t>(S_liveRows); ++row)
        ticks.push_back({row, 100.0 + static_cast<double>(row * 7 % 13), static_cast<double>(row % 9)});
    Candle candle;
    std::size_t row = 0;
    for (auto _ : a_state) {
        const Tick& tick = ticks[row];
        const std::int64_t window = tick.second / 60;
        if (window != candle.window) {
            candle = {window, tick.price, tick.price, tick.price, tick.price, tick.volume};
        } else {
            candle.high = std::max(candle.high, tick.price);
            candle.low = std::min(candle.low, tick.price);
            candle.close = tick.price;
            candle.volume += tick.volume;
        }
        benchmark::DoNotOptimize(candle);
        row = (row + 1) % S_liveRows;
    }
    a_state.SetItemsProcessed(a_state.iterations());
}
BENCHMARK(BM_PlainStructRow);

} // namespace

BENCHMARK_MAIN();
