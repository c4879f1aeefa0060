#pragma once

#include "platform/COleDateTime.h"
#include "platform/Export.h"
#include "time/NDateTime.h"

/// Between the machine's local time, UTC and Unix seconds (since 1970-01-01 UTC).
///
/// Local time follows one rule, that of the current year of the machine's zone, for every year, as the platform does:
/// - to local: daylight time holds from the start rule in local standard time to the end rule in local daylight time;
/// - to UTC: the local time is compared with both rule times as written, so an hour that the clocks repeat counts as
///   daylight time, and so does one that they skip.
/// The zone is read afresh for each conversion. Any thread.
///
/// Conversions raise std::runtime_error: "Nieznana strefa czasowa" where the zone has no daylight saving in use this
/// year, "Błąd konwersji czasów" for a value that isn't valid and for years before 1601 (texts in CP1250).
namespace DateTimeConverter {

/// The counter is kept; seconds are rounded to the nearest.
KALVENTO_API NDateTime ConvertFromUtcToLocal(const NDateTime& a_utc);
KALVENTO_API NDateTime ConvertFromLocalToUtc(const NDateTime& a_local);
/// a_millisecond: the counter of the result.
KALVENTO_API NDateTime ConvertFromUtcToLocal(const COleDateTime& a_utc, unsigned long a_millisecond);
KALVENTO_API NDateTime ConvertFromLocalToUtc(const COleDateTime& a_local, unsigned long a_millisecond);

/// Whole seconds, counter 0; status invalid outside the calendar. Doesn't look at the zone and doesn't raise.
KALVENTO_API NDateTime ConvertFromUnixSecondToUtcDateTime(long a_seconds);
KALVENTO_API NDateTime ConvertFromUnixSecondToLocalDateTime(long a_seconds);
/// The nearest second as a signed 32-bit number, so 1901-12-13 to 2038-01-19; dates beyond give the nearest limit, a
/// NaN day number gives the lowest. The status isn't checked.
KALVENTO_API long ConvertFromUtcDateTimeToUnixSecond(const NDateTime& a_utc);

} // namespace DateTimeConverter
