#include "assets/RangeData.h"

#include "settings/Settings.h"
#include "support/Testing.h"

namespace {

const NDateTime S_first(2021, 3, 1);
const NDateTime S_second(2021, 3, 2);

NDateTime Invalid()
{
    return {2021, 2, 30};
}

// Exact, where operator== of the time lets half a second pass.
bool Same(const NDateTime& a_left, const NDateTime& a_right)
{
    return a_left.ToDouble() == a_right.ToDouble() && a_left.GetMilliSec() == a_right.GetMilliSec() &&
           a_left.IsValid() == a_right.IsValid();
}

} // namespace

TEST(RangeDataTest, RefusedDatesChangeNothing)
{
    const NDateTime from(2021, 2, 28, 12, 0, 0, 0);
    const NDateTime to(2021, 3, 5, 12, 0, 0, 7);
    RangeData range(from, to);
    EXPECT_FALSE(range.SetDates(S_second, S_first));
    EXPECT_FALSE(range.SetDates(Invalid(), S_second));
    EXPECT_FALSE(range.SetDates(S_first, Invalid()));
    EXPECT_FALSE(range.SetDateFrom(NDateTime(2021, 3, 6)));
    EXPECT_FALSE(range.SetDateTo(NDateTime(2021, 2, 27)));
    EXPECT_FALSE(range.SetDateFrom(Invalid()) || range.SetDateTo(Invalid()));
    EXPECT_TRUE(Same(range.GetDates().from, from));
    EXPECT_TRUE(Same(range.GetDates().to, to));
    // Both ends may fall on one day.
    EXPECT_TRUE(range.SetDateFrom(NDateTime(2021, 3, 5, 23, 59, 59, 0)));
    EXPECT_TRUE(Same(RangeData().GetDates().to, NDateTime(2099, 12, 31))) << "the end of time";
}

// Whatever is set, a valid range stays one, made of whole days.
TEST(RangeDataTest, SettersKeepARangeValid)
{
    std::mt19937 random(20210301);
    std::uniform_int_distribution<unsigned int> day(0, 31);
    std::uniform_int_distribution<unsigned int> hour(0, 23);
    std::uniform_int_distribution<int> operation(0, 2);
    RangeData range(S_first, S_second);
    for (int step = 0; step < 2000; ++step) {
        const NDateTime one(2021, 3, day(random), hour(random), 0, 0, 0);
        const NDateTime other(2021, 3, day(random), hour(random), 0, 0, 0);
        switch (operation(random)) {
        case 0:
            range.SetDates(one, other);
            break;
        case 1:
            range.SetDateFrom(one);
            break;
        default:
            range.SetDateTo(other);
        }
        ASSERT_TRUE(range.Validate()) << step;
        ASSERT_EQ(range.GetDates().from.GetAbsoluteTime(), 0U) << step;
        ASSERT_EQ(range.GetDates().to.GetAbsoluteTime(), 0U) << step;
    }
}

// A day lies in the narrowed range exactly if it lies in both.
TEST(RangeDataTest, NarrowingGivesTheCommonDays)
{
    const auto holds = [](const RangeData& a_range, const NDateTime& a_day) {
        return a_range.GetDates().from <= a_day && a_day <= a_range.GetDates().to;
    };
    for (unsigned int from = 1; from <= 6; ++from) {
        for (unsigned int to = from; to <= 6; ++to) {
            const RangeData mine(NDateTime(2021, 3, 3), NDateTime(2021, 3, 4));
            const RangeData other(NDateTime(2021, 3, from), NDateTime(2021, 3, to));
            RangeData narrowed = other;
            mine.GetMinRangeData(narrowed);
            bool anyDay = false;
            for (unsigned int day = 1; day <= 6; ++day) {
                const NDateTime date(2021, 3, day);
                EXPECT_EQ(holds(narrowed, date), holds(mine, date) && holds(other, date))
                    << from << '-' << to << ": " << day;
                anyDay = anyDay || holds(narrowed, date);
            }
            EXPECT_EQ(narrowed.Validate(), anyDay) << from << '-' << to;
        }
    }
}

TEST(RangeDataTest, StoredFormKeepsHoursAndCounters)
{
    const RangeData written(NDateTime(2021, 3, 1, 14, 30, 5, 65535), NDateTime(2021, 3, 1, 9, 0, 0, 12));
    Settings settings;
    written.SerializeState(settings);
    EXPECT_EQ(static_cast<unsigned int>(settings["From"]["Millisecond"]), 65535U);
    EXPECT_EQ(static_cast<int>(static_cast<double>(settings["To"]["DateTime"])), 44256);

    const RangeData read(settings);
    EXPECT_TRUE(read.GetDates().from == written.GetDates().from);
    EXPECT_TRUE(read.GetDates().to == written.GetDates().to);
    EXPECT_EQ(read.Validate(), written.Validate());
}
