#include "series/LinksManager.h"

#include "support/Testing.h"
#include "velo/String.h"

namespace {

TEST(LinksManagerTest, EveryLinkLeadsBackToItsSeries)
{
    const LinksManager links;
    std::set<int> numbers;
    for (const auto& [id, link] : links) {
        SCOPED_TRACE(link);
        EXPECT_EQ(links.FindSeriesIdByLink(link), id);
        EXPECT_EQ(links.LinkExist(link), std::pair(true, static_cast<int>(id)));
        EXPECT_EQ(&links.GetLink(id), &link);
        EXPECT_EQ(links.GetLinkByUnknownTypeId(static_cast<int>(id)), link);
        EXPECT_EQ(link, VeloTools::String::ToLower(link));
        numbers.insert(static_cast<int>(id));
    }
    std::set<int> expected;
    for (int number = 1; number <= 54; ++number)
        if (!(number >= 6 && number <= 8) && number != 16 && number != 50)
            expected.insert(number);
    EXPECT_EQ(numbers, expected);
}

TEST(LinksManagerTest, WhatALinkNames)
{
    const std::tuple<const char*, std::pair<bool, int>, unsigned int> cases[] = {
        {"KURS", {true, 2}, 2},       {"Wolumen", {true, 3}, 3},    {"czas", {true, 1}, 1},
        {"mnoznik", {true, 1023}, 0}, {"NOMINAL", {true, 1028}, 0}, {"kupi", {true, 20}, 20},
        {"kurs ", {false, -1}, 0},
    };
    for (const auto& [link, exists, series] : cases) {
        SCOPED_TRACE(link);
        EXPECT_EQ(LinksManager().LinkExist(link), exists);
        EXPECT_EQ(LinksManager().FindSeriesIdByLink(link), series);
    }
    const std::map<int, std::string> numbers = {{1016, "kurs"},    {1017, "wolumen"}, {1024, "czas"},
                                                {1023, "mnoznik"}, {1028, "nominal"}, {7, ""},
                                                {-1, ""},          {1018, ""}};
    for (const auto& [number, link] : numbers)
        EXPECT_EQ(LinksManager().GetLinkByUnknownTypeId(number), link) << number;
    EXPECT_EQ(&LinksManager().GetLink(IntervalMax), &VeloTools::String::EmptyString());
}

} // namespace
