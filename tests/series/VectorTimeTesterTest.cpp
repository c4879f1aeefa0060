#include "series/VectorTimeTester.h"

#include "series/SeriesTestTools.h"
#include "support/Testing.h"

using namespace kalvento::tests;

TEST(VectorTimeTesterTest, IntegrityTable)
{
    const NDateTime day = At(17, 0);
    const NDateTime otherDay(2021, 3, 5);
    const NDateTime yesterday(2021, 3, 3, 10, 0, 0, 0);
    const std::tuple<const char*, std::vector<NDateTime>, const NDateTime*, bool> table[] = {
        {"no times", {}, &otherDay, true},
        {"one time of another day", {At(10, 0)}, &otherDay, true},
        {"equal neighbours", {At(10, 0), At(10, 0), At(10, 1)}, &day, true},
        {"backwards", {At(10, 1), At(10, 0)}, nullptr, false},
        {"backwards by the counter", {At(10, 0, 0, 2), At(10, 0, 0, 1)}, nullptr, false},
        {"backwards at the end", {At(10, 0), At(10, 1), At(10, 0, 30)}, &day, false},
        {"begins the day before", {yesterday, At(10, 0)}, &day, false},
        {"ends the day after", {At(10, 0), otherDay}, &day, false},
        {"any days without a day", {yesterday, otherDay}, nullptr, true},
    };
    for (const auto& [what, times, dayOfAll, passes] : table)
        EXPECT_EQ(passes, VectorTimeTester::CheckIntegrity(times, dayOfAll)) << what;
}

TEST(VectorTimeTesterTest, RangesAreWholeDays)
{
    const std::vector<NDateTime> times{At(10, 0)};
    const NDateTime before(2021, 3, 3, 23, 59, 59, 0);
    const NDateTime after(2021, 3, 5);
    EXPECT_TRUE(VectorTimeTester::ChangeRange({}, before, after));
    EXPECT_FALSE(VectorTimeTester::ChangeRange(times, before, after));
    EXPECT_FALSE(VectorTimeTester::ChangeRange(times, At(23, 0), At(1, 0)))
        << "the same day, times of day don't count";
    EXPECT_TRUE(VectorTimeTester::ChangeRange(times, before, before));
    EXPECT_TRUE(VectorTimeTester::ChangeRange(times, after, before));
}

TEST(VectorTimeTesterTest, DayNumbersBeyondEveryIntegerAreNoTrap)
{
    const auto raw = [](double a_dayNumber) {
        return kalvento::internal::NDateTimeWords::Make(a_dayNumber, COleDateTime::valid, 0, 0);
    };
    const std::vector<NDateTime> times{raw(1e300), raw(-1e300), raw(std::nan(""))};
    EXPECT_TRUE(VectorTimeTester::ChangeRange(times, At(0, 0), At(0, 0)));
    EXPECT_FALSE(VectorTimeTester::ChangeRange(times, raw(0.0), raw(HUGE_VAL)));
}
