#include "platform/LocalZone.h"
#include "platform/TimeZone.h"
#include "support/Testing.h"

namespace {

using kalvento::internal::LocalZoneRule;
using kalvento::internal::MakeTime;
using kalvento::internal::ReadZoneRule;
using kalvento::internal::ToLocalSeconds;
using kalvento::internal::ToUtcSeconds;

std::int64_t At(int a_year, unsigned a_month, unsigned a_day, std::int64_t a_hour = 0,
                std::int64_t a_minute = 0, int a_second = 0)
{
    const std::chrono::sys_days day(std::chrono::year(a_year) / static_cast<int>(a_month) /
                                    static_cast<int>(a_day));
    return day.time_since_epoch().count() * 86400LL + a_hour * 3600 + a_minute * 60 + a_second;
}

// Written out, so that the conversions are tested apart from the machine's database.
LocalZoneRule Warsaw()
{
    return {3600, {{7200, {3, 5, 0, 7200}, {10, 5, 0, 10800}}}};
}

LocalZoneRule Sydney()
{
    return {36000, {{39600, {10, 1, 0, 7200}, {4, 1, 0, 10800}}}};
}

TEST(LocalZoneTest, RulesOfTheDatabase)
{
    const std::tuple<const char*, int, LocalZoneRule> cases[] = {
        {"Europe/Warsaw", 2030, Warsaw()},
        {"Australia/Sydney", 2021, Sydney()},
        // The database calls the Irish winter the exception; the greater offset is the daylight time all the same.
        {"Europe/Dublin", 2021, {0, {{3600, {3, 5, 0, 3600}, {10, 5, 0, 7200}}}}},
        {"Asia/Kolkata", 2021, {19800, {}}},
        // The clocks were put on in March 2016 and have stayed so: the offset at the end of the year holds.
        {"Europe/Istanbul", 2016, {10800, {}}},
        {"Nowhere/AtAll", 2021, {}},
        {"../../etc/passwd", 2021, {}},
        {"", 2021, {}}};
    for (const auto& [name, year, rule] : cases)
        EXPECT_EQ(ReadZoneRule(name, year), rule) << name;
}

TEST(LocalZoneTest, ToUtcTakesRepeatedAndSkippedHoursAsDaylightTime)
{
    const std::pair<std::int64_t, std::int64_t> cases[] = {
        {At(2021, 3, 28, 2), At(2021, 3, 28, 0)}, // skipped
        {At(2021, 3, 28, 2, 59, 59), At(2021, 3, 28, 0, 59, 59)},
        {At(2021, 3, 28, 3), At(2021, 3, 28, 1)},
        {At(2021, 10, 31, 2), At(2021, 10, 31, 0)}, // repeated
        {At(2021, 10, 31, 3), At(2021, 10, 31, 2)},
    };
    for (const auto& [local, utc] : cases) {
        SCOPED_TRACE(local);
        EXPECT_EQ(ToUtcSeconds(Warsaw(), local), utc);
    }
    EXPECT_EQ(ToUtcSeconds(Sydney(), At(2021, 4, 4, 2, 30)), At(2021, 4, 3, 15, 30));
    // A clock of the C library takes the repeated hour for standard time.
    EXPECT_EQ(MakeTime(Warsaw(), At(2021, 10, 31, 2, 30)), At(2021, 10, 31, 1, 30));
    EXPECT_EQ(MakeTime(Warsaw(), At(2021, 3, 28, 2, 30)), At(2021, 3, 28, 0, 30)); // skipped
}

TEST(LocalZoneTest, ThereAndBackIsTheSameButInTheRepeatedHour)
{
    for (const auto& rule : {Warsaw(), Sydney(), LocalZoneRule{19800, {}}}) {
        for (std::int64_t utc = At(2019, 1, 1); utc < At(2023, 1, 1); utc += 1799) {
            const std::int64_t local = ToLocalSeconds(rule, utc);
            const std::int64_t back = ToUtcSeconds(rule, local);
            if (back != utc) {
                ASSERT_EQ(back, utc - 3600);
                ASSERT_EQ(ToLocalSeconds(rule, back), local);
            }
            const auto made = MakeTime(rule, local);
            ASSERT_TRUE(made);
            if (*made != utc) {
                ASSERT_EQ(*made, utc + 3600);
                ASSERT_EQ(ToLocalSeconds(rule, *made), local);
            }
        }
    }
}

// In its own year the rule says what the database says.
TEST(LocalZoneTest, RuleAgreesWithTheDatabaseInItsOwnYear)
{
    for (const char* name : {"Europe/Warsaw", "Europe/Dublin", "America/New_York", "America/Santiago",
                             "Australia/Lord_Howe", "Australia/Sydney", "Asia/Beirut"}) {
        auto zone = TimeZone::Find(name);
        ASSERT_TRUE(zone);
        for (const int year : {2019, 2021, 2024}) {
            SCOPED_TRACE(std::string(name) + " " + std::to_string(year));
            const auto rule = ReadZoneRule(name, year);
            ASSERT_TRUE(rule.daylight);
            for (std::int64_t utc = At(year, 1, 2); utc < At(year, 12, 31); utc += 900)
                ASSERT_EQ(ToLocalSeconds(rule, utc), zone->ToLocal(utc)) << utc;
        }
    }
}

TEST(LocalZoneTest, EnvironmentDoesNotChangeTheMachinesZone)
{
    const auto before = kalvento::internal::ReadLocalZoneRule();
    const char* kept = std::getenv("TZ");
    const std::string old = kept != nullptr ? kept : "";
    for (const char* zone : {"America/New_York", "Asia/Tokyo", "WRONG5"}) {
        ::setenv("TZ", zone, 1);
        EXPECT_EQ(kalvento::internal::ReadLocalZoneRule(), before);
    }
    if (kept != nullptr)
        ::setenv("TZ", old.c_str(), 1);
    else
        ::unsetenv("TZ");
}

TEST(TimeZoneTest, UnknownNamesFindNothing)
{
    for (const char* name :
         {"", "Nowhere/AtAll", "../../etc/passwd", "Europe", "Europe/Warsaw ", "/etc/localtime"}) {
        SCOPED_TRACE(name);
        EXPECT_FALSE(TimeZone::Find(name));
    }
    const auto zone = TimeZone::Find("Europe/Warsaw");
    ASSERT_TRUE(zone);
    EXPECT_EQ(zone->GetName(), "Europe/Warsaw");
}

TEST(TimeZoneTest, EachYearHasItsOwnRule)
{
    const std::tuple<const char*, std::int64_t, std::int64_t> cases[] = {
        {"UTC", At(2021, 7, 1), At(2021, 7, 1)},
        {"Europe/Warsaw", At(2021, 3, 28, 1), At(2021, 3, 28, 3)},
        {"Europe/Warsaw", At(1970, 7, 1), At(1970, 7, 1, 1)},          // no summer time in that year
        {"America/New_York", At(2006, 3, 20, 12), At(2006, 3, 20, 7)}, // the summer began in April,
        {"America/New_York", At(2007, 3, 20, 12), At(2007, 3, 20, 8)}, // and in March a year later
        {"Pacific/Apia", At(2011, 12, 30, 9, 59, 59), At(2011, 12, 29, 23, 59, 59)}, // the day
        {"Pacific/Apia", At(2011, 12, 30, 10), At(2011, 12, 31)},                    // that never was
    };
    for (const auto& [name, utc, local] : cases) {
        SCOPED_TRACE(name);
        auto zone = TimeZone::Find(name);
        ASSERT_TRUE(zone);
        EXPECT_EQ(zone->ToLocal(utc), local);
        EXPECT_EQ(zone->ToUtc(local), utc);
    }
}

// What is remembered from the times before must not be seen in an answer.
TEST(TimeZoneTest, AnswersDontDependOnWhatWasAskedBefore)
{
    std::mt19937_64 random(5);
    std::uniform_int_distribution<std::int64_t> wide(At(1900, 1, 1), At(2037, 12, 1));
    std::uniform_int_distribution<std::int64_t> narrow(-7200, 7200);
    const std::int64_t turns[] = {At(2021, 3, 28, 1), At(2021, 10, 31, 1), At(2020, 10, 25, 1),
                                  At(2022, 3, 27, 1)};
    for (const char* name : {"Europe/Warsaw", "Australia/Lord_Howe", "Pacific/Apia"}) {
        SCOPED_TRACE(name);
        auto used = TimeZone::Find(name);
        ASSERT_TRUE(used);
        const auto unused = *used;
        for (int round = 0; round < 20000; ++round) {
            const std::int64_t moment =
                random() % 2 == 0 ? wide(random) : turns[random() % std::size(turns)] + narrow(random);
            auto fresh = unused;
            if (random() % 2 == 0) {
                ASSERT_EQ(used->ToLocal(moment), fresh.ToLocal(moment)) << moment;
            } else {
                ASSERT_EQ(used->ToUtc(moment), fresh.ToUtc(moment)) << moment;
            }
            const std::int64_t local = used->ToLocal(moment);
            const std::int64_t back = used->ToUtc(local);
            if (back != moment) {
                ASSERT_EQ(used->ToLocal(back), local) << moment;
            }
        }
    }
}

} // namespace
