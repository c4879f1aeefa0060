#pragma once

#include "platform/Export.h"
#include "time/EInterval.h"

#include <limits>

namespace kalvento::internal {

/// The answer of GetMaxMultiplicity where an interval has no limit. Compare unsigned.
inline constexpr unsigned int S_unlimitedMultiplicity = std::numeric_limits<unsigned int>::max();

/// The greatest multiplicity of an interval. The limits are uneven on purpose: seconds and minutes stop at 59 where
/// hours go to a full 24; weeks and months stop one short of a year (51, 11) where days take 365. Ticks and years have
/// no limit; a value outside EInterval's names takes 1, as the empty interval does. The limits of
/// IntervalAndMultiplicity, the windows and the data store all come from this one table.
KALVENTO_API unsigned int GetMaxMultiplicity(EInterval a_interval);

} // namespace kalvento::internal
