#pragma once

#include "platform/COleDateTime.h"
#include "platform/CTime.h"
#include "platform/Export.h"
#include "platform/LocalZone.h"
#include "time/NDateTime.h"

#include <cstdint>

// Local time by a given zone rule. The public conversions pass the machine's rule.
namespace kalvento::internal {

/// What the local clock shows at a moment, counter 0. Status invalid outside the calendar.
KALVENTO_API NDateTime LocalTimeAt(const LocalZoneRule& a_rule, std::int64_t a_unixSeconds);
/// As DateTimeConverter::ConvertFromUtcToLocal, raises included.
KALVENTO_API NDateTime UtcToLocal(const LocalZoneRule& a_rule, const COleDateTime& a_utc,
                                  unsigned long a_millisecond);
/// As DateTimeConverter::ConvertFromLocalToUtc, raises included.
KALVENTO_API NDateTime LocalToUtc(const LocalZoneRule& a_rule, const COleDateTime& a_local,
                                  unsigned long a_millisecond);
/// As NDateTime::ToCTime, raises included.
KALVENTO_API CTime ToCTime(const LocalZoneRule& a_rule, const NDateTime& a_local);

} // namespace kalvento::internal
