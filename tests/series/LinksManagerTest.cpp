#include "series/LinksManager.h"

#include "velo/String.h"

#include <gtest/gtest.h>

#include <set>

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
    struct Case {
        const char* link;
        std::pair<bool, int> exists;
        unsigned int series;
    };
    const Case cases[] = {
        {"KURS", {true, 2}, 2},        {"Wolumen", {true, 3}, 3},    {"czas", {true, 1}, 1},
        {"mnoznik", {true, 1023}, 0},  {"NOMINAL", {true, 1028}, 0}, {"kupi", {true, 20}, 20},
        {"Nsprzeda5", {true, 49}, 49}, {"liczbatr", {true, 54}, 54}, {"", {false, -1}, 0},
        {"kurs ", {false, -1}, 0},
    };
    for (const Case& testCase : cases) {
        SCOPED_TRACE(testCase.link);
        EXPECT_EQ(LinksManager().LinkExist(testCase.link), testCase.exists);
        EXPECT_EQ(LinksManager().FindSeriesIdByLink(testCase.link), testCase.series);
    }
}

TEST(LinksManagerTest, WhatANumberOfEitherKindIsCalled)
{
    struct Case {
        int id;
        const char* link;
    };
    for (const Case& testCase : {Case{2, "kurs"}, Case{1016, "kurs"}, Case{1017, "wolumen"},
                                 Case{1024, "czas"}, Case{1023, "mnoznik"}, Case{1028, "nominal"},
                                 Case{7, ""}, Case{0, ""}, Case{-1, ""}, Case{1018, ""}}) {
        SCOPED_TRACE(testCase.id);
        EXPECT_EQ(LinksManager().GetLinkByUnknownTypeId(testCase.id), testCase.link);
    }
    EXPECT_EQ(&LinksManager().GetLink(IntervalMax), &VeloTools::String::EmptyString());
    EXPECT_EQ(LinksManager().Find(IntervalMax), LinksManager().end());
}

} // namespace
