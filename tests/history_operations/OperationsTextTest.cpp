#include "history_operations/OperationsText.h"

#include "history_operations/HistoryOperations.h"
#include "settings/Settings.h"
#include "support/Testing.h"

namespace {

HistoryOperations ListOf(const SingleHistoryOperation& a_operation)
{
    Settings settings;
    settings["Version"] = 3;
    a_operation.SerializeState(settings["Operations"].AddUnnamed());
    return HistoryOperations(settings);
}

SingleHistoryOperation Dated(const NDateTime& a_date)
{
    return {1, a_date, static_cast<SingleHistoryOperation::Type>(2), 0.5};
}

} // namespace

TEST(OperationsTextTest, LiteralText)
{
    const std::string text = "-7\n11,090630,4,0.05\n-2,500101,-3,-1e-300\n0,491231,7,inf\n";
    HistoryOperations operations;
    ASSERT_TRUE(operations.Parse(text));
    EXPECT_EQ(OperationsText::Write(operations), text);
    EXPECT_EQ(OperationsText::Write(HistoryOperations()), "0\n");
}

TEST(OperationsTextTest, WhatWasWrittenReadsBackToTheSameBits)
{
    std::mt19937_64 random(11);
    for (int round = 0; round < 2000; ++round) {
        const auto factor = std::bit_cast<double>(random());
        if (factor != factor)
            continue; // which NaN it was is not for a text
        const SingleHistoryOperation operation(
            static_cast<int>(random()),
            NDateTime(1950 + random() % 100, 1 + random() % 12, 1 + random() % 28),
            static_cast<SingleHistoryOperation::Type>(random()), factor);
        const auto text = OperationsText::Write(ListOf(operation));
        ASSERT_TRUE(text);
        SCOPED_TRACE(*text);
        HistoryOperations back;
        ASSERT_TRUE(back.Parse(*text));
        ASSERT_EQ(back.end() - back.begin(), 1);
        EXPECT_EQ(back.Version(), 3);
        EXPECT_EQ(back.begin()->GetId(), operation.GetId());
        EXPECT_EQ(back.begin()->GetType(), operation.GetType());
        EXPECT_EQ(back.begin()->GetDate().ToDouble(), operation.GetDate().ToDouble());
        EXPECT_EQ(std::bit_cast<std::uint64_t>(back.begin()->GetStoredFactor()),
                  std::bit_cast<std::uint64_t>(factor));
    }
}

TEST(OperationsTextTest, DatesThatSixDigitsCannotSayAreRefused)
{
    EXPECT_TRUE(OperationsText::CanHold(Dated({1950, 1, 1})));
    EXPECT_TRUE(OperationsText::CanHold(Dated({2049, 12, 31})));
    EXPECT_TRUE(OperationsText::CanHold(Dated({2021, 2, 30}))); // as it may have come from a data source
    for (const NDateTime& date :
         {NDateTime(1949, 12, 31), NDateTime(2050, 1, 1), NDateTime(2021, 3, 15, 0, 0, 1, 0),
          NDateTime(2021, 3, 15, 0, 0, 0, 1), NDateTime(), NDateTime::FromDouble(1e300)}) {
        SCOPED_TRACE(date.ToDouble());
        EXPECT_FALSE(OperationsText::CanHold(Dated(date)));
        EXPECT_FALSE(OperationsText::Write(ListOf(Dated(date))));
    }
}
