#pragma once

#include "platform/Export.h"
#include "series/DSProp.h"

#include <set>

/// Changes the precisions of many series at once. Series that the set lacks are skipped; series in neither group (open
/// interest, turnover, counts of orders) keep theirs.
namespace DSPropTools {

/// Sets both precisions of every price-like series in the set.
KALVENTO_API void UpdateValuePrecision(EPrecision a_minimum, EPrecision a_maximum,
                                       std::set<DSProp>& a_series);
/// Sets both precisions of every volume series in the set.
KALVENTO_API void UpdateVolumesPrecision(EPrecision a_minimum, EPrecision a_maximum,
                                         std::set<DSProp>& a_series);

} // namespace DSPropTools
