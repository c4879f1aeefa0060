#include "platform/OleDate.h"
#include "platform/COleDateTime.h"
#include "platform/HResultCategory.h"
#include "support/Testing.h"

namespace {

using OleDate::CalendarParts;

constexpr int S_firstDay = -657434; // 0100-01-01
constexpr int S_lastDay = 2958465;  // 9999-12-31

auto Tuple(const CalendarParts& a_parts)
{
    return std::tuple(a_parts.year, a_parts.month, a_parts.day, a_parts.hour, a_parts.minute, a_parts.second);
}

CalendarParts Parts(std::uint32_t a_year, std::uint32_t a_month, std::uint32_t a_day,
                    std::uint32_t a_hour = 0, std::uint32_t a_minute = 0, std::uint32_t a_second = 0)
{
    return {a_year, a_month, a_day, a_hour, a_minute, a_second, 0, 0};
}

std::optional<OleDate::DayNumber> FromParts(const CalendarParts& a_parts)
{
    return OleDate::FromCalendar(a_parts.year, a_parts.month, a_parts.day, a_parts.hour, a_parts.minute,
                                 a_parts.second);
}

// Accepts nothing but what comes back the same: parts may run over into the next day, month and year.
bool SurvivesRoundTrip(const CalendarParts& a_parts)
{
    if (a_parts.month > 255 || a_parts.day > 255)
        return false;
    const std::chrono::year_month_day date(std::chrono::year(static_cast<int>(a_parts.year)),
                                           std::chrono::month(a_parts.month), std::chrono::day(a_parts.day));
    if (!date.month().ok())
        return false;
    const auto day = static_cast<double>(std::chrono::sys_days(date).time_since_epoch().count() + 25569);
    const double fraction =
        (static_cast<double>(a_parts.hour) * 3600 + a_parts.minute * 60.0 + a_parts.second) / 86400.0;
    const auto back = OleDate::ToCalendar(day >= 0.0 ? day + fraction : day - fraction);
    return back && Tuple(*back) == Tuple(a_parts);
}

TEST(OleDateTest, EveryDayOfTheCalendarFollowsTheOneBefore)
{
    CalendarParts expected = Parts(100, 1, 1);
    expected.dayOfWeek = 5;
    expected.dayOfYear = 1;
    for (int day = S_firstDay; day <= S_lastDay; ++day) {
        const auto read = OleDate::ToCalendar(day);
        const auto written = FromParts(expected);
        const bool isRight = read && written && Tuple(*read) == Tuple(expected) &&
                             read->dayOfWeek == expected.dayOfWeek && read->dayOfYear == expected.dayOfYear &&
                             written->value == day && written->dayOfYear == expected.dayOfYear;
        if (!isRight)
            FAIL() << day << ": " << expected.year << '-' << expected.month << '-' << expected.day;

        const bool isLeap = expected.year % 4 == 0 && (expected.year % 100 != 0 || expected.year % 400 == 0);
        const std::uint32_t lengths[] = {31, isLeap ? 29U : 28U, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
        expected.dayOfWeek = (expected.dayOfWeek + 1) % 7;
        ++expected.dayOfYear;
        if (++expected.day > lengths[expected.month - 1]) {
            expected.day = 1;
            if (++expected.month > 12) {
                expected.month = 1;
                expected.dayOfYear = 1;
                ++expected.year;
            }
        }
    }
}

// The ranges that decide are a shortcut for the round trip of the platform: both must say the same of any parts.
TEST(OleDateTest, AcceptsExactlyWhatSurvivesTheRoundTrip)
{
    const auto expectSame = [](const CalendarParts& a_parts) {
        const auto number = FromParts(a_parts);
        const bool survives = SurvivesRoundTrip(a_parts);
        if (number.has_value() != survives) {
            ADD_FAILURE() << a_parts.year << '-' << a_parts.month << '-' << a_parts.day << ' ' << a_parts.hour
                          << ':' << a_parts.minute << ':' << a_parts.second << " survives: " << survives;
        }
    };
    const auto huge = std::numeric_limits<unsigned long>::max(); // refused and not cut
    EXPECT_FALSE(OleDate::FromCalendar(huge, 1, 1, 0, 0, 0) || OleDate::FromCalendar(2021, huge, 1, 0, 0, 0));
    EXPECT_FALSE(OleDate::FromCalendar(65536 + 2021, 1, 1, 0, 0, 0) ||
                 OleDate::FromCalendar(2021, 1, 1, huge, huge, huge));
    for (const std::uint32_t year : {0U, 99U, 100U, 1900U, 2000U, 2021U, 4096U, 9999U, 10000U, 12000U}) {
        for (std::uint32_t month = 0; month <= 14; ++month) {
            for (std::uint32_t day = 0; day <= 33; ++day) {
                for (const std::uint32_t hour : {0U, 23U, 24U, 48U})
                    expectSame(Parts(year, month, day, hour));
                expectSame(Parts(year, month, day, 23, 59, 59));
                expectSame(Parts(year, month, day, 12, 60));
                expectSame(Parts(year, month, day, 12, 0, 60));
            }
        }
    }
    // Every second of the days where the fraction is coarsest, and about the turn of the sign.
    for (const auto& date : {Parts(100, 1, 1), Parts(1899, 12, 29), Parts(1899, 12, 30), Parts(1899, 12, 31),
                             Parts(2024, 2, 29), Parts(9999, 12, 31)}) {
        for (std::uint32_t second = 0; second < 86400; ++second)
            expectSame(Parts(date.year, date.month, date.day, second / 3600, second / 60 % 60, second % 60));
    }
    std::mt19937 random(7);
    const auto below = [&random](std::uint32_t a_limit) {
        return static_cast<std::uint32_t>(random() % a_limit);
    };
    for (int round = 0; round < 200000; ++round)
        expectSame(Parts(below(10100), below(14), below(33), below(25), below(61), below(61)));
}

TEST(OleDateTest, RoundsToTheNearestSecondAndCarries)
{
    const double half = 0.5 / 86400.0;
    const std::tuple<const char*, double, CalendarParts> cases[] = {
        {"below the half", 1000.0 + half * 0.99, Parts(1902, 9, 26)},
        {"over midnight", 1000.0 - half * 0.99, Parts(1902, 9, 26)},
        {"before midnight", 1000.0 - half * 1.01, Parts(1902, 9, 25, 23, 59, 59)},
        {"over the leap day", 43891.0 - half * 0.9, Parts(2020, 3, 1)},
        {"below zero, over midnight", -2.0 - (1.0 - half * 0.9), Parts(1899, 12, 29)},
        {"between -1 and 0 the time counts from day 0", -0.25, Parts(1899, 12, 30, 6)},
        {"the first day, late", -657434.0 - (1.0 - half * 0.5), Parts(100, 1, 2)},
    };
    for (const auto& [name, number, parts] : cases) {
        SCOPED_TRACE(name);
        const auto read = OleDate::ToCalendar(number);
        ASSERT_TRUE(read);
        EXPECT_EQ(Tuple(*read), Tuple(parts));
        const std::chrono::sys_days day(std::chrono::year(static_cast<int>(parts.year)) /
                                        static_cast<int>(parts.month) / static_cast<int>(parts.day));
        EXPECT_EQ(OleDate::ToSeconds(number), day.time_since_epoch().count() * 86400LL + parts.hour * 3600LL +
                                                  parts.minute * 60LL + parts.second);
    }
    // Ties go up.
    const auto tie = OleDate::ToCalendar(0.5 / 86400.0);
    ASSERT_TRUE(tie);
    EXPECT_EQ(tie->second, 1U);
}

TEST(OleDateTest, OutsideOfTheCalendar)
{
    const double inf = std::numeric_limits<double>::infinity();
    const double half = 0.5 / 86400.0;
    for (const double number : {-657435.0, std::nextafter(-657435.0, -inf), 2958466.0, 2958466.0 - half * 0.9,
                                1e300, -1e300, inf, -inf, std::nan("")}) {
        SCOPED_TRACE(number);
        EXPECT_FALSE(OleDate::ToCalendar(number));
        EXPECT_FALSE(OleDate::ToSeconds(number));
    }
    EXPECT_TRUE(OleDate::ToCalendar(2958466.0 - half * 1.1));
    EXPECT_TRUE(OleDate::ToCalendar(std::nextafter(-657435.0, 0.0)));
}

TEST(OleDateTest, ContinuousFormKeepsOrderAndComesBack)
{
    std::mt19937_64 random(3);
    std::uniform_int_distribution<std::int64_t> seconds(-657434LL * 86400, 86400LL * 1000);
    for (int round = 0; round < 100000; ++round) {
        const std::int64_t second = seconds(random);
        const auto day = static_cast<double>(second >= 0 ? second / 86400 : -((-second + 86399) / 86400));
        const double fraction = (static_cast<double>(second) - day * 86400.0) / 86400.0;
        const double number = day < 0.0 ? day - fraction : day + fraction;
        ASSERT_NEAR(OleDate::ToContinuous(number), static_cast<double>(second) / 86400.0, 1e-9);
        ASSERT_NEAR(OleDate::FromContinuous(OleDate::ToContinuous(number)), number, 1e-9);
    }
    // Within half a second below zero nothing moves.
    EXPECT_EQ(OleDate::ToContinuous(-5e-6), -5e-6);
    EXPECT_EQ(OleDate::FromContinuous(-5e-6), -5e-6);
    EXPECT_EQ(OleDate::ToContinuous(-6e-6), 6e-6);
}

TEST(COleDateTimeTest, StatusFollowsTheCalendar)
{
    EXPECT_EQ(COleDateTime(2021, 3, 1, 12, 0, 0).m_dt, 44256.5);
    EXPECT_EQ(COleDateTime(44256.5).GetStatus(), COleDateTime::valid);
    for (const auto& bad : {COleDateTime(2021, 2, 30, 0, 0, 0), COleDateTime(-1, 1, 1, 0, 0, 0),
                            COleDateTime(2021, 1, 1, 0, 0, -1)}) {
        EXPECT_EQ(bad.GetStatus(), COleDateTime::invalid);
        EXPECT_EQ(bad.m_dt, 0.0);
    }
}

TEST(HResultTest, CodesSayTheirNumber)
{
    EXPECT_EQ(static_cast<std::uint32_t>(HResult::MakeCode(HResult::S_fail).value()), 0x80004005U);
    EXPECT_EQ(HResult::MakeCode(HResult::S_fail).message(), "E_FAIL");
    EXPECT_EQ(HResult::MakeCode(0x80070005).message(), "HRESULT 0x80070005");
}

} // namespace
