#include "apps/kalvento/RunToolHere.h"
#include "series/DataSeriesSet.h"
#include "time/NDateTime.h"

#include <gtest/gtest.h>

#include <boost/json/parse.hpp>

#include <algorithm>
#include <sstream>

using namespace kalvento::tool;

TEST(ShowCommandTest, ShowsTheHeadAndBothEnds)
{
    const TemporaryFolder folder;
    std::vector<NDateTime> times;
    DataSeriesSet::Columns columns{{Price, {}}, {Volume, {}}};
    for (unsigned int row = 0; row < 6; ++row) {
        times.emplace_back(2024, 1, 2, 9, 0, row / 2, row % 2);
        columns[0].second.push_back(10.5 + row);
        columns[1].second.push_back(1000000.0 * row);
    }
    std::ostringstream bytes;
    DataSeriesSet(EIntervalTick, 1, std::move(times), std::move(columns)).Write(bytes);
    const std::string file = folder.Write("rows.block", bytes.str());

    const ToolRun run = RunToolHere({"show", file, "--rows", "2"});
    ASSERT_EQ(run.exitCode, EExitOk) << run.err;
    EXPECT_EQ(run.out, file + ": series block, version 1, 292 bytes\n"
                              "  interval  tick (Tikowy)\n"
                              "  rows      6\n"
                              "  times     2024-01-02 09:00:00 to 2024-01-02 09:00:02\n"
                              "  columns   2\n"
                              "\n"
                              "  no  name    label    values  least  greatest\n"
                              "   2  price   Kurs          6   10.5      15.5\n"
                              "   3  volume  Wolumen       6      0   5000000\n"
                              "\n"
                              "  row  time                    price   volume\n"
                              "    1  2024-01-02 09:00:00      10.5        0\n"
                              "    2  2024-01-02 09:00:00 #1   11.5  1000000\n"
                              "  ... 2 rows ...\n"
                              "  row  time                    price   volume\n"
                              "    5  2024-01-02 09:00:02      14.5  4000000\n"
                              "    6  2024-01-02 09:00:02 #1   15.5  5000000\n");

    const ToolRun all = RunToolHere({"show", file, "--rows", "3"});
    EXPECT_EQ(all.out.find("..."), std::string::npos);
    EXPECT_EQ(RunToolHere({"show", file, "--format", "csv"}).out, "time,price,volume\n"
                                                                  "2024-01-02 09:00:00,10.5,0\n"
                                                                  "2024-01-02 09:00:00,11.5,1000000\n"
                                                                  "2024-01-02 09:00:01,12.5,2000000\n"
                                                                  "2024-01-02 09:00:01,13.5,3000000\n"
                                                                  "2024-01-02 09:00:02,14.5,4000000\n"
                                                                  "2024-01-02 09:00:02,15.5,5000000\n");
}

TEST(ShowCommandTest, WhatIsNoBlockIsRefused)
{
    const TemporaryFolder folder;
    for (const std::string& bytes :
         {std::string(), std::string("time,price\n"), std::string("\2\0\0\0", 4)}) {
        const ToolRun run = RunToolHere({"show", folder.Write("rows", bytes)});
        EXPECT_EQ(run.exitCode, EExitBadData);
        EXPECT_NE(run.err.find("expected 01 00 00 00"), std::string::npos) << run.err;
    }
    EXPECT_EQ(RunToolHere({"show", folder.Path("none")}).exitCode, EExitNoInput);
}

TEST(SeriesCommandTest, EveryFormatListsAllSeries)
{
    const std::string csv = RunToolHere({"series", "--format", "csv"}).out;
    EXPECT_EQ(std::count(csv.begin(), csv.end(), '\n'), 56);
    EXPECT_NE(csv.find("\n10,max,session_high,Maksimum,value,last,2\n"), std::string::npos);
    EXPECT_NE(csv.find("\n50,,indicator,Wskaźnik,,last,\n"), std::string::npos);

    std::istringstream lines(RunToolHere({"series", "--format", "jsonl"}).out);
    int number = 0;
    for (std::string line; std::getline(lines, line);) {
        const auto object = boost::json::parse(line).as_object();
        EXPECT_EQ(object.at("no").as_int64(), ++number);
    }
    EXPECT_EQ(number, 55);

    // Columns stand under each other though Polish letters take two bytes.
    const std::string table = RunToolHere({"series"}).out;
    EXPECT_NE(table.find("\n 3  wolumen        volume "), std::string::npos) << table;
}
