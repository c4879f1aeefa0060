#include "folding/Proof.h"

#include "folding/FoldingTestTools.h"

using namespace kalvento::tests;

namespace {

DataSeriesSet Candles(std::vector<unsigned long> a_counters, std::vector<double> a_prices)
{
    std::vector<NDateTime> times;
    for (std::size_t row = 0; row < a_counters.size(); ++row)
        times.emplace_back(2024, 1, 2, 9, 5 * (row + 1), 0, a_counters[row]);
    return {EIntervalMinute, 5, std::move(times), {{Price, std::move(a_prices)}}};
}

} // namespace

TEST(CandleDifferenceTest, TellsCandlesApart)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const DataSeriesSet expected = Candles({0, 1, 2}, {1.0, nan, 0.0});
    EXPECT_FALSE(CandleDifference::Find(expected, Candles({0, 1, 2}, {1.0, std::copysign(nan, -1.0), 0.0})));
    for (const auto& [name, found, kind, candle] :
         {std::tuple{"a counter", Candles({0, 1, 3}, {1.0, nan, 0.0}), CandleDifference::EKindTime, 2U},
          std::tuple{"the sign of zero", Candles({0, 1, 2}, {1.0, nan, -0.0}), CandleDifference::EKindValue,
                     2U},
          std::tuple{"the last bit", Candles({0, 1, 2}, {std::nextafter(1.0, 2.0), nan, 0.0}),
                     CandleDifference::EKindValue, 0U},
          std::tuple{"one less", Candles({0, 1}, {1.0, nan}), CandleDifference::EKindCount, 2U},
          std::tuple{"one more", Candles({0, 1, 2, 0}, {1.0, nan, 0.0, 4.0}), CandleDifference::EKindCount,
                     3U}}) {
        SCOPED_TRACE(name);
        const auto difference = CandleDifference::Find(expected, found);
        ASSERT_TRUE(difference);
        EXPECT_EQ(difference->kind, kind);
        EXPECT_EQ(difference->candle, candle);
    }
}

TEST(CandleDifferenceTest, TheEndOfAListMayLieBehind)
{
    const DataSeriesSet expected = Candles({0, 1, 2}, {1.0, 2.0, 3.0});
    std::vector<NDateTime> time{expected.TimeSeries()[1]};
    const DataSeriesSet middle(EIntervalMinute, 5, std::move(time), {{Price, {2.0}}});
    EXPECT_FALSE(CandleDifference::Find(expected, middle, 1, true));
    EXPECT_EQ(CandleDifference::Find(expected, middle, 1)->kind, CandleDifference::EKindCount);
    EXPECT_EQ(CandleDifference::Find(expected, middle, 0, true)->candle, 0U);
}

TEST(ProofTest, EveryRoadGivesTheSameCandles)
{
    const DataSeriesSet ticks = RandomTicks(24, 11);
    for (const EAggrType fold : {EAggrTypeOhlc, EAggrTypeOhlcSum, EAggrTypeOhlcLast})
        for (const IntervalAndMultiplicity interval : S_candleIntervals) {
            if (interval.IsTick() && !interval.IsSingleTick())
                continue; // they part, as told below
            SCOPED_TRACE(std::to_string(fold) + ", " + Shown(interval));
            const Proof::Result result = Proof(ticks, PriceAndVolume(fold), interval).Run();
            EXPECT_FALSE(result.finding);
            EXPECT_EQ(result.handOvers, 24U);
            EXPECT_GT(result.candles, 0U);
        }
}

TEST(ProofTest, CandlesOfTicksPartWhereTheyAreHandedOver)
{
    // A candle doesn't tell how many rows made it: handed over after its second row it takes two more instead of one.
    const Proof::Result result = Proof(RandomTicks(9, 3), PriceAndVolume(), {EIntervalTick, 3}).Run();
    ASSERT_TRUE(result.finding);
    EXPECT_EQ(result.finding->road, Proof::ERoadHandOver);
    EXPECT_EQ(result.finding->row, 1U);
    EXPECT_EQ(result.finding->difference.candle, 0U);
    EXPECT_EQ(result.handOvers, 1U);
}

TEST(ProofTest, HandsOverAtSoManyRowsAndTellsOfEach)
{
    const DataSeriesSet ticks = RandomTicks(500, 5);
    std::vector<std::size_t> done;
    const Proof::Result result = Proof(ticks, PriceAndVolume(), {EIntervalHour, 1})
                                     .Run(30, [&](std::size_t a_done, std::size_t a_total) {
                                         done.push_back(a_done);
                                         EXPECT_LE(a_total, 30U);
                                     });
    EXPECT_EQ(result.handOvers, done.size());
    EXPECT_GT(done.size(), 20U) << "of several kinds, some of which may meet";
    EXPECT_EQ(Proof(DataSeriesSet(EIntervalTick, 1), PriceAndVolume(), {EIntervalHour, 1}).Run().rows, 0U);
}

TEST(ProofTest, RefusesWhatNeverComesLive)
{
    const DataSeriesSet ticks = RandomTicks(9, 3);
    const auto refuses = [](const DataSeriesSet& a_rows, unsigned int a_ticks) {
        EXPECT_THROW(Proof(a_rows, PriceAndVolume(), {EIntervalTick, a_ticks}), std::invalid_argument);
    };
    refuses(ticks, 65536);
    refuses(Candles({0}, {1.0}), 1);
    refuses(DataSeriesSet(EIntervalTick, 1, std::vector<NDateTime>(2), {{Price, {1.0}}}), 1);
}
