#include "assets/AssetParams.h"

#include "settings/Settings.h"
#include "time/KalventoException.h"
#include "time/MaxMultiplicity.h"

#include <algorithm>

using kalvento::internal::GetMaxMultiplicity;

AssetParams::AssetParams(unsigned int a_kindData, unsigned int a_multiplicity, Intervals&& a_intervals)
    : ParamsBase(a_kindData), m_intervals(std::move(a_intervals)), m_multiplicity(a_multiplicity)
{
    if (IsSetHistory() && m_intervals.empty())
        throw KalventoException("AssetParams::AssetParams", __LINE__,
                                "Argument exception: a_kindData == S_kindDataHistory");
}

AssetParams::AssetParams(const Settings& a_settings)
    : ParamsBase(a_settings),
      m_aggregationTime(static_cast<EAggrTimeResult>(static_cast<int>(a_settings[XML_AGGR_TIME]))),
      m_multiplicity(static_cast<unsigned int>(a_settings[XML_MULTIPLICITY]))
{
    DeserializeIntervalsContainer(a_settings[XML_INTERVALS]);
}

void AssetParams::SerializeState(Settings& a_settings) const
{
    ParamsBase::SerializeState(a_settings);
    a_settings[XML_AGGR_TIME] = static_cast<int>(m_aggregationTime);
    a_settings[XML_MULTIPLICITY] = m_multiplicity;

    Settings intervals;
    for (const auto& [interval, range] : m_intervals) {
        Settings& entry = intervals.AddUnnamed();
        entry[XML_INTERVAL] = static_cast<unsigned int>(interval);
        range.SerializeState(entry);
    }
    // In one step: the node may hold the intervals of an earlier save.
    a_settings[XML_INTERVALS] = std::move(intervals);
}

std::optional<RangeData::Dates> AssetParams::GetDates(EInterval a_interval) const
{
    auto entry = std::ranges::find(m_intervals, a_interval, &Intervals::value_type::first);
    // Candles can be made from finer ones, so the dates of those serve as well.
    if (entry == end())
        entry = std::find_if(begin(), end(), [&](const auto& a_entry) { return a_entry.first < a_interval; });
    if (entry == end())
        return std::nullopt;
    return entry->second.GetDates();
}

bool AssetParams::SetDates(EInterval a_interval, NDateTime a_from, NDateTime a_to)
{
    const auto entry = std::ranges::find(m_intervals, a_interval, &Intervals::value_type::first);
    return entry != end() && entry->second.SetDates(a_from, a_to);
}

bool AssetParams::IsValid() const
{
    if (GetKindData() == 0)
        return false;
    if (!IsSetHistory())
        return true;
    if (m_intervals.empty() || m_multiplicity == 0)
        return false;
    if (!std::all_of(begin(), end(), [](const auto& a_entry) { return a_entry.second.Validate(); }))
        return false;
    return m_multiplicity <= GetMaxMultiplicity(m_intervals.front().first);
}

void AssetParams::DeserializeIntervalsContainer(const Settings& a_settings)
{
    m_intervals.reserve(a_settings.GetUnnamedVariablesCount());
    for (auto entry = a_settings.begin_unnamed(); entry != a_settings.end_unnamed(); ++entry)
        m_intervals.emplace_back(static_cast<EInterval>(static_cast<unsigned int>((*entry)[XML_INTERVAL])),
                                 RangeData(*entry));
}
