#include "apps/kalvento/RunToolHere.h"
#include "kalvento/FoldProof.h"
#include "support/MarketData.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

using kalvento::tool::CandleDifference;
using kalvento::tool::FindDifference;

namespace {

DataSeriesSet Candles(std::vector<unsigned long> a_counters, std::vector<double> a_prices)
{
    std::vector<NDateTime> times;
    for (std::size_t row = 0; row < a_counters.size(); ++row)
        times.emplace_back(2024, 1, 2, 9, 5 * (row + 1), 0, a_counters[row]);
    return {EIntervalMinute, 5, std::move(times), {{Price, std::move(a_prices)}}};
}

// Rows of one second, a second's pause, a change of the day and a year later on the same day of the year.
constexpr const char* S_ticks = "time,price,volume\n"
                                "2023-01-02 09:00:01,10.1,1\n"
                                "2023-01-02 09:00:01,10.3,2\n"
                                "2023-01-02 09:04:59,0.1,3\n"
                                "2023-01-02 09:05:00,0.2,4\n"
                                "2023-01-02 09:04:00,0.3,5\n"
                                "2023-01-03 00:00:00,7,6\n"
                                "2024-01-03 00:00:00,8,7\n"
                                "2024-01-03 00:01:00,9,8\n";

} // namespace

TEST(FoldProofTest, TellsCandlesApart)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const DataSeriesSet expected = Candles({0, 1, 2}, {1.0, nan, 0.0});
    EXPECT_FALSE(FindDifference(expected, Candles({0, 1, 2}, {1.0, std::copysign(nan, -1.0), 0.0})));
    struct Row {
        const char* name;
        DataSeriesSet found;
        CandleDifference::EKind kind;
        std::size_t candle;
    };
    for (const Row& row :
         {Row{"a counter", Candles({0, 1, 3}, {1.0, nan, 0.0}), CandleDifference::EKindTime, 2},
          Row{"the sign of zero", Candles({0, 1, 2}, {1.0, nan, -0.0}), CandleDifference::EKindValue, 2},
          Row{"the last bit", Candles({0, 1, 2}, {std::nextafter(1.0, 2.0), nan, 0.0}),
              CandleDifference::EKindValue, 0},
          Row{"one less", Candles({0, 1}, {1.0, nan}), CandleDifference::EKindCount, 2},
          Row{"one more", Candles({0, 1, 2, 0}, {1.0, nan, 0.0, 4.0}), CandleDifference::EKindCount, 3}}) {
        SCOPED_TRACE(row.name);
        const auto difference = FindDifference(expected, row.found);
        ASSERT_TRUE(difference);
        EXPECT_EQ(difference->kind, row.kind);
        EXPECT_EQ(difference->candle, row.candle);
    }
}

TEST(FoldProofTest, TheEndOfAListMayLieBehind)
{
    const DataSeriesSet expected = Candles({0, 1, 2}, {1.0, 2.0, 3.0});
    std::vector<NDateTime> time{expected.TimeSeries()[1]};
    const DataSeriesSet middle(EIntervalMinute, 5, std::move(time), {{Price, {2.0}}});
    EXPECT_FALSE(FindDifference(expected, middle, 1, true));
    EXPECT_EQ(FindDifference(expected, middle, 1)->kind, CandleDifference::EKindCount);
    EXPECT_EQ(FindDifference(expected, middle, 0, true)->candle, 0U);
}

TEST(ProveCommandTest, EveryRoadGivesTheSameCandles)
{
    const TemporaryFolder folder;
    const std::string file = folder.Write("ticks.csv", S_ticks);
    std::vector<std::string> arguments{"prove", file};
    for (const char* interval : {"tick", "1s", "5min", "7min", "1h", "1d", "1w", "1mo", "1y"})
        arguments.insert(arguments.end(), {"-i", interval});
    for (const char* fold : {"ohlc", "ohlcsum", "ohlclast"}) {
        SCOPED_TRACE(fold);
        auto withFold = arguments;
        withFold.insert(withFold.end(), {"--fold", std::string("price=") + fold});
        const ToolRun run = RunToolHere(withFold);
        EXPECT_EQ(run.exitCode, 0) << run.out << run.err;
        EXPECT_EQ(run.out.find("different"), std::string::npos);
        EXPECT_NE(run.out.find("8 hand-overs, one at each row"), std::string::npos) << run.out;
    }
}

TEST(ProveCommandTest, SaysWhereCandlesOfTicksPartAndWhy)
{
    const TemporaryFolder folder;
    const ToolRun run = RunToolHere({"prove", folder.Write("ticks.csv", S_ticks), "-i", "3tick"});
    EXPECT_EQ(run.exitCode, 5) << run.err;
    // Handed over behind its second row, the first candle takes two more instead of one.
    EXPECT_NE(run.out.find("candle 1, 2023-01-02 09:04:59: its time"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("after row 2,"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("so one of 3 ticks that is handed over counts as its first tick"),
              std::string::npos)
        << run.out;
    const ToolRun json = RunToolHere({"prove", folder.Path("ticks.csv"), "-i", "3tick", "--format", "jsonl"});
    EXPECT_EQ(json.exitCode, 5);
    EXPECT_NE(json.out.find(R"("identical":false)"), std::string::npos) << json.out;
}

TEST(ProveCommandTest, TakesNothingButTicks)
{
    const TemporaryFolder folder;
    const std::string candles =
        folder.Write("candles.csv", "time,open,high,low,close\n2024-01-02 09:00:00,1,2,1,2\n");
    EXPECT_EQ(RunToolHere({"prove", candles, "-i", "1h"}).exitCode, 2);
    EXPECT_EQ(RunToolHere({"prove", folder.Write("empty.csv", "time,price\n"), "-i", "1h"}).exitCode, 3);
    EXPECT_EQ(RunToolHere({"prove", folder.Path("none.csv"), "-i", "1h"}).exitCode, 4);
}

TEST(ProveCommandTest, RealTicksAreProvedByInstrument)
{
    const std::string midnight = MarketData::Path("ticks/binance_spot_btcusdt_2024-08-08_midnight.csv");
    const ToolRun one =
        RunToolHere({"prove", midnight, "-i", "1s", "-i", "5min", "-i", "1d", "--samples", "30"});
    EXPECT_EQ(one.exitCode, 0) << one.out << one.err;
    const TemporaryFolder folder;
    const std::string dealt =
        folder.Write("nine.csv", MarketData::DealtOut("ticks/coinbase_btcusd_2023-09-05_16h.csv", 9));
    const ToolRun nine = RunToolHere(
        {"prove", dealt, "-i", "7min", "--symbol-column", "symbol", "--samples", "30", "--format", "jsonl"});
    EXPECT_EQ(nine.exitCode, 0) << nine.out << nine.err;
    EXPECT_EQ(std::count(nine.out.begin(), nine.out.end(), '\n'), 9);
}
