#include "time/NDateTime.h"

#include "platform/CTime.h"
#include "platform/HResultCategory.h"
#include "settings/Settings.h"
#include "support/Testing.h"
#include "time/LocalTime.h"

#include <system_error>

namespace {

constexpr double S_second = 1.0 / 86400.0;
constexpr double S_half = S_second / 2;

// Year, month, day, hour, minute, second, counter, day of the year.
using Eight = std::array<unsigned long, 8>;

Eight Fields(const NDateTime& a_time)
{
    return Eight{a_time.GetYear(),   a_time.GetMonth(),  a_time.GetDay(),      a_time.GetHour(),
                 a_time.GetMinute(), a_time.GetSecond(), a_time.GetMilliSec(), a_time.GetDayOfYear()};
}

TEST(NDateTimeTest, StoredBytes)
{
    using Bytes = std::array<unsigned char, 24>;
    const auto bytesOf = [](const NDateTime& a_time) {
        Bytes bytes{};
        std::memcpy(bytes.data(), &a_time, bytes.size());
        return bytes;
    };
    EXPECT_EQ(bytesOf(NDateTime()), Bytes{});
    EXPECT_EQ(bytesOf(NDateTime(2021, 3, 1, 10, 0, 0, 5)),
              (Bytes{0x9A, 0x55, 0x55, 0x55, 0x0D, 0x9C, 0xE5, 0x40, 0, 0, 0, 0, 0, 0, 0, 0, //
                     0xE5, 0x37, 0x41, 0x01, 0x40, 0x01, 0x00, 0x0F}));
    EXPECT_EQ(bytesOf(NDateTime(1899, 12, 28, 18, 0, 0, 0)),
              (Bytes{0,    0,    0,    0,    0, 0, 0x06, 0xC0, 0, 0, 0, 0, 0, 0, 0, 0, //
                     0x6B, 0xC7, 0x5C, 0x02, 0, 0, 0x80, 0x5A}));
    EXPECT_EQ(bytesOf(NDateTime(2021, 2, 30)),
              (Bytes{0,    0,    0,    0, 0, 0, 0, 0, 0x01, 0, 0, 0, 0, 0, 0, 0, //
                     0xE5, 0x27, 0x1E, 0, 0, 0, 0, 0}));
}

TEST(NDateTimeTest, EmptyIsAllZeroAndValid)
{
    EXPECT_TRUE(NDateTime() == NDateTime::Empty());
    EXPECT_TRUE(NDateTime().IsValid());
    // Whatever lies within half a second of day 0 without a counter is empty.
    EXPECT_TRUE(NDateTime(1899, 12, 30).IsEmpty());
    EXPECT_FALSE(NDateTime(1899, 12, 30, 0, 0, 1, 0).IsEmpty());
    EXPECT_FALSE(NDateTime(1899, 12, 30, 0, 0, 0, 1).IsEmpty());
    EXPECT_FALSE(NDateTime(2021, 2, 30).IsEmpty());
}

TEST(NDateTimeTest, FieldsStayAsGivenWhereTheCalendarIsBroken)
{
    const std::tuple<NDateTime, bool, unsigned long, unsigned long, unsigned long> cases[] = {
        {NDateTime(2021, 2, 30), false, 2021, 30, 0},
        {NDateTime(2020, 2, 29), true, 2020, 29, 60},
        {NDateTime(100, 1, 1), true, 100, 1, 1},
        {NDateTime(9999, 12, 31), true, 9999 & 0xFFF, 31, 365},
        {NDateTime(4096, 12, 31), true, 0, 31, 366},
        {NDateTime(2021, 1, 33), false, 2021, 1, 0}, // cut to five bits
        {NDateTime(2021, 1, 1, 24, 0, 0, 0), false, 2021, 1, 0},
        {NDateTime(2021, 1, 1, 0, 0, 60, 0), false, 2021, 1, 0},
    };
    for (std::size_t place = 0; place < std::size(cases); ++place) {
        SCOPED_TRACE(place);
        const auto& [time, isValid, year, day, dayOfYear] = cases[place];
        EXPECT_EQ(time.IsValid(), isValid);
        EXPECT_EQ(time.GetYear(), year);
        EXPECT_EQ(time.GetDay(), day);
        EXPECT_EQ(time.GetDayOfYear(), dayOfYear);
    }
    EXPECT_EQ(NDateTime(5000, 6, 1).ToDouble(), 1132405.0);
}

// From 57871 on a counter weighs more than half a second: whatever breaks the value down gives the next second.
TEST(NDateTimeTest, GreatCountersRoundUpWhenReadAgain)
{
    for (const unsigned long counter : {1UL, 57869UL, 57871UL, 65535UL}) {
        SCOPED_TRACE(counter);
        const bool isUp = counter >= 57871;
        NDateTime time(2021, 12, 31, 23, 59, 59, counter);
        EXPECT_EQ(Fields(time), (Eight{2021, 12, 31, 23, 59, 59, counter, 365}));
        EXPECT_EQ(NDateTime::FromDouble(time.ToDouble()).GetYear(), isUp ? 2022U : 2021U);
        EXPECT_EQ(NDateTime::FromCOle(time.ToOle()).GetSecond(), isUp ? 0U : 59U);
        EXPECT_EQ(time.GetDayOfWeek(), isUp ? 7 : 6);
        EXPECT_EQ(time.GetAbsoluteDay(), 44561);

        NDateTime byDays = time;
        byDays.ShiftDays(1);
        EXPECT_EQ(Fields(byDays), isUp ? (Eight{2022, 1, 2, 23, 59, 59, counter, 2})
                                       : (Eight{2022, 1, 1, 23, 59, 59, counter, 1}));
        NDateTime bySeconds = time;
        bySeconds.ShiftSec(0);
        EXPECT_EQ(Fields(bySeconds), isUp ? (Eight{2022, 1, 1, 0, 0, 0, counter, 1})
                                          : (Eight{2021, 12, 31, 23, 59, 59, counter, 365}));
    }
}

TEST(NDateTimeTest, FromDoubleTakesTheDigitsOfTheFraction)
{
    const auto counterOf = [](double a_number) { return NDateTime::FromDouble(a_number).GetMilliSec(); };
    EXPECT_EQ(counterOf(44256.0), 0U);
    EXPECT_EQ(counterOf(0.5 + S_second), 15740U);
    EXPECT_EQ(counterOf(0.9), 0U);
    // Negative digits wrap around 64 bits: (2^64 - 2500015740) modulo 100000, of which the field keeps 16 bits.
    EXPECT_EQ(counterOf(-1.25 - 1.5741e-6), 35876U);
}

TEST(NDateTimeTest, FromDoubleGivesWholeSecondsNearTheNumber)
{
    std::mt19937_64 random(1);
    std::uniform_real_distribution<double> numbers(-657434.9, 2958465.9);
    for (int round = 0; round < 100000; ++round) {
        const double number = numbers(random);
        const auto time = NDateTime::FromDouble(number);
        ASSERT_TRUE(time.IsValid());
        ASSERT_LE(std::abs(OleDate::ToContinuous(time.ToDouble()) - OleDate::ToContinuous(number)),
                  S_half * 1.001);
        const auto again = NDateTime::FromCOle(time.ToOle());
        ASSERT_EQ(again.ToDouble(), time.ToDouble());
        ASSERT_EQ(again.GetAbsoluteTime(), time.GetAbsoluteTime());
        ASSERT_EQ(again.GetDayOfYear(), time.GetDayOfYear());
    }
}

TEST(NDateTimeTest, NumbersOutsideOfTheCalendarAreInvalidAndHarmless)
{
    const double inf = std::numeric_limits<double>::infinity();
    for (const double number : {-657435.0, 2958466.0, -inf, std::nan("")}) {
        SCOPED_TRACE(number);
        EXPECT_EQ(Fields(NDateTime::FromDouble(number)), Eight{});
        EXPECT_FALSE(NDateTime::FromDouble(number).IsValid());
        EXPECT_FALSE(NDateTime::FromCOle(COleDateTime(number, COleDateTime::valid)).IsValid());
    }
    const auto wild = [](double a_number) {
        return kalvento::internal::NDateTimeWords::Make(a_number, COleDateTime::valid, 0, 0);
    };
    EXPECT_EQ(wild(1e300).GetAbsoluteDay(), std::numeric_limits<int>::max());
    EXPECT_EQ(wild(-inf).GetAbsoluteDay(), std::numeric_limits<int>::min());
    EXPECT_EQ(wild(std::nan("")).GetAbsoluteDay(), 0);
    EXPECT_EQ(wild(inf).GetDayOfWeek(), -1);
    EXPECT_FALSE(wild(std::nan("")) == wild(std::nan("")));
    EXPECT_FALSE(wild(std::nan("")) < wild(0.0));
}

TEST(NDateTimeTest, DaysOfAValue)
{
    EXPECT_EQ(NDateTime(2021, 8, 29).GetDayOfWeek(), 1); // a Sunday
    EXPECT_EQ(NDateTime(1899, 12, 29, 6, 0, 0, 0).GetDayOfWeek(), 6);
    EXPECT_EQ(NDateTime(1899, 12, 28, 18, 0, 0, 0).GetAbsoluteDay(), -2); // cut toward zero
    EXPECT_TRUE(NDateTime(2021, 3, 1).SameDay(NDateTime(2021, 3, 1, 23, 59, 59, 65535)));
    EXPECT_FALSE(NDateTime(2021, 3, 1).SameDay(NDateTime(2021, 3, 2)));
    EXPECT_TRUE(NDateTime(2021, 2, 30).SameDay(NDateTime())); // the status isn't looked at
}

TEST(NDateTimeTest, ShiftsComeBackAndAddUp)
{
    std::mt19937_64 random(2);
    std::uniform_real_distribution<double> numbers(-300000.0, 300000.0);
    std::uniform_int_distribution<int> days(-100000, 100000);
    for (int round = 0; round < 20000; ++round) {
        const auto start = NDateTime::FromDouble(std::round(numbers(random) * 86400.0) / 86400.0);
        const int step = days(random);
        const int next = days(random);

        NDateTime there = start;
        there.ShiftDays(step);
        ASSERT_EQ(there.GetAbsoluteTime(), start.GetAbsoluteTime());
        NDateTime back = there;
        ASSERT_EQ(Fields(back.ShiftDays(-step)), Fields(start)) << start.ToDouble() << " by " << step;

        NDateTime inTwo = there;
        inTwo.ShiftDays(next);
        NDateTime atOnce = start;
        atOnce.ShiftDays(step + next);
        ASSERT_EQ(Fields(inTwo), Fields(atOnce)) << start.ToDouble();

        NDateTime bySeconds = start;
        bySeconds.ShiftSec(step);
        NDateTime secondsBack = bySeconds;
        secondsBack.ShiftSec(-step);
        ASSERT_EQ(Fields(secondsBack), Fields(start)) << start.ToDouble() << " by " << step;
        // The fields of a shifted value are those of its own day number.
        const auto read = NDateTime::FromCOle(bySeconds.ToOle());
        ASSERT_EQ(read.GetAbsoluteTime(), bySeconds.GetAbsoluteTime());
        ASSERT_EQ(read.GetDayOfYear(), bySeconds.GetDayOfYear());
    }
}

TEST(NDateTimeTest, UnreadableShiftsLeaveAllOnes)
{
    NDateTime byDays(9999, 12, 31, 10, 20, 30, 40);
    byDays.ShiftDays(1);
    EXPECT_EQ(Fields(byDays), (Eight{4095, 15, 31, 10, 20, 30, 40, 511}));
    EXPECT_TRUE(byDays.IsValid()) << "only the constructors and SetTime set the status";
    NDateTime bySeconds(9999, 12, 31, 23, 59, 59, 40);
    bySeconds.ShiftSec(1);
    EXPECT_EQ(Fields(bySeconds), (Eight{4095, 15, 31, 31, 63, 63, 40, 511}));
    NDateTime invalid(2021, 2, 30, 1, 2, 3, 4);
    invalid.ShiftDays(1);
    EXPECT_EQ(Fields(invalid), (Eight{4095, 15, 31, 1, 2, 3, 4, 511}));
    for (const int days : {std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        NDateTime far(2021, 3, 1);
        far.ShiftDays(days);
        far.ShiftDays(days);
        EXPECT_EQ(far.GetYear(), 4095U);
        EXPECT_EQ(far.GetDayOfWeek(), -1);
    }
}

TEST(NDateTimeTest, ShiftMilliSecStepsFieldAndNumber)
{
    NDateTime time(2021, 3, 1, 10, 0, 0, 65534);
    for (const unsigned long counter : {65535UL, 0UL}) {
        const double before = time.ToDouble();
        time.ShiftMilliSec();
        EXPECT_EQ(Fields(time), (Eight{2021, 3, 1, 10, 0, 0, counter, 60}));
        EXPECT_GT(time.ToDouble(), before);
    }
    EXPECT_EQ(NDateTime::ShiftDoubleByMilliSec(2.0, -3), 2.0 - 3 / 1e10);
}

TEST(NDateTimeTest, SetTime)
{
    NDateTime time(2021, 3, 1, 10, 0, 0, 5);
    const NDateTime before = time;
    time.SetTime(24, 0, 0);
    time.SetTime(0, 60, 0);
    time.SetTime(0, 0, 4294967295U);
    EXPECT_EQ(Fields(time), Fields(before));
    EXPECT_EQ(time.ToDouble(), before.ToDouble());
    time.SetTime(23, 59, 58);
    EXPECT_EQ(Fields(time), (Eight{2021, 3, 1, 23, 59, 58, 5, 60}));
    EXPECT_EQ(time.ToDouble(), NDateTime(2021, 3, 1, 23, 59, 58, 0).ToDouble())
        << "the counter's share is lost";
    // An empty date takes a time, a wrong one keeps wrong.
    for (const auto& [date, valid] :
         {std::pair(NDateTime(), true), std::pair(NDateTime(2021, 2, 30), false)}) {
        NDateTime noon = date;
        noon.SetTime(12, 0, 0);
        EXPECT_EQ(noon.GetHour(), 12U);
        EXPECT_EQ(noon.IsValid(), valid);
    }
}

// The strict test by day number comes first, so the order is not a mirror: that is what the ordering of rows rests on.
TEST(NDateTimeTest, OrderIsAsymmetricWithinHalfASecond)
{
    const auto at = [](double a_seconds, unsigned long a_counter) {
        return kalvento::internal::NDateTimeWords::Make(44256.0 + a_seconds * S_second, COleDateTime::valid,
                                                        0, static_cast<std::uint32_t>(a_counter << 6U));
    };
    const std::tuple<const char*, NDateTime, NDateTime, bool, bool, bool> cases[] = {
        {"earlier within the tolerance: less and equal", at(0, 5), at(0.4, 5), true, false, true},
        {"earlier, greater counter: less and greater", at(0, 6), at(0.4, 5), true, true, false},
        {"later, smaller counter: less and greater", at(0.4, 5), at(0, 6), true, true, false},
        {"later within the tolerance: greater and equal", at(0.4, 5), at(0, 5), false, true, true},
        {"just inside", at(0.49, 5), at(0, 6), true, true, false},
    };
    for (const auto& [name, left, right, isLess, isGreater, isEqual] : cases) {
        SCOPED_TRACE(name);
        EXPECT_EQ(left < right, isLess);
        EXPECT_EQ(left > right, isGreater);
        EXPECT_EQ(left == right, isEqual);
        EXPECT_EQ(left != right, !isEqual);
        EXPECT_EQ(left <= right, isLess || isEqual);
        EXPECT_EQ(left >= right, isGreater || isEqual);
        EXPECT_EQ(right > left, isLess);
    }
}

TEST(NDateTimeTest, StatusDecidesWhatIsNear)
{
    const auto make = [](double a_number, int a_status, std::uint32_t a_counter) {
        return kalvento::internal::NDateTimeWords::Make(a_number, a_status, 0, a_counter << 6U);
    };
    const auto invalid = make(5.0, COleDateTime::invalid, 1);
    EXPECT_FALSE(invalid == invalid);
    EXPECT_FALSE(invalid < invalid || invalid > invalid);
    EXPECT_FALSE(invalid <= invalid || invalid >= invalid);
    const auto null = make(5.0, COleDateTime::null, 1);
    const auto otherNull = make(9.0, COleDateTime::null, 2);
    EXPECT_TRUE(null == null);
    EXPECT_TRUE(null < otherNull);
    EXPECT_FALSE(null > otherNull);
    const auto valid = make(5.0, COleDateTime::valid, 1);
    EXPECT_FALSE(valid == null || valid < null || valid > null || valid <= invalid || invalid >= valid);
}

TEST(NDateTimeTest, SerialisedValueKeepsItsCounter)
{
    Settings settings;
    NDateTime(2021, 3, 1, 12, 0, 0, 5).SerializeState(settings);
    EXPECT_EQ(static_cast<double>(settings["DateTime"]), 44256.5 + 5 / 1e10);
    EXPECT_EQ(static_cast<unsigned int>(settings["Millisecond"]), 5U);
    settings["DateTime"] = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(NDateTime(settings).IsValid());
    const NDateTime times[] = {NDateTime(), NDateTime(2021, 3, 1, 10, 0, 0, 5),
                               NDateTime(2021, 3, 1, 12, 0, 1, 0), // whose fraction reads as counter 15740
                               NDateTime(1899, 12, 28, 18, 0, 0, 7),
                               NDateTime(9999, 12, 31, 23, 59, 59, 57000)};
    for (const auto& time : times) {
        SCOPED_TRACE(time.ToDouble());
        Settings stored;
        time.SerializeState(stored);
        const NDateTime back(stored);
        EXPECT_TRUE(back == time);
        EXPECT_EQ(back.GetMilliSec(), time.GetMilliSec());
        EXPECT_EQ(back.GetAbsoluteTime(), time.GetAbsoluteTime());
        // The day number comes back in whole seconds.
        EXPECT_EQ(back.ToDouble(), NDateTime::FromCOle(time.ToOle()).ToDouble());
    }
}

TEST(NDateTimeTest, ToCTime)
{
    const kalvento::internal::LocalZoneRule warsaw = {3600, {{7200, {3, 5, 0, 7200}, {10, 5, 0, 10800}}}};
    const auto toSeconds = [&warsaw](const NDateTime& a_time) {
        return std::int64_t{kalvento::internal::ToCTime(warsaw, a_time).GetTime()};
    };
    EXPECT_EQ(toSeconds(NDateTime(2021, 1, 1, 11, 59, 59, 60000)), 1609498800); // rounds up
    EXPECT_EQ(toSeconds(NDateTime(2021, 7, 1, 12, 0, 0, 0)), 1625133600);
    EXPECT_EQ(toSeconds(NDateTime(1899, 12, 31, 23, 59, 59, 0)), 0);
    EXPECT_EQ(toSeconds(NDateTime(2021, 2, 30)), 0);
    EXPECT_EQ(toSeconds(NDateTime(3001, 1, 1, 0, 59, 59, 0)), 32535215999);
    const std::pair<NDateTime, std::uint32_t> refused[] = {
        {NDateTime(1900, 1, 1), HResult::S_fail},
        {NDateTime(1969, 12, 31), HResult::S_fail},
        {NDateTime(1970, 1, 1, 0, 59, 59, 0), HResult::S_invalidArg},
        {NDateTime(3001, 1, 1, 1, 0, 0, 0), HResult::S_invalidArg}};
    for (const auto& [time, code] : refused) {
        SCOPED_TRACE(time.ToDouble());
        try {
            toSeconds(time);
            ADD_FAILURE() << "taken";
        } catch (const std::system_error& failure) {
            EXPECT_EQ(failure.code(), HResult::MakeCode(code));
        }
    }
}

} // namespace
