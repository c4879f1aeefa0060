#include "text_rows/IntervalNotation.h"

#include "platform/WidePath.h"
#include "support/Testing.h"
#include "time/IntervalTranslator.h"
#include "time/MaxMultiplicity.h"

using kalvento::rows::FormatInterval;
using kalvento::rows::ParseInterval;

TEST(IntervalNotationTest, WhatIsPrintedIsReadBack)
{
    for (std::uint32_t unit = EIntervalTick; unit <= EIntervalYear; ++unit) {
        const auto interval = static_cast<EInterval>(unit);
        const unsigned greatest = std::min(kalvento::internal::GetMaxMultiplicity(interval), 400U);
        for (unsigned count = 1; count <= greatest; ++count) {
            const IntervalAndMultiplicity pair(interval, count);
            SCOPED_TRACE(FormatInterval(pair));
            const auto notation = ParseInterval(FormatInterval(pair));
            ASSERT_TRUE(notation);
            EXPECT_TRUE(notation->Equals(pair));
            const auto polish =
                ParseInterval(WidePath::ToPath(IntervalTranslator::ToDescription(interval, count)).native());
            ASSERT_TRUE(polish);
            EXPECT_TRUE(polish->Equals(pair));
        }
    }
}

TEST(IntervalNotationTest, OtherSpellings)
{
    const std::vector<std::pair<std::string, IntervalAndMultiplicity>> table = {
        {"tick", {EIntervalTick, 1}},        {"4294967295tick", {EIntervalTick, 4294967295U}},
        {"5 minutes", {EIntervalMinute, 5}}, {"5m", {EIntervalMinute, 5}},
        {"5MIN", {EIntervalMinute, 5}},      {"24h", {EIntervalHour, 24}},
        {"dzien", {EIntervalDay, 1}},        {"miesieczny", {EIntervalMonth, 1}},
        {"1mo", {EIntervalMonth, 1}},        {"3 lata", {EIntervalYear, 3}}};
    for (const auto& [text, expected] : table) {
        SCOPED_TRACE(text);
        const auto found = ParseInterval(text);
        ASSERT_TRUE(found);
        EXPECT_TRUE(found->Equals(expected));
    }
}

TEST(IntervalNotationTest, RefusalsSayWhatWouldBeTaken)
{
    const std::vector<std::pair<std::string, std::string>> table = {
        {"", "5min"},          {"5", "5min"},
        {"min5", "5min"},      {"0min", "1 or more"},
        {"60min", "up to 59"}, {"12mo", "up to 11"},
        {"1M", "min or mo"},   {"4294967296tick", "below 4294967296"},
        {"-5min", "5min"},     {"5.5min", "5min"},
        {"Pusty", "Dzienny"},  {std::string("5\0min", 5), "5min"}};
    for (const auto& [text, hint] : table) {
        SCOPED_TRACE(text);
        std::string reason;
        EXPECT_FALSE(ParseInterval(text, &reason));
        EXPECT_NE(reason.find(hint), std::string::npos) << reason;
    }
}
