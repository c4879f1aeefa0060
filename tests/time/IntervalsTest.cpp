#include "support/Testing.h"
#include "time/IntervalAndMultiplicity.h"
#include "time/IntervalTranslator.h"
#include "time/MaxMultiplicity.h"

namespace {

using kalvento::internal::GetMaxMultiplicity;

constexpr unsigned int S_max = std::numeric_limits<unsigned int>::max();

struct IntervalRow {
    unsigned int number;
    unsigned int greatest;
    const wchar_t* label;
    const wchar_t* threeOfThem;
};

const IntervalRow S_rows[] = {
    {0, 1, L"Pusty", L"Pusty"},        {1, S_max, L"Tikowy", L"3 tick"},   {2, 59, L"Sekundowy", L"3 sek."},
    {3, 59, L"Minutowy", L"3 min."},   {4, 24, L"Godzinowy", L"3 godz."},  {5, 365, L"Dzienny", L"3 dni"},
    {6, 51, L"Tygodniowy", L"3 tyg."}, {7, 11, L"Miesięczny", L"3 mies."}, {8, S_max, L"Roczny", L"3 lat"},
    {9, 1, L"Pusty", L"Pusty"},        {S_max, 1, L"Pusty", L"Pusty"},
};

TEST(IntervalsTest, WhatHangsOnEachInterval)
{
    for (const auto& [number, greatest, label, threeOfThem] : S_rows) {
        SCOPED_TRACE(number);
        const auto interval = static_cast<EInterval>(number);
        EXPECT_STREQ(IntervalTranslator::ToLabel(interval), label);
        EXPECT_EQ(IntervalTranslator::ToDescription(interval, 0), L"Pusty");
        EXPECT_EQ(IntervalTranslator::ToDescription(interval, 1), label);
        EXPECT_EQ(IntervalTranslator::ToDescription(interval, 3), threeOfThem);
        EXPECT_EQ(GetMaxMultiplicity(interval), greatest);

        EXPECT_EQ(IntervalAndMultiplicity(interval, greatest).IsValid(), number != 0);
        EXPECT_FALSE(IntervalAndMultiplicity(interval, 0).IsValid());
        EXPECT_EQ(IntervalAndMultiplicity(interval, greatest).IsAggregated(), number >= EIntervalSecond);
        if (greatest != S_max) {
            EXPECT_FALSE(IntervalAndMultiplicity(interval, greatest + 1).IsValid());
            EXPECT_FALSE(IntervalAndMultiplicity(interval, greatest + 1).IsAggregated());
        }
        EXPECT_FALSE(IntervalAndMultiplicity(interval, 0).IsAggregated());
        EXPECT_EQ(IntervalAndMultiplicity(interval, 0).IsEod(), number >= EIntervalDay);
    }
}

TEST(IntervalsTest, Ticks)
{
    using Interval = IntervalAndMultiplicity;
    EXPECT_TRUE(Interval(EIntervalTick, 1).IsSingleTick() && !Interval(EIntervalTick, 1).IsNTick());
    EXPECT_TRUE(Interval(EIntervalTick, S_max).IsNTick() && !Interval(EIntervalTick, S_max).IsSingleTick());
    EXPECT_FALSE(Interval(EIntervalTick, 0).IsTick() || Interval(EIntervalSecond, 1).IsTick());
    // The count is printed as signed.
    EXPECT_EQ(IntervalTranslator::ToDescription(EIntervalTick, S_max), L"-1 tick");
}

} // namespace
