#include "assets/RangeData.h"

#include "support/StoredForm.h"

namespace {

const NDateTime S_first(2021, 3, 1);
const NDateTime S_second(2021, 3, 2);
const NDateTime S_invalid(2021, 2, 30);

// Exact, where operator== of the time lets half a second pass.
auto BitsOf(const RangeData::Dates& a_dates)
{
    return std::tuple(a_dates.from.ToDouble(), a_dates.from.IsValid(), a_dates.to.ToDouble(),
                      a_dates.to.IsValid());
}

} // namespace

TEST(RangeDataTest, RefusedDatesChangeNothing)
{
    const RangeData before(NDateTime(2021, 2, 28, 12, 0, 0, 0), NDateTime(2021, 3, 5, 12, 0, 0, 7));
    RangeData range = before;
    EXPECT_FALSE(range.SetDates(S_second, S_first) || range.SetDates(S_invalid, S_second) ||
                 range.SetDates(S_first, S_invalid));
    EXPECT_FALSE(range.SetDateFrom(NDateTime(2021, 3, 6)) || range.SetDateTo(NDateTime(2021, 2, 27)));
    EXPECT_FALSE(range.SetDateFrom(S_invalid) || range.SetDateTo(S_invalid));
    EXPECT_EQ(BitsOf(range.GetDates()), BitsOf(before.GetDates()));
    EXPECT_TRUE(range.SetDates(S_first, S_second) && range.SetDateFrom(S_second) && range.SetDateTo(S_second))
        << "both ends may fall on one day";
    EXPECT_EQ(RangeData().GetDates().to.ToDouble(), NDateTime(2099, 12, 31).ToDouble()) << "the end of time";
}

// Whatever is set, a valid range stays one, made of whole days.
TEST(RangeDataTest, SettersKeepARangeValid)
{
    std::mt19937 random(20210301);
    const auto anyTime = [&] { return NDateTime(2021, 3, random() % 32, random() % 24, 0, 0, 0); };
    RangeData range(S_first, S_second);
    for (int step = 0; step < 2000; ++step) {
        if (random() % 3 == 0)
            range.SetDates(anyTime(), anyTime());
        else
            random() % 2 == 0 ? range.SetDateFrom(anyTime()) : range.SetDateTo(anyTime());
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

TEST(RangeDataTest, StoredFormKeepsHoursAndAWrongOrder)
{
    ExpectStoredAs(RangeData(NDateTime(2021, 3, 1, 18, 0, 0, 0), NDateTime(2021, 3, 1, 9, 0, 0, 0)),
                   "<settings><From><DateTime>44256.75</DateTime><Millisecond>0</Millisecond></From>"
                   "<To><DateTime>44256.375</DateTime><Millisecond>0</Millisecond></To></settings>");
}
