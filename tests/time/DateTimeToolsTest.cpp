#include "time/DateTimeTools.h"

#include "support/RaisedText.h"
#include "support/Testing.h"

#include <boost/date_time/gregorian/greg_date.hpp>

#include <regex>

namespace {

using namespace std::string_view_literals;

std::string Print(const NDateTime& a_time)
{
    return DateTimeTools::FormatDateTimeShort(
        static_cast<unsigned>(a_time.GetYear()), static_cast<unsigned>(a_time.GetMonth()),
        static_cast<unsigned>(a_time.GetDay()), static_cast<unsigned>(a_time.GetHour()),
        static_cast<unsigned>(a_time.GetMinute()), static_cast<unsigned>(a_time.GetSecond()));
}

// "none" for no result, "invalid" before the fields of a value that is no date.
std::string Print(const std::optional<NDateTime>& a_time)
{
    if (!a_time)
        return "none";
    return (a_time->IsValid() ? "" : "invalid ") + Print(*a_time);
}

NDateTime Shifted(NDateTime a_time, int a_days)
{
    return a_time.ShiftDays(a_days);
}

TEST(DateTimeToolsTest, ParseDateYYYYMMDD)
{
    const std::tuple<std::string_view, const char*> cases[] = {
        {"20210301", "2021-03-01 00:00:00"},
        {"20210231", "invalid 2021-02-31 00:00:00"},
        {"202102301", "none"},
        {"00000000", "none"},
        {"", "none"},
        {"-0210301", "none"},
        {"2021ab12", "invalid 0000-04-21 00:00:00"}, // month 20 in four bits
        {"99991231", "1807-12-31 00:00:00"},         // the year's field has twelve bits
        {"2021\000112"sv, "invalid 0000-04-21 00:00:00"},
    };
    for (const auto& [text, expected] : cases) {
        SCOPED_TRACE(text);
        EXPECT_EQ(Print(DateTimeTools::ParseDateYYYYMMDD(text)), expected);
    }
    const auto shortForm = [](std::string_view a_text) {
        return Print(DateTimeTools::ParseDateYYMMDD(a_text));
    };
    EXPECT_EQ(shortForm("491231"), "2049-12-31 00:00:00");
    EXPECT_EQ(shortForm("500101"), "1950-01-01 00:00:00");
    EXPECT_EQ(shortForm("0491231"), "none");
    EXPECT_EQ(shortForm("1x2345"), "invalid 2000-00-01 00:00:00");
    // Nothing after the text is read.
    EXPECT_EQ(shortForm("2103019999"sv.substr(0, 6)), "2021-03-01 00:00:00");
}

TEST(DateTimeToolsTest, ParseDateTime)
{
    const NDateTime day(2021, 3, 1, 22, 0, 0, 9);
    using DateTimeTools::ParseDateTime;
    const std::tuple<std::optional<NDateTime>, const char*> cases[] = {
        {ParseDateTime("20210301", "093015"), "2021-03-01 09:30:15"},
        {ParseDateTime("20210301", "abcdef"), "2021-03-01 00:00:00"},
        {ParseDateTime("20210301", "235960"), "invalid 2021-03-01 23:59:60"},
        {ParseDateTime("20210301", "0930150"), "none"},
        {ParseDateTime("2021031", "093015"), "none"},
        {ParseDateTime("00000000", "093015"), "none"},
        {ParseDateTime(day, "093015"), "2021-03-01 09:30:15"},
        {ParseDateTime(day, "000000093015"), "2021-03-01 09:30:15"},
        {ParseDateTime(day, ""), "2021-03-01 00:00:00"},
        {ParseDateTime(day, "4294967296"), "2021-03-01 00:00:00"}, // above 32 bits the read fails
        {ParseDateTime(NDateTime(2021, 2, 30), "093015"), "none"},
    };
    for (const auto& [found, expected] : cases)
        EXPECT_EQ(Print(found), expected);
    EXPECT_FALSE(ParseDateTime(day, "4294967295")->IsValid());
    EXPECT_EQ(ParseDateTime(day, "093015")->GetMilliSec(), 0U);
    EXPECT_FALSE(ParseDateTime(NDateTime(), "093015")->IsValid());
}

TEST(DateTimeToolsTest, ParseDateIso8601)
{
    for (const auto text : {"2021-03-01"sv, "2021-03-01T10:00:00Z"sv, "  2021- 03-\t01"sv, "+2021-+3-+1"sv,
                            "2021-03-01\0 and more"sv, "2021-03-011"sv.substr(0, 10)})
        EXPECT_EQ(DateTimeTools::ParseDateIso8601(text), NDateTime(2021, 3, 1)) << text;
    for (const auto text : {"4294969317-03-01"sv, "2021--3-01"sv, "99999999999999999999999-1-1"sv})
        EXPECT_FALSE(DateTimeTools::ParseDateIso8601(text).IsValid()) << text;
    for (const auto text :
         {""sv, "2021"sv, "2021-03"sv, "2021-03-"sv, "2021/03/01"sv, "2021-03-\0"sv, "\0002021-03-01"sv})
        EXPECT_EQ(kalvento::tests::RaisedText<std::invalid_argument>(
                      [text] { DateTimeTools::ParseDateIso8601(text); }),
                  "Niepoprawna data")
            << text;
}

// The templates that feeds and files were written with, run by the C library's own printf.
TEST(DateTimeToolsTest, PrintsAsTheTemplates)
{
    const auto narrow = [](const char* a_template, auto... a_parts) {
        char text[200];
        std::snprintf(text, sizeof(text), a_template, a_parts...);
        return std::string(text);
    };
    const auto wide = [&narrow](const char* a_template, auto... a_parts) {
        const std::string text = narrow(a_template, a_parts...);
        return std::wstring(text.begin(), text.end());
    };
    using namespace DateTimeTools;
    const unsigned numbers[] = {0, 7, 42, 365, 2021, 12345, std::numeric_limits<unsigned>::max()};
    std::mt19937 random(4);
    const auto pick = [&] { return numbers[random() % std::size(numbers)]; };
    for (int round = 0; round < 300; ++round) {
        const unsigned a = pick(), b = pick(), c = pick(), d = pick(), e = pick(), f = pick(), g = pick();
        EXPECT_EQ(FormatDate(a, b, c), narrow("%.2u%.2u%.2u", a, b, c));
        EXPECT_EQ(FormatDateW(a, b, c), wide("%.2u-%.2u-%.2u", a, b, c));
        EXPECT_EQ(FormatDateShort(a, b, c), narrow("%u%.2u%.2u", a, b, c));
        EXPECT_EQ(FormatDateShortW(a, b, c), wide("%u%.2u%.2u", a, b, c));
        EXPECT_EQ(FormatDateLongW(a, b, c), wide("%.4u-%.2u-%.2u", a, b, c));
        EXPECT_EQ(FormatDateTimeShort(a, b, c, d, e, f),
                  narrow("%.4u-%.2u-%.2u %.2u:%.2u:%.2u", a, b, c, d, e, f));
        EXPECT_EQ(FormatDateTimeShortW(a, b, c, d, e, f),
                  wide("%.4u-%.2u-%.2u %.2u:%.2u:%.2u", a, b, c, d, e, f));
        EXPECT_EQ(FormatDateTimeLong(a, b, c, d, e, f, g),
                  narrow("%.2u-%.2u-%u   %.2u:%.2u:%.2u  %u", a, b, c, d, e, f, g));
        EXPECT_EQ(FormatDateTimeLongW(a, b, c, d, e, f, g),
                  wide("%.2u-%.2u-%u   %.2u:%.2u:%.2u  %u", a, b, c, d, e, f, g));
        EXPECT_EQ(FormatTime(a, b, c), narrow("%.2u:%.2u:%.2u", a, b, c));
        EXPECT_EQ(FormatTimeW(a, b, c), wide("%.2u:%.2u:%.2u", a, b, c));
        EXPECT_EQ(FormatTimeShort(a, b), narrow("%.2u:%.2u", a, b));
        EXPECT_EQ(FormatTimeShortW(a, b), wide("%.2u:%.2u", a, b));
    }
}

TEST(DateTimeToolsTest, ClockGivesWholeSecondsOfToday)
{
    const NDateTime before = DateTimeTools::GetTickCount();
    const NDateTime today = DateTimeTools::GetCurrentDate();
    const auto parsed = DateTimeTools::ParseTime("235959");
    const std::wstring name = DateTimeTools::GenerateDateFileName();
    const std::wstring longName = DateTimeTools::GenerateDateTimeFileName();
    const NDateTime after = DateTimeTools::GetTickCount();

    EXPECT_TRUE(before.IsValid());
    EXPECT_EQ(before.GetMilliSec(), 0U);
    EXPECT_EQ(today.GetAbsoluteTime(), 0U);
    ASSERT_TRUE(parsed);
    EXPECT_EQ(parsed->GetAbsoluteTime(), 86399U);
    EXPECT_TRUE(std::regex_match(name, std::wregex(LR"(\d{4}_\d\d_\d\d\.txt)")));
    EXPECT_TRUE(std::regex_match(longName, std::wregex(LR"(\d{4}_\d\d_\d\d \d\d_\d\d_\d\d\.txt)")));
    if (before.SameDay(after)) {
        EXPECT_TRUE(today.SameDay(before));
        EXPECT_TRUE(parsed->SameDay(before));
    }
}

TEST(DateTimeToolsTest, LimitsOfCountingSessions)
{
    const NDateTime friday(2021, 8, 27, 10, 20, 30, 0);
    for (const unsigned sessions : {0U, 600000U, 2147483648U, 4294967295U})
        EXPECT_FALSE(DateTimeTools::GetDateFromForSessionCount(sessions, friday)) << sessions;
    EXPECT_FALSE(DateTimeTools::GetDateFromForSessionCount(1, NDateTime(2021, 2, 30)));
    EXPECT_EQ(Print(DateTimeTools::GetDateFromForSessionCount(1, NDateTime(100, 1, 1))),
              "0100-01-01 00:00:00");
    EXPECT_FALSE(DateTimeTools::GetDateFromForSessionCount(2, NDateTime(100, 1, 1)));

    const NDateTime saturday(2021, 8, 28);
    EXPECT_FALSE(DateTimeTools::GetSessionCountForDates(Shifted(saturday, 1), saturday));
    // Times of day don't count, so a later time of the same day is no later date.
    EXPECT_EQ(DateTimeTools::GetSessionCountForDates(friday, NDateTime(2021, 8, 27)), 1U);
    EXPECT_EQ(DateTimeTools::GetSessionCountForDates(NDateTime(1899, 12, 27), NDateTime(1900, 1, 5)), 8U);
    EXPECT_EQ(DateTimeTools::GetSessionCountForDates(NDateTime(), saturday), 0U);
    EXPECT_EQ(DateTimeTools::GetSessionCountForDates(saturday, NDateTime(2021, 2, 30)), 0U);
}

// Walks back a day at a time, as the rule says it in words. 2021-03-01 was a Monday.
TEST(DateTimeToolsTest, SessionsAgreeWithCountingDayByDay)
{
    for (int offset = 0; offset < 14; ++offset) {
        const NDateTime start = Shifted(NDateTime(2021, 3, 1, 15, 0, 0, 3), offset);
        NDateTime day = start;
        unsigned int sessions = 0;
        for (int back = 0; back < 800; ++back, day.ShiftDays(-1)) {
            const bool isSession = (offset - back + 7000) % 7 < 5;
            ASSERT_EQ(DateTimeTools::IsWeekend(day), !isSession);
            sessions += isSession ? 1 : 0;
            ASSERT_EQ(DateTimeTools::GetSessionCountForDates(day, start), sessions) << offset << ' ' << back;
            if (!isSession)
                continue;
            const auto found = DateTimeTools::GetDateFromForSessionCount(sessions, start);
            ASSERT_TRUE(found);
            ASSERT_EQ(Print(*found), Print(day)) << offset << ' ' << sessions;
            ASSERT_EQ(found->GetMilliSec(), 3U);
        }
    }
}

TEST(DateTimeToolsTest, ShiftTimeIfNeedMakesAStreamRise)
{
    NDateTime previous(2021, 3, 1, 10, 0, 0, 0);
    NDateTime later(2021, 3, 1, 10, 0, 1, 0);
    EXPECT_FALSE(DateTimeTools::ShiftTimeIfNeed(previous, later));
    EXPECT_EQ(later.GetMilliSec(), 0U);
    std::mt19937 random(9);
    for (int row = 0; row < 5000; ++row) {
        NDateTime time(2021, 3, 1, 10, 0, random() % 3, 0);
        const bool isLate = !(previous < time);
        ASSERT_EQ(DateTimeTools::ShiftTimeIfNeed(previous, time), isLate);
        ASSERT_TRUE(previous < time) << row;
        previous = time;
    }
}

TEST(DateTimeToolsTest, AddMonthsGoesFromMonthEndToMonthEnd)
{
    using namespace std::chrono;
    std::mt19937 random(6);
    const auto between = [&random](int a_low, int a_high) {
        return std::uniform_int_distribution<int>(a_low, a_high)(random);
    };
    const auto dateOf = [](year_month_day a_day) {
        return NDateTime(static_cast<unsigned long>(static_cast<int>(a_day.year())),
                         static_cast<unsigned>(a_day.month()), static_cast<unsigned>(a_day.day()));
    };
    for (int round = 0; round < 20000; ++round) {
        const year_month from = year(between(1400, 4095)) / between(1, 12);
        const day last = (from / std::chrono::last).day();
        const day start =
            round % 3 == 0
                ? last
                : day(static_cast<unsigned>(between(1, static_cast<int>(static_cast<unsigned>(last)))));
        const int count = round % 5 == 0 ? between(-120000, 120000) : between(-600, 600);
        const year_month to = from + months(count);
        if (to.year() < year(1400) || to.year() > year(9999)) {
            EXPECT_THROW(DateTimeTools::AddMonths(dateOf(from / start), count), boost::gregorian::bad_year)
                << count;
            continue;
        }
        const day newLast = (to / std::chrono::last).day();
        const day expected = start == last ? newLast : std::min(start, newLast);
        ASSERT_EQ(DateTimeTools::AddMonths(dateOf(from / start), count).ToDouble(),
                  dateOf(to / expected).ToDouble())
            << Print(dateOf(from / start)) << " and " << count;
    }
}

TEST(DateTimeToolsTest, WhatIsNoDateOfACalendarRaises)
{
    using namespace boost::gregorian;
    using namespace DateTimeTools;
    EXPECT_EQ(AddMonths(NDateTime(2021, 1, 31), (9999 - 2021) * 12 + 11).ToDouble(), 2958465.0);
    for (const int months : {std::numeric_limits<int>::max(), std::numeric_limits<int>::min()})
        EXPECT_THROW(AddMonths(NDateTime(2021, 1, 31), months), bad_year);
    EXPECT_THROW(AddMonths(NDateTime(1399, 12, 31), 1), bad_year);
    EXPECT_THROW(AddMonths(NDateTime(2021, 13, 1), 1), bad_month);
    EXPECT_THROW(AddMonths(NDateTime(2021, 2, 30), 1), bad_day_of_month);

    const NDateTime first(2021, 1, 1, 23, 0, 0, 0);
    EXPECT_TRUE(InAtLeastOneYearBetweenDates(first, NDateTime(2021, 12, 31)));
    EXPECT_FALSE(InAtLeastOneYearBetweenDates(first, NDateTime(2021, 12, 30)));
    EXPECT_TRUE(InAtLeastOneYearBetweenDates(NDateTime(2021, 12, 31), first));
    EXPECT_THROW(InAtLeastOneYearBetweenDates(NDateTime(), first), bad_year);
    EXPECT_THROW(InAtLeastOneYearBetweenDates(first, NDateTime(2021, 2, 30)), bad_day_of_month);
}

} // namespace
