#pragma once

#include "assets/RangeData.h"
#include "platform/Export.h"
#include "time/EInterval.h"

#include <optional>

/// How far back a request may reach.
namespace IntervalLimits {

/// The longest range that a request of that interval may ask for: as many sessions, counted back from a_to, as the
/// interval allows. a_to is kept as it is. Empty where a_to is invalid or the count runs off the calendar.
KALVENTO_API std::optional<RangeData::Dates> GetDatesLimit(EInterval a_interval, const NDateTime& a_to);

} // namespace IntervalLimits
