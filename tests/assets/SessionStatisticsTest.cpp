#include "assets/SessionStatistics.h"
#include "support/Testing.h"

namespace {

using Type = SessionStatistics::EAssetStatisticType;

AssetStatistics MakeRow(const char* a_longName)
{
    return {Asset(nullptr, "short", a_longName, "GPW", "PL1"), 1.0, 2.0, 3.0, 4, 5.0};
}

TEST(SessionStatisticsTest, EachListIsItsOwnAndUnknownOnesAreTheFirst)
{
    SessionStatistics statistics;
    statistics.UpdateGeneralNoChange(3, 5.5, 6.5, 30);
    for (unsigned int type = 0; type < 4; ++type)
        for (unsigned int row = 0; row <= type; ++row)
            statistics.AddAssetStatistics(static_cast<Type>(type), MakeRow("a"));
    statistics.AddAssetStatistics(static_cast<Type>(7), MakeRow("of seven"));
    EXPECT_EQ(statistics.GetHighestAssetsList(SessionStatistics::EAssetStatisticFirst).size(), 2U);
    EXPECT_EQ(statistics.GetHighestAssetsList(SessionStatistics::EAssetStatisticFourth).size(), 4U);
    EXPECT_EQ(statistics.GetHighestAssetsList(static_cast<Type>(0xFFFFFFFF)).back().AssetName(), "of seven");
    EXPECT_EQ(statistics.GetAssetStatisticsCount(), 11U);
    statistics.ClearAssetStatistics();
    EXPECT_EQ(statistics.GetAssetStatisticsCount(), 0U);
    EXPECT_EQ(statistics.GetGeneralNoChangeInfo().transactions, 30U) << "the totals stay";
}

} // namespace
