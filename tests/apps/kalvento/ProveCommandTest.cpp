#include "apps/kalvento/RunToolHere.h"
#include "support/MarketData.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace {

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
