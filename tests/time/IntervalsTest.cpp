#include "settings/Settings.h"
#include "time/IntervalAndMultiplicity.h"
#include "time/IntervalTranslator.h"
#include "time/MaxMultiplicity.h"

#include <gtest/gtest.h>

#include <limits>

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

TEST(IntervalsTest, CountIsPrintedAsSigned)
{
    EXPECT_EQ(IntervalTranslator::ToDescription(EIntervalTick, S_max), L"-1 tick");
    EXPECT_EQ(IntervalTranslator::ToDescription(EIntervalYear, 2147483648U), L"-2147483648 lat");
}

TEST(IntervalsTest, Ticks)
{
    struct Case {
        EInterval interval;
        unsigned int multiplicity;
        bool isTick;
        bool isSingle;
        bool isSeveral;
    };
    const Case cases[] = {
        {EIntervalTick, 0, false, false, false},   {EIntervalTick, 1, true, true, false},
        {EIntervalTick, 2, true, false, true},     {EIntervalTick, S_max, true, false, true},
        {EIntervalSecond, 1, false, false, false}, {EIntervalEmpty, 2, false, false, false},
    };
    for (const auto& [interval, multiplicity, isTick, isSingle, isSeveral] : cases) {
        SCOPED_TRACE(multiplicity);
        const IntervalAndMultiplicity pair(interval, multiplicity);
        EXPECT_EQ(pair.IsTick(), isTick);
        EXPECT_EQ(pair.IsSingleTick(), isSingle);
        EXPECT_EQ(pair.IsNTick(), isSeveral);
        EXPECT_EQ(IntervalAndMultiplicity::IsNTick(interval, multiplicity), isSeveral);
        if (interval == EIntervalTick) {
            EXPECT_FALSE(pair.IsAggregated());
        }
    }
}

TEST(IntervalsTest, EmptyMeansBothFields)
{
    IntervalAndMultiplicity pair;
    EXPECT_TRUE(pair.IsEmpty());
    EXPECT_FALSE(pair.IsValid());
    pair.Set(EIntervalEmpty, 1);
    EXPECT_FALSE(pair.IsEmpty());
    pair.Set(EIntervalMinute, 0);
    EXPECT_FALSE(pair.IsEmpty());
    EXPECT_TRUE(pair.Equals(EIntervalMinute, 0));
    EXPECT_FALSE(pair.Equals(IntervalAndMultiplicity(EIntervalMinute, 1)));
    EXPECT_FALSE(pair.Equals(IntervalAndMultiplicity(EIntervalHour, 0)));
    pair.Clear();
    EXPECT_TRUE(pair.IsEmpty());
}

TEST(IntervalsTest, SerialisedPair)
{
    for (const auto& pair : {IntervalAndMultiplicity(), IntervalAndMultiplicity(EIntervalMinute, 5),
                             IntervalAndMultiplicity(EIntervalTick, S_max)}) {
        Settings settings;
        pair.SerializeState(settings);
        EXPECT_TRUE(IntervalAndMultiplicity(settings).Equals(pair));
    }
    Settings stored;
    stored["Interval"] = 4;
    stored["Multipl"] = 12;
    EXPECT_TRUE(IntervalAndMultiplicity(stored).Equals(EIntervalHour, 12));
    const Settings nothing;
    EXPECT_TRUE(IntervalAndMultiplicity(nothing).IsEmpty());
}

} // namespace
