#include "platform/TimeZone.h"

#include "support/Testing.h"

namespace {

std::int64_t At(int a_year, unsigned a_month, unsigned a_day, std::int64_t a_hour = 0,
                std::int64_t a_minute = 0, int a_second = 0)
{
    const std::chrono::sys_days day(std::chrono::year(a_year) / static_cast<int>(a_month) /
                                    static_cast<int>(a_day));
    return day.time_since_epoch().count() * 86400LL + a_hour * 3600 + a_minute * 60 + a_second;
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
    struct Case {
        const char* zone;
        std::int64_t utc;
        std::int64_t local;
    };
    const Case cases[] = {
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
