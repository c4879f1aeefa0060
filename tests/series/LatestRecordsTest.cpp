#include "series/LatestRecords.h"

#include "SeriesTestTools.h"
#include "platform/CodePage.h"
#include "series/DataSheetItem.h"
#include "time/KalventoException.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using kalvento::tests::At;
using kalvento::tests::RaisedText;
using testing::ElementsAre;

class LatestRecordsTest : public testing::Test {
protected:
    void Batch(unsigned long a_recordType, double a_price)
    {
        m_records.SetTransaction(a_recordType, At(9, 0), a_price, 1.0);
    }
    void Live(double a_price) { m_records.AddTransaction(At(9, 0), a_price, 1.0); }
    std::vector<double> Prices() const
    {
        std::vector<double> prices;
        for (const LatestRecords::LastRecord& record : m_records)
            prices.push_back(record.price);
        return prices;
    }

    LatestRecords m_records;
};

TEST_F(LatestRecordsTest, ABatchKeepsAllThatItBrings)
{
    Live(99);
    Batch(1, 1);
    for (int within = 2; within < 30; ++within)
        Batch(0, within);
    EXPECT_FALSE(m_records.ReceivedAllRecords());
    Batch(2, 30);
    EXPECT_TRUE(m_records.ReceivedAllRecords());
    ASSERT_EQ(m_records.GetTransactionCount(), 30U);
    EXPECT_EQ(m_records.begin()->price, 1.0);
    EXPECT_EQ(m_records.rbegin()->price, 30.0);

    Batch(1, 5);
    EXPECT_FALSE(m_records.ReceivedAllRecords()) << "the next batch begins anew";
    EXPECT_THAT(Prices(), ElementsAre(5));
    Batch(3, 6);
    EXPECT_TRUE(m_records.ReceivedAllRecords());
    EXPECT_THAT(Prices(), ElementsAre(6));
}

TEST_F(LatestRecordsTest, AnUnknownPlaceInABatchChangesNothing)
{
    Batch(3, 6);
    for (const unsigned long type : {4UL, 0x100000001UL, ~0UL}) {
        const std::string text = RaisedText<KalventoException>([&] { Batch(type, 1); });
        EXPECT_NE(text.find("LatestRecords::SetTransaction\t"), std::string::npos);
        EXPECT_NE(text.find("Niepoprawny typ rekordu."_cp1250), std::string::npos);
        EXPECT_THAT(Prices(), ElementsAre(6));
        EXPECT_TRUE(m_records.ReceivedAllRecords());
    }
}

TEST_F(LatestRecordsTest, LiveTransactionsSettleAtOneAboveTheLimit)
{
    for (int price = 1; price <= 12; ++price)
        Live(price);
    EXPECT_THAT(Prices(), ElementsAre(12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2));
}

TEST_F(LatestRecordsTest, ALongBatchKeepsItsLengthUnderLiveTransactions)
{
    for (int price = 1; price <= 20; ++price)
        Batch(0, price);
    Live(100);
    Live(101);
    ASSERT_EQ(m_records.GetTransactionCount(), 20U);
    EXPECT_EQ(m_records.begin()->price, 101.0);
    EXPECT_EQ(m_records.rbegin()->price, 18.0);
}

TEST(DataSheetItemTest, OnlyTheExactKindIsPegged)
{
    using namespace std::string_view_literals;
    for (const auto kind : {"PEG"sv, ""sv, "peg"sv, "PEGX"sv, "PEG\0"sv, "PE"sv})
        EXPECT_EQ(DataSheetItem("key", 1, kind, ESheetPageActive, 1.0, 2.0, 3.0).GetPEGValue(),
                  kind == "PEG"sv);
}

} // namespace
