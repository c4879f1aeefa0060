#include "time/DateTimeConverter.h"

#include "platform/CodePage.h"
#include "platform/LocalZone.h"
#include "support/RaisedText.h"
#include "support/Testing.h"
#include "time/DateTimeTools.h"
#include "time/LocalTime.h"

namespace {

using kalvento::internal::LocalZoneRule;

LocalZoneRule Warsaw()
{
    return {3600, {{7200, {3, 5, 0, 7200}, {10, 5, 0, 10800}}}};
}

NDateTime ToLocal(const NDateTime& a_utc, const LocalZoneRule& a_rule = Warsaw())
{
    return kalvento::internal::UtcToLocal(a_rule, a_utc.ToOle(), a_utc.GetMilliSec());
}

NDateTime ToUtc(const NDateTime& a_local, const LocalZoneRule& a_rule = Warsaw())
{
    return kalvento::internal::LocalToUtc(a_rule, a_local.ToOle(), a_local.GetMilliSec());
}

template<class Conversion>
std::string FailureOf(Conversion a_conversion)
{
    return kalvento::tests::RaisedText<std::runtime_error>(a_conversion);
}

TEST(DateTimeConverterTest, CounterGoesWithTheValue)
{
    const NDateTime utc(2021, 7, 1, 22, 30, 0, 5);
    const NDateTime local = ToLocal(utc);
    EXPECT_EQ(local.ToDouble(), NDateTime(2021, 7, 2, 0, 30, 0, 5).ToDouble());
    EXPECT_EQ(local.GetMilliSec(), 5U);
    EXPECT_EQ(ToUtc(local).ToDouble(), utc.ToDouble());
    // A counter of more than half a second rounds up on the way.
    EXPECT_EQ(ToLocal(NDateTime(2021, 7, 1, 10, 0, 0, 60000)).GetSecond(), 1U);
}

TEST(DateTimeConverterTest, LimitsOfTheConversion)
{
    const std::string wrong = "Błąd konwersji czasów"_cp1250;
    EXPECT_EQ(FailureOf([] { ToLocal(NDateTime(1600, 12, 31, 23, 59, 59, 0)); }), wrong);
    EXPECT_EQ(FailureOf([] { ToUtc(NDateTime(1601, 1, 1, 0, 59, 59, 0)); }), wrong) << "ends before 1601";
    EXPECT_EQ(FailureOf([] { ToUtc(NDateTime(1601, 1, 1, 1, 0, 0, 0)); }), "nothing raised");
    EXPECT_EQ(FailureOf([] { ToLocal(NDateTime(2021, 2, 30)); }), wrong);
    const COleDateTime wild(1e300, COleDateTime::valid);
    EXPECT_EQ(FailureOf([&] { kalvento::internal::UtcToLocal(Warsaw(), wild, 0); }), wrong);
    // The year 10000 is no year of the calendar.
    EXPECT_FALSE(ToLocal(NDateTime(9999, 12, 31, 23, 30, 0, 0)).IsValid());
}

TEST(DateTimeConverterTest, ZoneWithoutDaylightSavingIsUnknown)
{
    const LocalZoneRule kolkata = {19800, {}};
    const std::string unknown = "Nieznana strefa czasowa";
    EXPECT_EQ(FailureOf([&] { ToLocal(NDateTime(2021, 7, 1), kolkata); }), unknown);
    EXPECT_EQ(FailureOf([&] { ToUtc(NDateTime(2021, 7, 1), kolkata); }), unknown);
    EXPECT_EQ(FailureOf([&] { ToUtc(NDateTime(2021, 2, 30), kolkata); }), unknown)
        << "the zone is asked first";
    EXPECT_EQ(kalvento::internal::LocalTimeAt(kolkata, 0).ToDouble(),
              NDateTime(1970, 1, 1, 5, 30, 0, 0).ToDouble())
        << "the clock needs no daylight saving";
}

// The public forms are the same conversions with the machine's own zone, whatever it is.
TEST(DateTimeConverterTest, PublicFormsUseTheMachinesZone)
{
    const auto rule = kalvento::internal::ReadLocalZoneRule();
    const NDateTime time(2021, 7, 1, 10, 0, 0, 5);
    const auto outcome = [](auto a_conversion) {
        double day = 0.0;
        const std::string failure = FailureOf([&] { day = a_conversion().ToDouble(); });
        return std::pair(failure, day);
    };
    EXPECT_EQ(outcome([&] { return DateTimeConverter::ConvertFromUtcToLocal(time); }),
              outcome([&] { return ToLocal(time, rule); }));
    EXPECT_EQ(outcome([&] { return DateTimeConverter::ConvertFromLocalToUtc(time); }),
              outcome([&] { return ToUtc(time, rule); }));
    EXPECT_EQ(outcome([] { return DateTimeConverter::ConvertFromUnixSecondToLocalDateTime(1625133600); }),
              outcome([&] { return ToLocal(NDateTime(2021, 7, 1, 10, 0, 0, 0), rule); }));
    EXPECT_EQ(FailureOf([] { EXPECT_TRUE(DateTimeTools::GetCurrentUtcTime().IsValid()); }),
              rule.daylight ? "nothing raised" : "Nieznana strefa czasowa");
}

TEST(DateTimeConverterTest, UnixSecondsComeBack)
{
    std::mt19937 random(12);
    std::uniform_int_distribution<long> seconds(std::numeric_limits<std::int32_t>::min(),
                                                std::numeric_limits<std::int32_t>::max());
    for (int round = 0; round < 100000; ++round) {
        const long second = seconds(random);
        const auto time = DateTimeConverter::ConvertFromUnixSecondToUtcDateTime(second);
        ASSERT_EQ(DateTimeConverter::ConvertFromUtcDateTimeToUnixSecond(time), second);
        ASSERT_EQ(kalvento::internal::LocalTimeAt({}, second).ToDouble(), time.ToDouble());
    }
    for (const long outside :
         {253402300800L, std::numeric_limits<long>::max(), std::numeric_limits<long>::min()})
        EXPECT_FALSE(DateTimeConverter::ConvertFromUnixSecondToUtcDateTime(outside).IsValid()) << outside;
}

TEST(DateTimeConverterTest, ToUnixSecondsRoundsAndStaysIn32Bits)
{
    const auto convert = DateTimeConverter::ConvertFromUtcDateTimeToUnixSecond;
    EXPECT_EQ(convert(NDateTime(2021, 7, 1, 10, 0, 0, 57000)), 1625133600);
    EXPECT_EQ(convert(NDateTime(2021, 7, 1, 10, 0, 0, 58000)), 1625133601);
    EXPECT_EQ(convert(NDateTime(2038, 1, 19, 3, 14, 8, 0)), 2147483647);
    EXPECT_EQ(convert(NDateTime(100, 1, 1)), -2147483648L);
    using kalvento::internal::NDateTimeWords;
    EXPECT_EQ(convert(NDateTimeWords::Make(std::nan(""), 0, 0, 0)), -2147483648L);
    EXPECT_EQ(convert(NDateTimeWords::Make(1e300, 0, 0, 0)), 2147483647);
}

} // namespace
