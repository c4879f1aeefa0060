#include "time/DateTimeConverter.h"

#include "platform/LocalZone.h"
#include "platform/NearestInt.h"
#include "platform/OleDate.h"
#include "time/LocalTime.h"

#include <cmath>
#include <cstdint>
#include <limits>

using kalvento::internal::LocalToUtc;
using kalvento::internal::ReadLocalZoneRule;
using kalvento::internal::UtcToLocal;

namespace {

constexpr auto S_secondsOfDay = static_cast<double>(OleDate::S_secondsOfDay);

COleDateTime FromUnixSeconds(long a_seconds)
{
    const double continuous = OleDate::S_unixEpoch + static_cast<double>(a_seconds) / S_secondsOfDay;
    return COleDateTime(OleDate::FromContinuous(continuous));
}

} // namespace

namespace DateTimeConverter {

NDateTime ConvertFromUtcToLocal(const NDateTime& a_utc)
{
    return ConvertFromUtcToLocal(a_utc.ToOle(), a_utc.GetMilliSec());
}

NDateTime ConvertFromLocalToUtc(const NDateTime& a_local)
{
    return ConvertFromLocalToUtc(a_local.ToOle(), a_local.GetMilliSec());
}

NDateTime ConvertFromUtcToLocal(const COleDateTime& a_utc, unsigned long a_millisecond)
{
    return UtcToLocal(ReadLocalZoneRule(), a_utc, a_millisecond);
}

NDateTime ConvertFromLocalToUtc(const COleDateTime& a_local, unsigned long a_millisecond)
{
    return LocalToUtc(ReadLocalZoneRule(), a_local, a_millisecond);
}

NDateTime ConvertFromUnixSecondToUtcDateTime(long a_seconds)
{
    return NDateTime::FromCOle(FromUnixSeconds(a_seconds));
}

NDateTime ConvertFromUnixSecondToLocalDateTime(long a_seconds)
{
    return ConvertFromUtcToLocal(FromUnixSeconds(a_seconds), 0);
}

long ConvertFromUtcDateTimeToUnixSecond(const NDateTime& a_utc)
{
    const double days = OleDate::ToContinuous(a_utc.ToDouble()) - OleDate::S_unixEpoch;
    const double seconds =
        (days + (days < 0.0 ? -OleDate::S_halfSecond : OleDate::S_halfSecond)) * S_secondsOfDay;
    if (std::isnan(seconds))
        return std::numeric_limits<std::int32_t>::min();
    return kalvento::internal::NearestInt(seconds);
}

} // namespace DateTimeConverter
