#include "series/DSPropTools.h"

#include "series/SeriesTable.h"

#include <algorithm>
#include <span>

namespace {

void UpdatePrecision(std::span<const ESeriesId> a_group, EPrecision a_minimum, EPrecision a_maximum,
                     const std::set<DSProp>& a_series)
{
    for (const DSProp& property : a_series)
        if (std::ranges::find(a_group, property.GetSeriesID()) != a_group.end())
            property.SetPrecision(a_minimum, a_maximum);
}

} // namespace

namespace DSPropTools {

void UpdateValuePrecision(EPrecision a_minimum, EPrecision a_maximum, std::set<DSProp>& a_series)
{
    UpdatePrecision(kalvento::internal::S_valueSeries, a_minimum, a_maximum, a_series);
}

void UpdateVolumesPrecision(EPrecision a_minimum, EPrecision a_maximum, std::set<DSProp>& a_series)
{
    UpdatePrecision(kalvento::internal::S_volumeSeries, a_minimum, a_maximum, a_series);
}

} // namespace DSPropTools
