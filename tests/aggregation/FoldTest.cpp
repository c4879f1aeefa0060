// The engine's fast roads against the plain form, bit for bit, on histories that no feed should send but some do.

#include "aggregation/Aggregator.h"
#include "support/PlainAggregator.h"
#include "support/Testing.h"
#include "time/KalventoException.h"

namespace {

using Words = kalvento::internal::NDateTimeWords;
using Random = std::mt19937_64;

struct Rows {
    std::vector<NDateTime> times;
    std::vector<std::vector<double>> columns; // open, high, low, close, others

    /// To the values from that row on.
    std::vector<double*> Pointers(std::size_t a_row = 0)
    {
        std::vector<double*> pointers;
        for (auto& column : columns)
            pointers.push_back(column.data() + a_row);
        return pointers;
    }
    std::uint32_t Count() const { return static_cast<std::uint32_t>(times.size()); }
};

std::uint64_t Below(Random& a_random, std::uint64_t a_limit)
{
    return a_random() % a_limit;
}
bool OneIn(Random& a_random, std::uint64_t a_chance)
{
    return Below(a_random, a_chance) == 0;
}

NDateTime At(double a_dayNumber, unsigned long a_counter)
{
    NDateTime time = NDateTime::FromDouble(a_dayNumber);
    return {time.GetYear(),   time.GetMonth(),  time.GetDay(), time.GetHour(),
            time.GetMinute(), time.GetSecond(), a_counter};
}

/// Any bits a stored block could bring: fields that contradict the day number, hours that no day has.
NDateTime HostileTime(Random& a_random, const NDateTime& a_before)
{
    const double numbers[] = {a_before.ToDouble(),
                              -a_before.ToDouble(),
                              a_before.ToDouble() - 1.0 / 172800.0,
                              a_before.ToDouble() + 1.0 / 172800.0,
                              0.0,
                              -0.0,
                              -1.25,
                              1e300,
                              std::numeric_limits<double>::quiet_NaN(),
                              std::numeric_limits<double>::infinity(),
                              -std::numeric_limits<double>::infinity()};
    const auto status = static_cast<std::int32_t>(OneIn(a_random, 3) ? Below(a_random, 4) : 0);
    const auto calendar =
        static_cast<std::uint32_t>(OneIn(a_random, 2) ? a_random() : Words::Calendar(a_before));
    const auto clock = static_cast<std::uint32_t>(OneIn(a_random, 2) ? a_random() : Words::Clock(a_before));
    if (OneIn(a_random, 5))
        return {}; // as damaged stores have them
    return Words::Make(numbers[Below(a_random, std::size(numbers))], status, calendar, clock);
}

/// A history of one of several kinds, from a quiet market to garbage.
std::vector<NDateTime> RandomTimes(Random& a_random, std::size_t a_count)
{
    static constexpr std::array<double, 6> steps = {0.2, 1, 7, 55, 4000, 100000}; // mean seconds between rows
    const double step = steps[Below(a_random, steps.size())] / 86400.0;
    const bool counters = OneIn(a_random, 2);
    const bool late = OneIn(a_random, 3);
    const bool hostile = OneIn(a_random, 4);
    const bool negative = OneIn(a_random, 8);
    double now = negative ? -20.0 : 36500.0 + static_cast<double>(Below(a_random, 20000));
    unsigned long counter = 0;
    std::vector<NDateTime> times;
    for (std::size_t row = 0; row < a_count; ++row) {
        if (hostile && OneIn(a_random, 9)) {
            times.push_back(HostileTime(a_random, times.empty() ? NDateTime() : times.back()));
            continue;
        }
        if (!OneIn(a_random, 3))
            now += step * static_cast<double>(Below(a_random, 1000)) / 500.0;
        if (OneIn(a_random, 60))
            now += 365.0 + static_cast<double>(Below(a_random, 2)); // the same day of year a year later
        counter = !counters ? 0 : OneIn(a_random, 40) ? 65530 : OneIn(a_random, 4) ? 0 : counter + 1;
        const double shown =
            late && OneIn(a_random, 4) ? now - step * static_cast<double>(Below(a_random, 50)) : now;
        times.push_back(At(shown, counter));
    }
    return times;
}

double RandomValue(Random& a_random, unsigned int a_kind)
{
    static constexpr double specials[] = {0.0,
                                          -0.0,
                                          std::numeric_limits<double>::quiet_NaN(),
                                          std::numeric_limits<double>::infinity(),
                                          -std::numeric_limits<double>::infinity(),
                                          1099511627776.0,
                                          9007199254740993.0,
                                          -4503599627370497.0,
                                          5e-324,
                                          1e308};
    switch (a_kind) {
    case 0:
        return static_cast<double>(Below(a_random, 5000));
    case 1:
        return 100.0 + static_cast<double>(Below(a_random, 1000)) / 100.0;
    case 2:
        return static_cast<double>(Below(a_random, 5)) - 4.0;
    case 3:
        return OneIn(a_random, 2) ? -0.0 : 0.0;
    case 4:
        return OneIn(a_random, 6) ? specials[Below(a_random, std::size(specials))]
                                  : static_cast<double>(Below(a_random, 100)) - 50.0;
    default:
        return OneIn(a_random, 100) ? static_cast<double>(Below(a_random, 7)) / 7.0 : 1e9;
    }
}

Rows RandomRows(Random& a_random, std::size_t a_count, std::size_t a_fields)
{
    Rows rows;
    rows.times = RandomTimes(a_random, a_count);
    for (std::size_t field = 0; field < a_fields + 3; ++field) {
        const auto kind = static_cast<unsigned int>(Below(a_random, 6));
        std::vector<double> column(a_count);
        for (double& value : column)
            value = RandomValue(a_random, kind);
        rows.columns.push_back(std::move(column));
    }
    return rows;
}

/// Equal bits; which of two NaN operands an addition hands on is not said anywhere, so any NaN equals any NaN.
::testing::AssertionResult SameBits(double a_left, double a_right)
{
    if (std::bit_cast<std::uint64_t>(a_left) == std::bit_cast<std::uint64_t>(a_right) ||
        (std::isnan(a_left) && std::isnan(a_right)))
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << a_left << " and " << a_right;
}

void ExpectSameRows(const Rows& a_left, const Rows& a_right, std::size_t a_count)
{
    // Every bit is meant, the counter's and the status's too. NOLINTNEXTLINE(bugprone-suspicious-memory-comparison)
    ASSERT_EQ(std::memcmp(a_left.times.data(), a_right.times.data(), a_count * sizeof(NDateTime)), 0);
    for (std::size_t field = 0; field < a_left.columns.size(); ++field) {
        for (std::size_t row = 0; row < a_count; ++row)
            ASSERT_TRUE(SameBits(a_left.columns[field][row], a_right.columns[field][row]))
                << "field " << field << " row " << row;
    }
}

struct Shape {
    EInterval interval;
    unsigned short multiplicity;
    EAggrTimeResult timeResult;
    bool useOhl;
    std::vector<EAggrType> types;
};

Shape RandomShape(Random& a_random)
{
    static constexpr unsigned short limits[] = {0, 500, 59, 59, 24, 365, 51, 11, 500};
    Shape shape{};
    shape.interval = static_cast<EInterval>(1 + Below(a_random, 8));
    shape.multiplicity =
        static_cast<unsigned short>(OneIn(a_random, 3) ? 1 : 1 + Below(a_random, limits[shape.interval]));
    do {
        shape.timeResult = static_cast<EAggrTimeResult>(Below(a_random, 5));
    } while ((shape.interval == EIntervalTick && shape.timeResult >= EWindowBegin) ||
             (shape.interval >= EIntervalDay && shape.timeResult == EMetaStockWindowEnd));
    shape.useOhl = OneIn(a_random, 2) && (shape.interval != EIntervalTick || shape.multiplicity > 1);
    shape.types.push_back(static_cast<EAggrType>(Below(a_random, 3)));
    for (std::uint64_t others = Below(a_random, 4); others > 0; --others)
        shape.types.push_back(static_cast<EAggrType>(3 + Below(a_random, 2)));
    return shape;
}

std::string Describe(const Shape& a_shape, unsigned int a_seed)
{
    return "seed " + std::to_string(a_seed) + " interval " + std::to_string(a_shape.interval) + " x " +
           std::to_string(a_shape.multiplicity) + " time result " + std::to_string(a_shape.timeResult) +
           " ohl " + std::to_string(a_shape.useOhl) + " main type " + std::to_string(a_shape.types.front());
}

/// One row as it comes live.
bool Push(Aggregator& a_aggregator, Rows& a_rows, std::size_t a_row, bool a_useOhl)
{
    std::vector<double*> fields = a_rows.Pointers(a_row);
    return a_aggregator.SumWithWindow(&a_rows.times[a_row], &fields, a_useOhl);
}

} // namespace

TEST(FoldTest, WholeHistoriesHaveTheBitsOfThePlainForm)
{
    for (unsigned int seed = 0; seed < 4000; ++seed) {
        Random random(seed);
        const Shape shape = RandomShape(random);
        SCOPED_TRACE(Describe(shape, seed));
        const std::size_t count = 1 + Below(random, OneIn(random, 20) ? 6000 : 300);
        Rows fast = RandomRows(random, count, shape.types.size());
        Rows slow = fast;

        Aggregator aggregator(shape.interval, shape.multiplicity, shape.timeResult, shape.types);
        plain::Aggregator plainOne(shape.interval, shape.multiplicity, shape.timeResult, shape.types);
        // Ticks are the input of a tick window of any size; one of candles needs a multiplicity above 1.
        const EInterval input = EIntervalTick;
        const unsigned short inputMultiplicity = shape.useOhl ? 2 : 1;
        const unsigned int rows = static_cast<unsigned int>(count);
        const unsigned int candles =
            aggregator.Aggregate(input, inputMultiplicity, rows, fast.times.data(), fast.Pointers());
        ASSERT_EQ(candles, plainOne.Aggregate(shape.useOhl, rows, slow.times.data(), slow.Pointers()));
        ExpectSameRows(fast, slow, candles);
        if (HasFatalFailure())
            return;
    }
}

TEST(FoldTest, LiveRowsHaveTheBitsOfThePlainForm)
{
    for (unsigned int seed = 0; seed < 600; ++seed) {
        Random random(seed + 1000000);
        const Shape shape = RandomShape(random);
        SCOPED_TRACE(Describe(shape, seed));
        Rows rows = RandomRows(random, 1 + Below(random, 200), shape.types.size());
        Rows plainRows = rows;
        Aggregator aggregator(shape.interval, shape.multiplicity, shape.timeResult, shape.types);
        plain::Aggregator plainOne(shape.interval, shape.multiplicity, shape.timeResult, shape.types);
        for (std::size_t row = 0; row < rows.times.size(); ++row) {
            ASSERT_EQ(Push(aggregator, rows, row, shape.useOhl),
                      plainOne.SumWithWindow(plainRows.times[row], plainRows.Pointers(row), shape.useOhl));
        }
        ExpectSameRows(rows, plainRows, rows.times.size());
        if (HasFatalFailure())
            return;
    }
}

TEST(FoldTest, WhatAFoldLeavesBehindContinuesLikeLiveRows)
{
    // After a fold and ClearLastValue the window is still open: the next row must meet just the window that row-by-row
    // folding would have left.
    for (unsigned int seed = 0; seed < 600; ++seed) {
        Random random(seed + 2000000);
        const Shape shape = RandomShape(random);
        SCOPED_TRACE(Describe(shape, seed));
        Rows rows = RandomRows(random, 2 + Below(random, 200), shape.types.size());
        const std::size_t folded = 1 + Below(random, rows.times.size() - 1);
        Rows live = rows;

        Aggregator whole(shape.interval, shape.multiplicity, shape.timeResult, shape.types);
        Aggregator single = whole;
        whole.Aggregate(EIntervalTick, shape.useOhl ? 2 : 1, static_cast<unsigned int>(folded),
                        rows.times.data(), rows.Pointers());
        for (std::size_t row = 0; row < folded; ++row)
            Push(single, live, row, shape.useOhl);
        whole.ClearLastValue();
        single.ClearLastValue();
        for (std::size_t row = folded; row < rows.times.size(); ++row)
            ASSERT_EQ(Push(whole, rows, row, shape.useOhl), Push(single, live, row, shape.useOhl))
                << "row " << row;
        for (std::size_t row = folded; row < rows.times.size(); ++row) {
            // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison): as above
            ASSERT_EQ(std::memcmp(&rows.times[row], &live.times[row], sizeof(NDateTime)), 0);
            for (std::size_t field = 0; field < rows.columns.size(); ++field)
                ASSERT_TRUE(SameBits(rows.columns[field][row], live.columns[field][row]));
        }
    }
}

TEST(FoldTest, OneHistoryAfterAnotherForgetsTheFirst)
{
    for (unsigned int seed = 0; seed < 300; ++seed) {
        Random random(seed + 3000000);
        const Shape shape = RandomShape(random);
        SCOPED_TRACE(Describe(shape, seed));
        Rows first = RandomRows(random, 1 + Below(random, 100), shape.types.size());
        Rows second = RandomRows(random, 1 + Below(random, 100), shape.types.size());
        Rows fresh = second;
        Aggregator used(shape.interval, shape.multiplicity, shape.timeResult, shape.types);
        Aggregator unused = used;
        const unsigned short input = shape.useOhl ? 2 : 1;
        used.Aggregate(EIntervalTick, input, static_cast<unsigned int>(first.times.size()),
                       first.times.data(), first.Pointers());
        used.SetCurrentRecord(nullptr, nullptr);
        const auto count = static_cast<unsigned int>(second.times.size());
        const unsigned int candles =
            used.Aggregate(EIntervalTick, input, count, second.times.data(), second.Pointers());
        ASSERT_EQ(candles,
                  unused.Aggregate(EIntervalTick, input, count, fresh.times.data(), fresh.Pointers()));
        // A week window keeps the tables of its last year, which nothing in a result may show.
        ExpectSameRows(second, fresh, candles);
        if (HasFatalFailure())
            return;
    }
}
