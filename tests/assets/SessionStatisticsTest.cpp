#include "assets/SessionStatistics.h"

#include <gtest/gtest.h>

namespace {

using Type = SessionStatistics::EAssetStatisticType;

AssetStatistics MakeRow(const char* a_longName)
{
    return {Asset(nullptr, "short", a_longName, "GPW", "PL1"), 1.0, 2.0, 3.0, 4, 5.0};
}

TEST(SessionStatisticsTest, EachListIsItsOwnAndUnknownOnesAreTheFirst)
{
    SessionStatistics statistics;
    statistics.UpdateGeneralDecrease(1, 1.5, 2.5, 10);
    statistics.UpdateGeneralIncrease(2, 3.5, 4.5, 20);
    statistics.UpdateGeneralNoChange(3, 5.5, 6.5, 30);
    for (unsigned int type = 0; type < 4; ++type)
        for (unsigned int row = 0; row <= type; ++row)
            statistics.AddAssetStatistics(static_cast<Type>(type), MakeRow("a"));
    statistics.AddAssetStatistics(static_cast<Type>(7), MakeRow("of seven"));

    EXPECT_EQ(statistics.GetHighestAssetsList(SessionStatistics::EAssetStatisticFirst).size(), 2U);
    EXPECT_EQ(statistics.GetHighestAssetsList(SessionStatistics::EAssetStatisticFourth).size(), 4U);
    EXPECT_EQ(&statistics.GetHighestAssetsList(static_cast<Type>(7)),
              &statistics.GetHighestAssetsList(SessionStatistics::EAssetStatisticFirst));
    EXPECT_EQ(statistics.GetHighestAssetsList(static_cast<Type>(0xFFFFFFFF)).back().AssetName(), "of seven");
    EXPECT_EQ(statistics.GetAssetStatisticsCount(), 11U);
    // Clearing the lists keeps the totals.
    statistics.ClearAssetStatistics();
    EXPECT_EQ(statistics.GetAssetStatisticsCount(), 0U);
    EXPECT_EQ(statistics.GetGeneralDecreaseInfo().assetCount, 1U);
    EXPECT_EQ(statistics.GetGeneralIncreaseInfo().amount2, 4.5);
    EXPECT_EQ(statistics.GetGeneralNoChangeInfo().transactions, 30U);
    const AssetStatistics row = MakeRow("long");
    EXPECT_EQ(row.PercentChange(), 1.0);
    EXPECT_EQ(row.Turnover(), 2.0);
    EXPECT_EQ(row.TransactionVolume(), 3.0);
    EXPECT_EQ(row.TransactionCount(), 4U);
    EXPECT_EQ(row.Value(), 5.0);
}

} // namespace
