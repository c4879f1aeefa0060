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
    const double day = a_before.ToDouble();
    const double half = 1.0 / 172800.0; // of a second
    const double numbers[] = {day,   -day,  day - half,   day + half, 0.0,      -0.0,
                              -1.25, 1e300, std::nan(""), HUGE_VAL,   -HUGE_VAL};
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
    static const double specials[] = {0.0,
                                      -0.0,
                                      std::nan(""),
                                      HUGE_VAL,
                                      -HUGE_VAL,
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

void ExpectSameRows(const Rows& a_left, const Rows& a_right, std::size_t a_first, std::size_t a_last)
{
    // Every bit is meant, the counter's and the status's too. NOLINTNEXTLINE(bugprone-suspicious-memory-comparison)
    ASSERT_EQ(
        std::memcmp(&a_left.times[a_first], &a_right.times[a_first], (a_last - a_first) * sizeof(NDateTime)),
        0);
    for (std::size_t field = 0; field < a_left.columns.size(); ++field) {
        for (std::size_t row = a_first; row < a_last; ++row)
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
        shape.types.push_back(static_cast<EAggrType>(3 + Below(a_random, OneIn(a_random, 12) ? 4 : 2)));
    return shape;
}

std::string Describe(const Shape& a_shape, unsigned int a_seed)
{
    return "seed " + std::to_string(a_seed) + " interval " + std::to_string(a_shape.interval) + " x " +
           std::to_string(a_shape.multiplicity) + " time result " + std::to_string(a_shape.timeResult) +
           " ohl " + std::to_string(a_shape.useOhl) + " main type " + std::to_string(a_shape.types.front());
}

/// What a call gave, or the text that it raised, without its place. Shapes with an unknown type raise.
struct Outcome {
    unsigned int result = 0;
    std::string raised;

    friend bool operator==(const Outcome&, const Outcome&) = default;
    friend void PrintTo(const Outcome& a_outcome, std::ostream* a_stream)
    {
        *a_stream << a_outcome.result << a_outcome.raised;
    }
};

template<class Call>
Outcome OutcomeOf(Call a_call)
{
    try {
        return {static_cast<unsigned int>(a_call()), {}};
    } catch (const std::exception& failure) {
        const std::string text = failure.what();
        return {0, text.substr(std::min(text.find("Wyj"), text.size()))};
    }
}

/// One trial a seed, each with a shape of its own.
template<class Trial>
void ForSeeds(unsigned int a_first, unsigned int a_count, Trial a_trial)
{
    for (unsigned int seed = a_first; seed < a_first + a_count && !::testing::Test::HasFatalFailure();
         ++seed) {
        Random random(seed);
        const Shape shape = RandomShape(random);
        SCOPED_TRACE(Describe(shape, seed));
        a_trial(random, shape, Aggregator(shape.interval, shape.multiplicity, shape.timeResult, shape.types));
    }
}

/// Folds the rows up to that number at once; ticks are the input of a tick window of any size, and one of candles needs a
/// multiplicity above 1.
unsigned int Fold(Aggregator& a_aggregator, const Shape& a_shape, Rows& a_rows, std::size_t a_count)
{
    return a_aggregator.Aggregate(EIntervalTick, a_shape.useOhl ? 2 : 1, static_cast<unsigned int>(a_count),
                                  a_rows.times.data(), a_rows.Pointers());
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
    ForSeeds(0, 4000, [](Random& a_random, const Shape& a_shape, Aggregator a_aggregator) {
        Rows fast =
            RandomRows(a_random, 1 + Below(a_random, OneIn(a_random, 20) ? 6000 : 300), a_shape.types.size());
        Rows slow = fast;
        plain::Aggregator plainOne(a_shape.interval, a_shape.multiplicity, a_shape.timeResult, a_shape.types);
        const Outcome outcome =
            OutcomeOf([&] { return Fold(a_aggregator, a_shape, fast, fast.times.size()); });
        ASSERT_EQ(outcome, OutcomeOf([&] {
                      return plainOne.Aggregate(a_shape.useOhl, static_cast<unsigned int>(slow.times.size()),
                                                slow.times.data(), slow.Pointers());
                  }));
        ExpectSameRows(fast, slow, 0, outcome.raised.empty() ? outcome.result : fast.times.size());
    });
}

TEST(FoldTest, LiveRowsHaveTheBitsOfThePlainForm)
{
    ForSeeds(1000000, 600, [](Random& a_random, const Shape& a_shape, Aggregator a_aggregator) {
        Rows rows = RandomRows(a_random, 1 + Below(a_random, 200), a_shape.types.size());
        Rows plainRows = rows;
        plain::Aggregator plainOne(a_shape.interval, a_shape.multiplicity, a_shape.timeResult, a_shape.types);
        for (std::size_t row = 0; row < rows.times.size(); ++row) {
            const Outcome outcome = OutcomeOf([&] { return Push(a_aggregator, rows, row, a_shape.useOhl); });
            ASSERT_EQ(outcome, OutcomeOf([&] {
                          return plainOne.SumWithWindow(plainRows.times[row], plainRows.Pointers(row),
                                                        a_shape.useOhl);
                      }));
            if (!outcome.raised.empty())
                break;
        }
        ExpectSameRows(rows, plainRows, 0, rows.times.size());
    });
}

// After a fold and ClearLastValue the window is still open: the next row must meet just the window that row-by-row folding
// would have left.
TEST(FoldTest, WhatAFoldLeavesBehindContinuesLikeLiveRows)
{
    ForSeeds(2000000, 600, [](Random& a_random, const Shape& a_shape, Aggregator a_whole) {
        Rows rows = RandomRows(a_random, 2 + Below(a_random, 200), a_shape.types.size());
        const std::size_t folded = 1 + Below(a_random, rows.times.size() - 1);
        Rows live = rows;
        Aggregator single = a_whole;
        const Outcome fold = OutcomeOf([&] { return Fold(a_whole, a_shape, rows, folded); });
        const Outcome pushes = OutcomeOf([&] {
            unsigned int candles = 0;
            for (std::size_t row = 0; row < folded; ++row)
                candles += Push(single, live, row, a_shape.useOhl) ? 0 : 1;
            return candles;
        });
        ASSERT_EQ(fold, pushes);
        if (!fold.raised.empty())
            return;
        a_whole.ClearLastValue();
        single.ClearLastValue();
        for (std::size_t row = folded; row < rows.times.size(); ++row) {
            const Outcome outcome = OutcomeOf([&] { return Push(a_whole, rows, row, a_shape.useOhl); });
            ASSERT_EQ(outcome, OutcomeOf([&] { return Push(single, live, row, a_shape.useOhl); })) << row;
            if (!outcome.raised.empty())
                return;
            ExpectSameRows(rows, live, row, row + 1);
        }
    });
}

// A week window keeps the tables of its last year, which nothing in a result may show.
TEST(FoldTest, OneHistoryAfterAnotherForgetsTheFirst)
{
    ForSeeds(3000000, 300, [](Random& a_random, const Shape& a_shape, Aggregator a_used) {
        Rows first = RandomRows(a_random, 1 + Below(a_random, 100), a_shape.types.size());
        Rows second = RandomRows(a_random, 1 + Below(a_random, 100), a_shape.types.size());
        Rows fresh = second;
        Aggregator unused = a_used;
        OutcomeOf([&] { return Fold(a_used, a_shape, first, first.times.size()); });
        a_used.SetCurrentRecord(nullptr, nullptr);
        const Outcome outcome = OutcomeOf([&] { return Fold(a_used, a_shape, second, second.times.size()); });
        ASSERT_EQ(outcome, OutcomeOf([&] { return Fold(unused, a_shape, fresh, fresh.times.size()); }));
        ExpectSameRows(second, fresh, 0, outcome.raised.empty() ? outcome.result : second.times.size());
    });
}
