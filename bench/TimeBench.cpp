#include "platform/TimeZone.h"
#include "time/DateTimeTools.h"
#include "time/NDateTime.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr std::size_t S_rows = 1 << 14;

struct Parts {
    unsigned long year, month, day, hour, minute, second;
};

std::vector<Parts> MakeParts()
{
    std::mt19937 random(1);
    std::vector<Parts> parts(S_rows);
    for (auto& part : parts)
        part = {1990 + random() % 40, 1 + random() % 12, 1 + random() % 28,
                8 + random() % 10,    random() % 60,     random() % 60};
    return parts;
}

std::vector<NDateTime> MakeTimes()
{
    std::vector<NDateTime> times;
    for (const auto& part : MakeParts())
        times.emplace_back(part.year, part.month, part.day, part.hour, part.minute, part.second, 1UL);
    return times;
}

void Check(bool a_holds)
{
    if (!a_holds)
        std::abort();
}

// Every row of an imported file becomes a time in this way.
void BM_ConstructFromParts(benchmark::State& a_state)
{
    const auto parts = MakeParts();
    for (auto _ : a_state) {
        for (const auto& part : parts) {
            NDateTime time(part.year, part.month, part.day, part.hour, part.minute, part.second, 0);
            benchmark::DoNotOptimize(time);
        }
    }
    a_state.SetItemsProcessed(a_state.iterations() * static_cast<std::int64_t>(parts.size()));
}
BENCHMARK(BM_ConstructFromParts);

// Every time read back from saved settings and from the day numbers of other programs.
void BM_FromDouble(benchmark::State& a_state)
{
    std::vector<double> numbers;
    for (const auto& time : MakeTimes())
        numbers.push_back(time.ToDouble());
    Check(NDateTime::FromDouble(44256.5).GetHour() == 12);
    for (auto _ : a_state) {
        for (const double number : numbers) {
            NDateTime time = NDateTime::FromDouble(number);
            benchmark::DoNotOptimize(time);
        }
    }
    a_state.SetItemsProcessed(a_state.iterations() * static_cast<std::int64_t>(numbers.size()));
}
BENCHMARK(BM_FromDouble);

// The order of records, as sorting and searching a series see it.
void BM_Compare(benchmark::State& a_state)
{
    const auto times = MakeTimes();
    for (auto _ : a_state) {
        std::size_t less = 0;
        for (std::size_t row = 1; row < times.size(); ++row)
            less += times[row - 1] < times[row] ? 1U : 0U;
        benchmark::DoNotOptimize(less);
    }
    a_state.SetItemsProcessed(a_state.iterations() * static_cast<std::int64_t>(times.size()));
}
BENCHMARK(BM_Compare);

void BM_ParseDateTime(benchmark::State& a_state)
{
    std::vector<std::string> texts;
    for (const auto& part : MakeParts())
        texts.push_back(DateTimeTools::FormatDateShort(static_cast<unsigned>(part.year),
                                                       static_cast<unsigned>(part.month),
                                                       static_cast<unsigned>(part.day)) +
                        "093015");
    Check(DateTimeTools::ParseDateTime("20210301", "093015")->ToDouble() ==
          NDateTime(2021, 3, 1, 9, 30, 15, 0).ToDouble());
    for (auto _ : a_state) {
        for (const std::string_view text : texts) {
            auto time = DateTimeTools::ParseDateTime(text.substr(0, 8), text.substr(8));
            benchmark::DoNotOptimize(time);
        }
    }
    a_state.SetItemsProcessed(a_state.iterations() * static_cast<std::int64_t>(texts.size()));
}
BENCHMARK(BM_ParseDateTime);

void BM_ParseDateIso8601(benchmark::State& a_state)
{
    const std::string text = "2021-03-01";
    for (auto _ : a_state) {
        auto time = DateTimeTools::ParseDateIso8601(text);
        benchmark::DoNotOptimize(time);
    }
    a_state.SetItemsProcessed(a_state.iterations());
}
BENCHMARK(BM_ParseDateIso8601);

// A session of ticks from another zone: rows in order, so the remembered stretch answers nearly all of them.
void BM_ZoneToUtc(benchmark::State& a_state)
{
    auto zone = TimeZone::Find("America/New_York");
    Check(zone && zone->ToUtc(1625115600) == 1625130000);
    std::int64_t local = 1577836800;
    for (auto _ : a_state) {
        benchmark::DoNotOptimize(zone->ToUtc(local));
        local += 7;
    }
    a_state.SetItemsProcessed(a_state.iterations());
}
BENCHMARK(BM_ZoneToUtc);

} // namespace

BENCHMARK_MAIN();
