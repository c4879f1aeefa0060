#include "support/Testing.h"
#include "text_rows/NumberText.h"
#include "text_rows/TimeText.h"

#include <charconv>

using namespace kalvento::rows;

namespace {

constexpr std::int64_t S_day = 86400;
// 2024-08-08 00:00 in days since 1970.
constexpr std::int64_t S_august8 = 19943;

} // namespace

TEST(NumberTextTest, ThePlainRoadGivesTheNearestDouble)
{
    std::mt19937_64 random(11);
    int plain = 0;
    for (int round = 0; round < 200000; ++round) {
        std::string text = std::to_string(random() >> (random() % 60));
        if (random() % 4 != 0)
            text.insert(random() % (text.size() + 1), 1, '.');
        if (random() % 5 == 0)
            text.insert(0, 1, '-');
        double expected = 0.0;
        std::from_chars(text.data(), text.data() + text.size(), expected);
        const std::string padded = text + "," + std::string(16, '\0');
        double value = 0.0;
        const char* end = ReadPlainNumber(padded.data(), '.', value);
        if (end != nullptr) {
            ++plain;
            EXPECT_EQ(end, padded.data() + text.size()) << text;
            EXPECT_EQ(value, expected) << text;
            EXPECT_EQ(std::signbit(value), std::signbit(expected)) << text;
        }
        const auto careful = ParseNumberText(text, '.');
        ASSERT_TRUE(careful) << text;
        EXPECT_EQ(*careful, expected) << text;
    }
    EXPECT_GT(plain, 100000);
}

TEST(NumberTextTest, NumbersInOtherForms)
{
    EXPECT_EQ(ParseNumberText("1e3", '.'), 1000.0);
    EXPECT_EQ(ParseNumberText("+12.5", '.'), 12.5);
    EXPECT_EQ(ParseNumberText("10780,74", ','), 10780.74);
    EXPECT_EQ(ParseNumberText("123456789012345678901234567890", '.'), 123456789012345678901234567890.0);
    for (const char* text :
         {"", "-", ".", "nan", "inf", "1e400", "0x10", "1 2", "1,5", "12.5.1", "--1", "+-1", "1e"}) {
        SCOPED_TRACE(text);
        EXPECT_FALSE(ParseNumberText(text, '.'));
    }
}

TEST(TimeTextTest, TakesTheUsualForms)
{
    const std::int64_t midnight = S_august8 * S_day;
    const std::int64_t quarter = midnight + 86055;
    const std::tuple<const char*, std::int64_t, std::int32_t, bool> rows[] = {
        {"2024-08-08", midnight, 0, false},
        {"2024/8/8", midnight, 0, false},
        {"2024.08.08", midnight, 0, false},
        {"08.08.2024 23:54:15", quarter, 0, false},
        {"20240808", midnight, 0, false},
        {"20240808235415", quarter, 0, false},
        {"202408082354", quarter - 15, 0, false},
        {"20240808 235415", quarter, 0, false},
        {"2024-08-08 23:54", quarter - 15, 0, false},
        {"2024-08-08T23:54:15.342", quarter, 342000000, false},
        {"2024-08-08 23:54:15.123456789", quarter, 123456789, false},
        {"2024-08-08 23:54:15.1234567891", quarter, 123456789, false},
        {"2024-08-08T23:54:15Z", quarter, 0, true},
        {"2024-08-09T01:54:15+02:00", quarter, 0, true},
        {"2024-08-08T18:24:15-0530", quarter, 0, true},
        {"2024-08-09 01:54:15 +02", quarter, 0, true},
        {"1723161255", quarter, 0, true},
        {"1723161255.5", quarter, 500000000, true},
        {"1723161255342", quarter, 342000000, true},
        {"1723161255342001", quarter, 342001000, true},
        {"1723161255342001002", quarter, 342001002, true},
        {"1969-12-31 23:59:59", -1, 0, false},
        {"0100-01-01", -59011459200, 0, false},
        {"4095-12-31", 67090032000, 0, false}};
    for (const auto& [text, seconds, nanoseconds, absolute] : rows) {
        SCOPED_TRACE(text);
        const auto time = ParseTimeText(text);
        ASSERT_TRUE(time);
        EXPECT_EQ(time->seconds, seconds);
        EXPECT_EQ(time->nanoseconds, nanoseconds);
        EXPECT_EQ(time->absolute, absolute);
    }
}

TEST(TimeTextTest, RefusesWhatIsNoTime)
{
    for (const char* text :
         {"", " ", "2024-02-30", "2023-02-29", "2024-13-01", "2024-08-08 24:00", "2024-08-08 23:59:60",
          "2024-08-08 23:54:15.", "2024-08-08 23:54:15x", "2024-08-08T", "2024-08/08", "8/8/2024",
          "0099-12-31", "4096-01-01", "1", "12345678901234567890", "-5", "2024-08-08 23:54:15+99:00",
          "99999999999999999999.5"}) {
        SCOPED_TRACE(text);
        EXPECT_FALSE(ParseTimeText(text));
    }
}

TEST(TimeTextTest, ClocksThatLostTheirLeadingZero)
{
    EXPECT_EQ(ParseClockText("93000")->seconds, 9 * 3600 + 30 * 60);
    EXPECT_EQ(ParseClockText("930")->seconds, 9 * 3600 + 30 * 60);
    EXPECT_EQ(ParseClockText("9:30")->seconds, 9 * 3600 + 30 * 60);
    for (const char* text : {"", "9", "95", "960", "1234567", "9:3", "24:00", "9:30:61", ":30"}) {
        SCOPED_TRACE(text);
        EXPECT_FALSE(ParseClockText(text));
    }
}

TEST(TimeTextTest, FormatsOfTheUser)
{
    const auto american = ParseTimeByFormat("8/9/2024 23:54", "%m/%d/%Y %H:%M");
    ASSERT_TRUE(american);
    EXPECT_EQ(american->seconds, (S_august8 + 1) * S_day + 86040);
    EXPECT_EQ(ParseTimeByFormat("080824", "%d%m%y")->seconds, S_august8 * S_day);
    EXPECT_EQ(ParseTimeByFormat("-1.0", "unix"), std::nullopt);
    EXPECT_EQ(ParseTimeByFormat("-1500", "unixms")->seconds, -2);
    EXPECT_EQ(ParseTimeByFormat("-1500", "unixms")->nanoseconds, 500000000);
    EXPECT_FALSE(ParseTimeByFormat("9223372036854775807", "unix"));
    EXPECT_FALSE(ParseTimeByFormat("8/9/2024 ", "%m/%d/%Y %H"));
    EXPECT_FALSE(ParseTimeByFormat("8/9/2024x", "%m/%d/%Y"));
    for (const char* format : {"%", "%Q", "abc", "%Y-%"}) {
        SCOPED_TRACE(format);
        EXPECT_FALSE(CheckTimeFormat(format).empty());
    }
}
