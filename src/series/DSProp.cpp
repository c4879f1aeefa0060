#include "series/DSProp.h"

#include "series/Series.h"
#include "settings/Settings.h"

#include <algorithm>
#include <set>

DSProp::DSProp(ESeriesId a_seriesId)
    : DSProp(a_seriesId, VeloTools::Series::DefaultAggregationType(a_seriesId),
             VeloTools::Series::DefaultLabel(a_seriesId), VeloTools::Series::DefaultPrecision(a_seriesId))
{}

DSProp::DSProp(ESeriesId a_seriesId, EAggrType a_aggrType, std::wstring_view a_label, EPrecision a_precision)
    : DSProp(a_seriesId, a_aggrType, a_label, a_precision, a_precision)
{}

DSProp::DSProp(ESeriesId a_seriesId, EAggrType a_aggrType, std::wstring_view a_label, EPrecision a_minimum,
               EPrecision a_maximum)
    : m_seriesId(a_seriesId),
      m_aggrType(a_aggrType),
      m_label(a_label),
      m_minPrecision(a_minimum),
      m_maxPrecision(a_maximum)
{}

DSProp::DSProp(const Settings& a_settings) : DSProp(ESeriesId(), EAggrTypeOhlc, {}, EPrecisionNone)
{
    UnSerializeState(a_settings);
}

bool DSProp::IsAggregationSeries() const
{
    return VeloTools::Series::IsAggregationSeries(m_seriesId);
}

void DSProp::SerializeState(Settings& a_settings) const
{
    a_settings[XML_SERIES_LABEL] = m_label;
    a_settings[XML_SERIES_ID] = static_cast<unsigned int>(m_seriesId);
    a_settings[XML_AGGREGATION_TYPE] = static_cast<unsigned int>(m_aggrType);
    a_settings[XML_MIN_PRECISION] = static_cast<int>(m_minPrecision);
    a_settings[XML_MAX_PRECISION] = static_cast<int>(m_maxPrecision);
}

void DSProp::UnSerializeState(const Settings& a_settings)
{
    const std::wstring label = a_settings[XML_SERIES_LABEL];
    const unsigned int seriesId = a_settings[XML_SERIES_ID];
    const unsigned int aggrType = a_settings[XML_AGGREGATION_TYPE];
    const int minPrecision = a_settings[XML_MIN_PRECISION];
    const int maxPrecision = a_settings[XML_MAX_PRECISION];

    m_label = label;
    m_seriesId = static_cast<ESeriesId>(seriesId);
    m_aggrType = static_cast<EAggrType>(aggrType);
    SetPrecision(static_cast<EPrecision>(minPrecision), static_cast<EPrecision>(maxPrecision));
}

namespace VeloTools::Series {

// Defined here, where properties are known: the numbers of series live a layer below.
bool CheckIfCSorOffersContainsGivenSeries(const std::set<DSProp>& a_series, ESeriesId a_seriesId)
{
    // Element by element: indicators are ordered by their labels too, and not every number gives a property to look
    // for.
    const auto isSought = [a_seriesId](const DSProp& a_property) {
        return a_property.GetSeriesID() == a_seriesId;
    };
    return CheckIfCSorOffersContainsGivenSeries(std::set<ESeriesId>(), a_seriesId) ||
           std::ranges::any_of(a_series, isSought);
}

} // namespace VeloTools::Series
