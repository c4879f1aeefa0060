#include "apps/kalvento/RunToolHere.h"

#include "history_operations/HistoryOperations.h"
#include "kalvento/RowAdjuster.h"
#include "support/Testing.h"

#include <gmock/gmock.h>

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
