#pragma once

#include "series/SettableVariables.h"

namespace kalvento::internal {

/// SetDataIfChanged that says whether it did anything.
bool ShowSeries(SettableVariables& a_values, ESeriesId a_series, double a_value);
/// ResetDataSeries that says whether it did anything.
bool HideSeries(SettableVariables& a_values, ESeriesId a_series);

} // namespace kalvento::internal
