#include "apps/kalvento/RunToolHere.h"

#include "history_operations/HistoryOperations.h"
#include "kalvento/RowAdjuster.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

using testing::HasSubstr;
using testing::IsEmpty;

namespace {

const std::string S_days =
    "date,open,high,low,close,volume,turnover\n"
    "2021-03-01,8,16,4,8,10,80\n2021-03-02,8,16,4,8,10,80\n2021-03-03,8,16,4,8,10,80\n";

} // namespace

TEST(AdjustCommandTest, ScalesUpToTheEndOfTheDay)
{
    const TemporaryFolder folder;
    const std::string operations = folder.Write("list.txt", "1\n1,210302,2,0.5\n2,210301,7,0.25\n");
    const ToolRun run = RunToolHere({"adjust", "-", "--operations", operations}, S_days);
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_THAT(run.err, IsEmpty());
    EXPECT_EQ(run.out, "time,open,high,low,close,volume,turnover\n"
                       "2021-03-01,1,2,0.5,1,20,80\n2021-03-02,4,8,2,4,20,80\n2021-03-03,8,16,4,8,10,80\n");

    const std::string xml = folder.Path("DataOperation.xml");
    ASSERT_EQ(RunToolHere({"operations", operations, "-f", "xml", "-o", xml}).exitCode, 0);
    EXPECT_EQ(RunToolHere({"adjust", "-", "--operations", xml}, S_days).out, run.out);

    const std::string days = folder.Write("days.csv", S_days);
    const std::string block = folder.Path("days.block");
    ASSERT_EQ(
        RunToolHere({"adjust", days, "--operations", "-", "--format", "block", "-o", block}, "1\n").exitCode,
        0);
    EXPECT_EQ(RunToolHere({"adjust", block, "--operations", operations}).out, run.out);
}

TEST(AdjustCommandTest, DaysAreThoseOfTheZoneThatIsWritten)
{
    const TemporaryFolder folder;
    const std::string operations = folder.Write("list.txt", "1\n1,210301,7,0.5\n");
    const std::string ticks = "time,price\n2021-03-01 22:30:00,8\n2021-03-01 23:30:00,8\n";
    EXPECT_EQ(RunToolHere({"adjust", "-", "--operations", operations}, ticks).out,
              "time,price\n2021-03-01 22:30:00,4\n2021-03-01 23:30:00,4\n");
    EXPECT_EQ(RunToolHere({"adjust", "-", "--operations", operations, "--zone", "UTC", "--output-zone",
                           "Europe/Warsaw"},
                          ticks)
                  .out,
              "time,price\n2021-03-01 23:30:00,4\n2021-03-02 00:30:00,8\n");
}

TEST(AdjustCommandTest, CandlesOfOperationsAreCandlesOfAdjustedRows)
{
    const TemporaryFolder folder;
    std::string ticks = "time,price,volume\n";
    std::mt19937 random(8);
    // More than two of the reader's blocks, three days in each month, one operation within an open candle.
    for (int row = 0; row < 20000; ++row) {
        char line[64];
        std::snprintf(line, sizeof(line), "2021-03-%02d %02d:%02d:%02d,%u,%u\n", 1 + row / 1000,
                      row % 1000 / 50, row % 50, row % 7, 100 + static_cast<unsigned int>(random() % 50),
                      1 + static_cast<unsigned int>(random() % 9));
        ticks += line;
    }
    const std::string input = folder.Write("ticks.csv", ticks);
    const std::string operations =
        folder.Write("list.txt", "1\n1,210309,2,0.5\n2,210303,4,0.25\n3,210317,7,0.9\n");
    const std::string adjusted = folder.Path("adjusted.csv");
    ASSERT_EQ(RunToolHere({"adjust", input, "--operations", operations, "-o", adjusted}).exitCode, 0);
    for (const char* const interval : {"1h", "1d", "1week", "1month"}) {
        SCOPED_TRACE(interval);
        const ToolRun run = RunToolHere({"candles", input, "-i", interval, "--operations", operations});
        EXPECT_EQ(run.exitCode, 0);
        EXPECT_EQ(run.out, RunToolHere({"candles", adjusted, "-i", interval}).out);
        EXPECT_NE(run.out, RunToolHere({"candles", input, "-i", interval}).out);
    }
}

TEST(AdjustCommandTest, WhatCanNotBeMeantIsRefused)
{
    const TemporaryFolder folder;
    const std::string operations = folder.Write("list.txt", "1\n");
    const std::string days = folder.Write("days.csv", S_days);
    const std::vector<std::vector<std::string>> runs = {
        {"adjust", days},
        {"adjust", "-", "--operations", "-"},
        {"adjust", days, "--operations", operations, "--symbol-column", "symbol"},
        {"candles", "-", "-i", "1week", "--operations", "-"},
        {"candles", days, "-i", "1week", "--operations", operations, "--symbol-column", "open"},
        {"candles", days, "-i", "1week", "--operations", operations, "--out-dir", folder.Path("out")},
    };
    for (const auto& arguments : runs) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        EXPECT_EQ(RunToolHere(arguments).exitCode, EExitUsage);
    }
    const std::string bad = folder.Write("bad.txt", "1\n1,2103,2,0.5\n");
    const ToolRun run = RunToolHere({"adjust", days, "--operations", bad, "-o", folder.Path("out.csv")});
    EXPECT_EQ(run.exitCode, EExitBadData);
    EXPECT_THAT(run.err, HasSubstr("bad.txt:2:1:"));
    EXPECT_EQ(folder.CountFiles(), 3U);

    // What is merely odd is told and done.
    const ToolRun odd = RunToolHere({"adjust", days, "--operations", "-"}, "1\n1,210301,2,0\n");
    EXPECT_EQ(odd.exitCode, 0);
    EXPECT_THAT(odd.err, HasSubstr("operation 1: factor 0"));
    EXPECT_THAT(RunToolHere({"adjust", days, "--operations", "-", "--quiet"}, "1\n1,210301,2,0\n").err,
                IsEmpty());
}

// Piece by piece is the whole at once, wherever it is cut.
TEST(RowAdjusterTest, PiecesComeOutAsTheWhole)
{
    kalvento::rows::RowLayout layout;
    layout.series = {Price, Volume, Lop, Turnover};
    layout.interval = IntervalAndMultiplicity(EIntervalTick, 1);
    HistoryOperations operations;
    ASSERT_TRUE(operations.Parse("1\n1,210302,2,0.3\n2,210228,2,0.7\n3,210304,7,0.9\n4,210301,4,0.11\n"));

    kalvento::rows::RowBlock rows;
    constexpr std::size_t count = 50;
    rows.Reserve(count + 10, layout.series.size(), false); // longer than what it holds, as between reads
    rows.rows = count;
    for (std::size_t row = 0; row < count; ++row) {
        rows.times[row] = NDateTime(2021, 3, 1 + row / 10, row % 10, 0, 0, row);
        for (auto& column : rows.columns)
            column[row] = 100.0 + static_cast<double>(row);
    }
    kalvento::rows::RowBlock whole = rows;
    kalvento::tool::RowAdjuster(operations, layout).Adjust(whole, 0);
    EXPECT_NE(whole.columns, rows.columns);
    EXPECT_EQ(whole.columns[3], rows.columns[3]);

    std::mt19937 random(2);
    for (int round = 0; round < 50; ++round) {
        kalvento::rows::RowBlock pieces = rows;
        kalvento::tool::RowAdjuster adjuster(operations, layout);
        for (std::size_t first = 0; first < count;) {
            pieces.rows = std::min(count, first + random() % 20);
            adjuster.Adjust(pieces, first);
            first = pieces.rows;
        }
        EXPECT_EQ(pieces.columns, whole.columns);
    }
}
