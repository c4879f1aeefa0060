#include "apps/kalvento/RunToolHere.h"
#include "support/MarketData.h"
#include "support/Testing.h"

#include <fmt/format.h>

namespace {

using Rows = std::map<std::string, std::vector<double>>;

/// Rows of a CSV text by their first field.
Rows RowsOf(const std::string& a_text)
{
    Rows rows;
    std::istringstream lines(a_text);
    std::string line;
    std::getline(lines, line);
    while (std::getline(lines, line)) {
        std::istringstream fields(line);
        std::string time;
        std::getline(fields, time, ',');
        std::vector<double>& values = rows[time];
        for (std::string field; std::getline(fields, field, ',');)
            values.push_back(std::strtod(field.c_str(), nullptr));
    }
    return rows;
}

class RealDataTest : public testing::Test {
protected:
    static std::string Fold(const std::string& a_name, std::vector<std::string> a_arguments)
    {
        a_arguments.insert(a_arguments.begin(), {"candles", MarketData::Path(a_name), "-q"});
        const ToolRun run = RunToolHere(a_arguments);
        EXPECT_EQ(run.exitCode, 0) << run.err;
        return run.out;
    }
    static void ExpectCandle(const std::vector<double>& a_found, const std::vector<double>& a_expected)
    {
        for (std::size_t column = 0; column < 4; ++column)
            EXPECT_EQ(a_found.at(column), a_expected.at(column));
        EXPECT_NEAR(a_found.at(4), a_expected.at(4), 1e-6);
    }

    const std::string minutes = "candles/binance_spot_btcusdt_2020-09-27_1m.csv";
};

} // namespace

TEST_F(RealDataTest, MinutesGiveTheExchangesOwnCandles)
{
    // The minutes run from 05:56 to 14:15; only windows that lie wholly between are comparable.
    for (const auto& [interval, file, endOfWhole, windows] :
         {std::tuple("5min", "_5m", "2020-09-27 14:15:00", 99U),
          {"15min", "_15m", "2020-09-27 14:15:00", 33U},
          {"1h", "_1h", "2020-09-27 14:00:00", 8U}}) {
        SCOPED_TRACE(interval);
        const Rows found = RowsOf(Fold(minutes, {"-i", interval}));
        const Rows expected = RowsOf(TemporaryFolder::ReadFile(
            MarketData::Path(std::string("candles/binance_spot_btcusdt_2020-09-27") + file + ".csv")));
        std::size_t compared = 0;
        for (const auto& [time, values] : expected) {
            if (time < "2020-09-27 06:00:00" || time >= endOfWhole)
                continue;
            SCOPED_TRACE(time);
            ASSERT_TRUE(found.contains(time));
            ExpectCandle(found.at(time), values);
            ++compared;
        }
        EXPECT_EQ(compared, windows);
    }
}

TEST_F(RealDataTest, TicksGiveTheExchangesMinutes)
{
    const Rows found = RowsOf(Fold("ticks/binance_spot_btcusdt_2020-09-27_1411.csv", {"-i", "1min"}));
    const Rows expected = RowsOf(TemporaryFolder::ReadFile(MarketData::Path(minutes)));
    for (const char* time : {"2020-09-27 14:12:00", "2020-09-27 14:13:00", "2020-09-27 14:14:00"}) {
        SCOPED_TRACE(time);
        ExpectCandle(found.at(time), expected.at(time));
    }
}

// A session of New York begins at 9:30 and ends at 16:00 on the wall, in winter and in summer time.
TEST_F(RealDataTest, EndStampedMinutesFallIntoTheirSession)
{
    const TemporaryFolder folder;
    std::string text = "time,open,high,low,close,volume\n";
    for (const auto& [day, opening] : {std::pair("2011-03-11", 14 * 60 + 30), {"2011-03-14", 13 * 60 + 30}}) {
        for (int minute = opening + 1; minute <= opening + 390; ++minute)
            text += fmt::format("{} {:02}:{:02}:00,1,2,1,2,1\n", day, minute / 60, minute % 60);
    }
    const std::string file = folder.Write("minutes.csv", text);
    const Rows hours = RowsOf(RunToolHere({"candles", file, "-q", "-i", "1h", "--input-stamp", "end",
                                           "--zone", "UTC", "--output-zone", "America/New_York"})
                                  .out);
    EXPECT_EQ(hours.size(), 14U);
    for (const std::string day : {"2011-03-11", "2011-03-14"}) {
        SCOPED_TRACE(day);
        EXPECT_EQ(hours.at(day + " 09:00:00").at(4), 30.0);
        EXPECT_EQ(hours.at(day + " 15:00:00").at(4), 60.0);
    }
}

// Histories of real shares with splits, a reverse split and dividends, and what their source made of them by itself.
TEST_F(RealDataTest, HistoriesComeOutAsTheirSourceAdjustedThem)
{
    for (const auto& [history, operations] : {std::pair("orcl_2000", "orcl"),
                                              {"aig_2008_2009", "aig"},
                                              {"ibm_2008_2009", "ibm"},
                                              {"aapl_2014", "aapl"},
                                              {"msft_2014", "msft"}}) {
        const std::string file = MarketData::Path(std::string("daily/") + history + ".csv");
        const std::string list = MarketData::Path(std::string("daily/operations_") + operations + ".txt");
        const Rows found = RowsOf(RunToolHere({"adjust", file, "--operations", list, "-q"}).out);
        EXPECT_GE(found.size(), 252U);
        for (const auto& [time, values] : RowsOf(TemporaryFolder::ReadFile(file))) {
            SCOPED_TRACE(history + (" " + time));
            for (std::size_t column = 0; column < 5; ++column) {
                const double expected = values.at(column + 7);
                // For the arithmetic, and for what is lost where the reference stands rounded to ten digits.
                const double lastDigit = std::pow(10.0, std::floor(std::log10(expected)) - 9.0);
                ASSERT_NEAR(found.at(time).at(column), expected, 1e-12 * expected + 0.5 * lastDigit)
                    << column;
            }
        }
    }
}

TEST_F(RealDataTest, EveryTickFileIsTaken)
{
    for (const auto& entry : std::filesystem::directory_iterator(MarketData::Path("ticks"))) {
        const std::string name = "ticks/" + entry.path().filename().string();
        SCOPED_TRACE(name);
        const std::string ticks = Fold(name, {"-i", "tick"});
        const std::string source = TemporaryFolder::ReadFile(MarketData::Path(name));
        EXPECT_EQ(std::count(ticks.begin(), ticks.end(), '\n'),
                  std::count(source.begin(), source.end(), '\n'));
    }
}

TEST_F(RealDataTest, TicksAreProvedByInstrument)
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
