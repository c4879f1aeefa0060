#include "provider_kit/ShowSeries.h"

namespace kalvento::internal {

bool ShowSeries(SettableVariables& a_values, ESeriesId a_series, double a_value)
{
    const auto entry = a_values.find(a_series);
    if (entry == a_values.end() || (entry->second.IsSet() && entry->second.value == a_value))
        return false;
    a_values.SetData(a_series, a_value);
    return true;
}

bool HideSeries(SettableVariables& a_values, ESeriesId a_series)
{
    const auto entry = a_values.find(a_series);
    if (entry == a_values.end() || !entry->second.IsSet())
        return false;
    a_values.ResetDataSeries(a_series);
    return true;
}

} // namespace kalvento::internal
