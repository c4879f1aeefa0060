#pragma once

#include "assets/AssetStatistics.h"
#include "platform/Export.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

/// A market's summary of a session: how many instruments fell, rose and stayed, and four ranked lists of leading
/// instruments. A value type without logic, exchanged between provider and consumer; one thread at a time.
class KALVENTO_API SessionStatistics {
public:
    /// The totals of the instruments that fell, rose or stayed. What the two amounts mean is agreed between the
    /// provider and the window that shows them.
    struct GeneralData {
        unsigned long long assetCount = 0;
        double amount1 = 0.0;
        double amount2 = 0.0;
        unsigned long long transactions = 0;
    };

    /// The ranked lists. What each is ranked by is agreed between the provider and the window that shows it.
    enum EAssetStatisticType : std::uint32_t {
        EAssetStatisticFirst = 0,
        EAssetStatisticSecond = 1,
        EAssetStatisticThird = 2,
        EAssetStatisticFourth = 3
    };

    void UpdateGeneralDecrease(unsigned long long a_assetCount, double a_amount1, double a_amount2,
                               unsigned long long a_transactions);
    void UpdateGeneralIncrease(unsigned long long a_assetCount, double a_amount1, double a_amount2,
                               unsigned long long a_transactions);
    void UpdateGeneralNoChange(unsigned long long a_assetCount, double a_amount1, double a_amount2,
                               unsigned long long a_transactions);

    const GeneralData& GetGeneralDecreaseInfo() const { return m_decrease; }
    const GeneralData& GetGeneralIncreaseInfo() const { return m_increase; }
    const GeneralData& GetGeneralNoChangeInfo() const { return m_noChange; }

    /// Appends a row to the list of that type; the provider adds the rows in the order of their rank. A number
    /// outside 0 to 3 means the list of 0, as in GetHighestAssetsList.
    void AddAssetStatistics(EAssetStatisticType a_type, AssetStatistics a_statistics);
    /// A number outside 0 to 3 gives the list of 0.
    const std::vector<AssetStatistics>& GetHighestAssetsList(EAssetStatisticType a_type) const;
    /// The rows of all four lists; an asset in two lists counts twice.
    std::size_t GetAssetStatisticsCount() const;
    /// Empties the four lists; the totals stay.
    void ClearAssetStatistics();

private:
    GeneralData m_decrease;
    GeneralData m_increase;
    GeneralData m_noChange;
    std::array<std::vector<AssetStatistics>, 4> m_lists; // by EAssetStatisticType
};
