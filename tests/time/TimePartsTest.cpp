#include "time/TimeParts.h"

#include "time/TimeMaker.h"

#include <algorithm>
#include <bit>
#include <gtest/gtest.h>
#include <random>
#include <tuple>

using kalvento::internal::NDateTimeWords;
using kalvento::internal::TimeMaker;

namespace {

auto BitsOf(const NDateTime& a_time)
{
    return std::tuple(std::bit_cast<std::uint64_t>(a_time.ToDouble()), a_time.IsValid(),
                      NDateTimeWords::Calendar(a_time), NDateTimeWords::Clock(a_time));
}

} // namespace

TEST(TimePartsTest, SecondsComeBackAndTheFastWayGivesTheSameBits)
{
    std::mt19937_64 random(4);
    std::uniform_int_distribution<std::int64_t> anywhere(-59'011'459'200,
                                                         67'090'118'399); // years 100 to 4095
    std::uniform_int_distribution<std::int64_t> nearby(-40'000, 40'000);
    TimeMaker maker;
    std::int64_t second = 0;
    for (int time = 0; time < 20000; ++time) {
        second = time % 8 == 0 ? anywhere(random)
                               : std::clamp(second + nearby(random), anywhere.min(), anywhere.max());
        SCOPED_TRACE(second);
        NDateTime made = TimeParts::TimeOf(second);
        ASSERT_EQ(BitsOf(maker.Make(second)), BitsOf(made));
        ASSERT_EQ(TimeParts::SecondOf(made), second);
        ASSERT_EQ(TimeParts::DayOf(made), TimeParts::DayOf(second));
        const NDateTime next = TimeMaker::NextStep(made);
        made.ShiftMilliSec();
        ASSERT_EQ(BitsOf(next), BitsOf(made));
    }
}
