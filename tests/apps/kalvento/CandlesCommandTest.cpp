#include "apps/kalvento/RunToolHere.h"

#include "series/DataSeriesSet.h"
#include "series/ESeriesId.h"

#include <boost/json.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

const std::string S_ticks = "time,price,volume\n"
                            "2024-08-08 10:00:01,10,1\n2024-08-08 10:01:30,12,2\n2024-08-08 10:04:59,9,3\n"
                            "2024-08-08 10:05:00,11,4\n2024-08-09 09:00:00,11.5,0.1\n";

ToolRun Candles(std::vector<std::string> a_arguments, const std::string& a_input = S_ticks)
{
    a_arguments.insert(a_arguments.begin(), {"candles", "-"});
    return RunToolHere(a_arguments, a_input);
}

} // namespace

TEST(CandlesCommandTest, FoldsTicksOfStandardInput)
{
    const ToolRun run = Candles({"-i", "5min"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_THAT(run.err, IsEmpty());
    EXPECT_EQ(run.out, "time,open,high,low,close,volume\n"
                       "2024-08-08 10:00:00,10,12,9,9,6\n"
                       "2024-08-08 10:05:00,11,11,11,11,4\n"
                       "2024-08-09 09:00:00,11.5,11.5,11.5,11.5,0.1\n");
}

TEST(CandlesCommandTest, EveryStampOfACandle)
{
    const std::vector<std::pair<std::string, std::string>> stamps = {{"first", "2024-08-08 10:00:01"},
                                                                     {"last", "2024-08-08 10:04:59"},
                                                                     {"begin", "2024-08-08 10:00:00"},
                                                                     {"end", "2024-08-08 10:05:00"},
                                                                     {"border", "2024-08-08 10:04:59"}};
    for (const auto& [stamp, time] : stamps) {
        SCOPED_TRACE(stamp);
        EXPECT_THAT(Candles({"-i", "5 min.", "--stamp", stamp}).out,
                    HasSubstr("volume\n" + time + ",10,12,9,9,6\n"));
    }
    EXPECT_THAT(Candles({"-i", "Dzienny"}).out, HasSubstr("\n2024-08-08,10,12,9,11,10\n2024-08-09,"));
    EXPECT_THAT(Candles({"-i", "1d", "--stamp", "last"}).out,
                HasSubstr("\n2024-08-08 10:05:00,10,12,9,11,10\n"));
    EXPECT_THAT(Candles({"-i", "2tick"}).out, HasSubstr("\n2024-08-08 10:01:30,10,12,10,12,3\n"));
    const ToolRun refused = Candles({"-i", "1d", "--stamp", "end"});
    EXPECT_EQ(refused.exitCode, EExitUsage);
    EXPECT_THAT(refused.out, IsEmpty());
}

TEST(CandlesCommandTest, EveryFormHoldsTheSameRows)
{
    const ToolRun lines = Candles({"-i", "5min", "--format", "jsonl"});
    std::istringstream text(lines.out);
    std::vector<double> closes;
    for (std::string line; std::getline(text, line);)
        closes.push_back(boost::json::parse(line).at("close").to_number<double>());
    EXPECT_THAT(closes, ElementsAre(9.0, 11.0, 11.5));
    EXPECT_THAT(lines.out, HasSubstr("{\"time\":\"2024-08-08T10:00:00\",\"open\":10,"));

    EXPECT_THAT(Candles({"-i", "5min", "--format", "table"}).out,
                HasSubstr("2024-08-08 10:00:00  10.0  12.0   9.0    9.0     6.0\n"));

    const ToolRun block = Candles({"-i", "5min", "--format", "block"});
    std::istringstream bytes(block.out);
    DataSeriesSet set(bytes);
    EXPECT_TRUE(set.IsValid());
    EXPECT_EQ(set.GetRecordsCount(), 3U);
    EXPECT_TRUE(set.GetIntervalData().Equals(EIntervalMinute, 5));
    // A block goes in where a text does: folding on gives what folding the ticks gives.
    EXPECT_EQ(Candles({"-i", "1d"}, block.out).out, Candles({"-i", "1d"}).out);
}

TEST(CandlesCommandTest, PassingTicksThroughKeepsThem)
{
    EXPECT_EQ(Candles({"-i", "tick"}).out, S_ticks);
    const std::string precise =
        "time,price,volume\n2024-08-08 10:00:01,0.1,1e-07\n2024-08-08 10:00:02,1e+22,5e-324\n";
    EXPECT_EQ(Candles({"-i", "tick"}, precise).out, precise);
}

TEST(CandlesCommandTest, FoldingRulesOfTheUser)
{
    const std::string ticks =
        "time,price,obrot,lop\n2024-08-08 10:00:01,10,5,7\n2024-08-08 10:00:02,11,6,8\n";
    EXPECT_THAT(Candles({"-i", "1min"}, ticks).out,
                HasSubstr("open_interest,turnover\n2024-08-08 10:00:00,10,11,10,11,8,6\n"));
    EXPECT_THAT(Candles({"-i", "1min", "--fold", "obrot=sum,price=ohlcsum"}, ticks).out,
                HasSubstr("10:00:00,21,21,21,21,8,11\n"));
    EXPECT_EQ(Candles({"-i", "1min", "--fold", "obrot=ohlc"}, ticks).exitCode, EExitUsage);
    EXPECT_EQ(Candles({"-i", "1min", "--fold", "volume=sum"}, ticks).exitCode, EExitUsage);
    EXPECT_EQ(Candles({"-i", "1min", "--fold", "obrot"}, ticks).exitCode, EExitUsage);
}

TEST(CandlesCommandTest, FilesOfOneSeriesFoldAsOne)
{
    const TemporaryFolder folder;
    const std::size_t cut = S_ticks.find("2024-08-08 10:04:59");
    const std::string first = folder.Write("1.csv", S_ticks.substr(0, cut));
    const std::string second = folder.Write("2.csv", "time,price,volume\n" + S_ticks.substr(cut));
    for (const char* interval : {"5min", "3tick", "1d"}) {
        SCOPED_TRACE(interval);
        EXPECT_EQ(RunToolHere({"candles", first, second, "-i", interval}).out, Candles({"-i", interval}).out);
    }
    const std::string other = folder.Write("3.csv", "time,price\n2024-08-10,1\n");
    EXPECT_EQ(RunToolHere({"candles", first, other, "-i", "1d"}).exitCode, EExitBadData);
}

TEST(CandlesCommandTest, SymbolsTogetherAndApart)
{
    const std::string ticks = "time,symbol,price\n2024-08-08 10:00:01,B/X,10\n2024-08-08 10:00:01,A,1\n"
                              "2024-08-08 10:00:02,B/X,11\n2024-08-08 10:01:00,A,2\n";
    EXPECT_EQ(Candles({"-i", "1min", "--symbol-column", "symbol"}, ticks).out,
              "time,symbol,open,high,low,close\n2024-08-08 10:00:00,B/X,10,11,10,11\n"
              "2024-08-08 10:00:00,A,1,1,1,1\n2024-08-08 10:01:00,A,2,2,2,2\n");
    const TemporaryFolder folder;
    const ToolRun split = Candles(
        {"-i", "1min", "--symbol-column", "symbol", "--split", folder.Path("out"), "--format", "block"},
        ticks);
    EXPECT_EQ(split.exitCode, 0) << split.err;
    std::istringstream bytes(folder.Read("out/B%2FX.block"));
    EXPECT_EQ(DataSeriesSet(bytes).GetRecordsCount(), 1U);
    EXPECT_EQ(Candles({"-i", "1min", "--symbol-column", "symbol", "--format", "block"}, ticks).exitCode,
              EExitUsage);
    EXPECT_EQ(Candles({"-i", "1min", "--split", folder.Path("x")}).exitCode, EExitUsage);
}

TEST(CandlesCommandTest, FilesOnTheirOwnDoNotMindTheJobs)
{
    const TemporaryFolder folder;
    std::vector<std::string> arguments = {"candles"};
    for (int file = 0; file < 6; ++file)
        arguments.push_back(
            folder.Write(std::to_string(file) + ".csv", file == 3 ? "time,price\nx,1\n" : S_ticks));
    arguments.insert(arguments.end(), {"-i", "5min", "--out-dir", folder.Path("out"), "--jobs", "4"});
    const ToolRun run = RunToolHere(arguments);
    EXPECT_EQ(run.exitCode, EExitBadData);
    EXPECT_THAT(run.err, HasSubstr("3.csv:2:1: found \"x\""));
    EXPECT_EQ(folder.Read("out/5.csv"), Candles({"-i", "5min"}).out);
    EXPECT_FALSE(std::filesystem::exists(folder.Path("out/3.csv")));
}

TEST(CandlesCommandTest, NothingHalfWrittenIsLeft)
{
    const TemporaryFolder folder;
    const std::string old = folder.Write("out.csv", "old");
    const ToolRun run = Candles({"-i", "5min", "-o", old}, S_ticks + "2024-08-10 10:00:00,oops,1\n");
    EXPECT_EQ(run.exitCode, EExitBadData);
    EXPECT_THAT(run.err,
                HasSubstr("standard input:7:21: found \"oops\" in column \"price\", expected a number"));
    EXPECT_EQ(folder.Read("out.csv"), "old");
    EXPECT_EQ(folder.CountFiles(), 1U);
    EXPECT_EQ(Candles({"-i", "5min", "-o", old}).exitCode, 0);
    EXPECT_EQ(folder.Read("out.csv"), Candles({"-i", "5min"}).out);
    EXPECT_EQ(Candles({"-i", "5min", "-o", folder.Path("no/such/out.csv")}).exitCode, EExitFailure);
}

TEST(CandlesCommandTest, RejectedLinesCanBeFedBack)
{
    const TemporaryFolder folder;
    const std::string bad = "2024-08-08 10:02:00,oops,1\n";
    const ToolRun run = Candles(
        {"-i", "5min", "--bad-lines", "reject", "--reject-file", folder.Path("bad.csv")}, S_ticks + bad);
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.out, Candles({"-i", "5min"}).out);
    EXPECT_EQ(folder.Read("bad.csv"), "time,price,volume\n" + bad);
    EXPECT_THAT(run.err, HasSubstr("1 lines set aside"));
}

TEST(CandlesCommandTest, ExitCodesTellWhatWasWrong)
{
    EXPECT_EQ(RunToolHere({}).exitCode, EExitUsage);
    EXPECT_EQ(RunToolHere({"candles", "-"}).exitCode, EExitUsage);
    EXPECT_EQ(RunToolHere({"candles", "no-such-file", "-i", "1d"}).exitCode, EExitNoInput);
    EXPECT_EQ(RunToolHere({"candles", "/", "-i", "1d"}).exitCode, EExitNoInput);
    EXPECT_EQ(Candles({"-i", "60min"}).exitCode, EExitUsage);
    EXPECT_EQ(Candles({"-i", "1d"}, "").exitCode, EExitBadData);
    EXPECT_EQ(Candles({"-i", "1d", "--from", "2024-08-09", "--to", "2024-08-08"}).exitCode, EExitUsage);
    EXPECT_EQ(Candles({"-i", "1d", "--time-format", "%Q"}).exitCode, EExitUsage);
    const ToolRun help = RunToolHere({"candles", "--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_THAT(help.out, HasSubstr("Examples:"));
    EXPECT_THAT(help.out, HasSubstr("Exit codes:"));
}

TEST(CandlesCommandTest, DamagedBlocksAreRefused)
{
    const std::string block = Candles({"-i", "5min", "--format", "block"}).out;
    ASSERT_GT(block.size(), 100U);
    for (const std::size_t length : {4U, 5U, 12U, 40U}) {
        SCOPED_TRACE(length);
        EXPECT_EQ(Candles({"-i", "1d"}, block.substr(0, length)).exitCode, EExitBadData);
    }
    std::string falling = block;
    // The last time's day number becomes zero: it falls behind the one before.
    const std::size_t lastTime = block.size() - 8 - 24;
    falling.replace(lastTime, 8, 8, '\0');
    EXPECT_EQ(Candles({"-i", "1d"}, falling).exitCode, EExitBadData);
}

TEST(CandlesCommandTest, NotesGoQuiet)
{
    const std::string ticks = "time,price,side\n2024-08-08,1,buy\n";
    EXPECT_THAT(Candles({"-i", "1d"}, ticks).err, HasSubstr("columns passed over: side"));
    EXPECT_THAT(Candles({"-i", "1d", "--quiet"}, ticks).err, IsEmpty());
    EXPECT_THAT(Candles({"-i", "1d"}, "time,price\n").err, HasSubstr("no rows"));
    EXPECT_EQ(Candles({"-i", "1d"}, "time,price\n").out, "time,open,high,low,close\n");
}
