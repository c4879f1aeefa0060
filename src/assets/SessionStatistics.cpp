#include "assets/SessionStatistics.h"

#include <utility>

namespace {

// A number that no list has means the first list, so that a window of another release still shows something.
std::size_t PlaceOf(SessionStatistics::EAssetStatisticType a_type, std::size_t a_listCount)
{
    const std::size_t place = a_type;
    return place < a_listCount ? place : 0;
}

} // namespace

void SessionStatistics::UpdateGeneralDecrease(unsigned long long a_assetCount, double a_amount1,
                                              double a_amount2, unsigned long long a_transactions)
{
    m_decrease = {a_assetCount, a_amount1, a_amount2, a_transactions};
}

void SessionStatistics::UpdateGeneralIncrease(unsigned long long a_assetCount, double a_amount1,
                                              double a_amount2, unsigned long long a_transactions)
{
    m_increase = {a_assetCount, a_amount1, a_amount2, a_transactions};
}

void SessionStatistics::UpdateGeneralNoChange(unsigned long long a_assetCount, double a_amount1,
                                              double a_amount2, unsigned long long a_transactions)
{
    m_noChange = {a_assetCount, a_amount1, a_amount2, a_transactions};
}

void SessionStatistics::AddAssetStatistics(EAssetStatisticType a_type, AssetStatistics a_statistics)
{
    m_lists[PlaceOf(a_type, m_lists.size())].push_back(std::move(a_statistics));
}

const std::vector<AssetStatistics>& SessionStatistics::GetHighestAssetsList(EAssetStatisticType a_type) const
{
    return m_lists[PlaceOf(a_type, m_lists.size())];
}

std::size_t SessionStatistics::GetAssetStatisticsCount() const
{
    std::size_t count = 0;
    for (const auto& list : m_lists)
        count += list.size();
    return count;
}

void SessionStatistics::ClearAssetStatistics()
{
    for (auto& list : m_lists)
        list.clear();
}
