#include "apps/kalvento/RunToolHere.h"

#include <boost/json.hpp>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

// A bad line, a row behind its time, and the same window of the same day of the year one year later.
constexpr const char* S_ticks = "time,price,volume\n"
                                "2023-01-02 10:00:00,5,1\n"
                                "2023-01-02 10:01:00,x,1\n"
                                "2023-01-02 10:06:00,7,1\n"
                                "2023-01-02 10:04:00,6,1\n"
                                "2024-01-02 10:06:00,8,2\n"
                                "2024-01-03 10:06:00,9,2\n";

class ExplainCommandTest : public testing::Test {
protected:
    ToolRun Explain(std::vector<std::string> a_arguments) const
    {
        a_arguments.insert(a_arguments.begin(), {"explain", file, "-q"});
        return RunToolHere(a_arguments);
    }
    boost::json::object Json(std::vector<std::string> a_arguments) const
    {
        a_arguments.insert(a_arguments.end(), {"-f", "json"});
        return boost::json::parse(Explain(a_arguments).out).as_object();
    }

    const TemporaryFolder folder;
    const std::string file = folder.Write("ticks.csv", S_ticks);
};

} // namespace

TEST_F(ExplainCommandTest, NamesTheRowsBehindTheValues)
{
    const boost::json::object candle = Json({"-i", "5min", "--at", "10:05"});
    EXPECT_EQ(candle.at("window").at("number").to_number<int>(), 121);
    EXPECT_EQ(candle.at("window").at("border").as_string(), "2023-01-02 10:09:59");
    EXPECT_EQ(candle.at("row_count").to_number<int>(), 3);
    const boost::json::value& values = candle.at("values");
    for (const auto& [name, line] : {std::pair("open", 4), {"high", 6}, {"low", 5}, {"close", 6}})
        EXPECT_EQ(values.at(name).at("line").to_number<int>(), line) << name;
    EXPECT_EQ(values.at("volume").at("how").as_string(), "the sum of 3 rows");
    // The first of several days, the raised row, and the year between the rows.
    EXPECT_EQ(candle.at("notes").as_array().size(), 3U) << boost::json::serialize(candle.at("notes"));
}

TEST_F(ExplainCommandTest, SaysWhatWasRefused)
{
    for (const std::string order : {"raise", "drop"}) {
        SCOPED_TRACE(order);
        const boost::json::object candle = Json({"-i", "5min", "--at", "2023-01-02 10:00", "--order", order});
        const boost::json::array& refused = candle.at("refused").as_array();
        ASSERT_EQ(refused.size(), 2U);
        EXPECT_TRUE(refused[0].as_string().starts_with("line 3: found \"x\""));
        EXPECT_TRUE(refused[1].as_string().starts_with("line 5: its time"));
    }
    EXPECT_EQ(Explain({"-i", "5min", "--at", "10:00", "--bad-lines", "stop"}).exitCode, 3);
}

TEST_F(ExplainCommandTest, AMomentWithoutCandleHasNeighbours)
{
    const ToolRun none = Explain({"-i", "5min", "--at", "10:12"});
    EXPECT_EQ(none.exitCode, 5);
    EXPECT_NE(none.out.find("before: 2023-01-02 10:05:00"), std::string::npos) << none.out;
    const ToolRun day = Explain({"-i", "5min", "--at", "10:06", "--day", "2022-01-01"});
    EXPECT_NE(day.out.find("before: none\n  after:  2023-01-02 10:00:00"), std::string::npos) << day.out;
    EXPECT_EQ(Json({"-i", "5min", "--at", "10:06", "--day", "2024-01-03"}).at("row_count").to_number<int>(),
              1);
}

TEST_F(ExplainCommandTest, RefusesWhatCannotBeMeant)
{
    const std::string symbols = folder.Write("two.csv", "time,symbol,price\n2024-01-02 10:00:00,A,1\n"
                                                        "2024-01-02 10:00:01,B,2\n2024-01-02 10:00:02,A,3\n");
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"-i", "5min", "--at", "teatime"},
          {"-i", "5min", "--at", "2024-01-02 10:00", "--day", "2024-01-02"},
          {"-i", "5min", "--at", "10:00", "--symbol", "A"}})
        EXPECT_EQ(Explain(arguments).exitCode, 2) << arguments.back();
    const ToolRun missing =
        RunToolHere({"explain", symbols, "-i", "1min", "--at", "10:00", "--symbol-column", "symbol"});
    EXPECT_EQ(missing.exitCode, 2);
    EXPECT_NE(missing.err.find("expected one of A, B"), std::string::npos) << missing.err;
    const ToolRun one = RunToolHere(
        {"explain", symbols, "-i", "1min", "--at", "10:00", "--symbol-column", "symbol", "--symbol", "A"});
    EXPECT_NE(one.out.find("rows:   2, from line 2, 2024-01-02 10:00:00 to line 4"), std::string::npos)
        << one.out;
}
