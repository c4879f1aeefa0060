#include "time/LocalTime.h"

#include "platform/CodePage.h"
#include "platform/HResultCategory.h"
#include "platform/OleDate.h"
#include "time/TimeParts.h"

#include <optional>
#include <stdexcept>
#include <system_error>

namespace kalvento::internal {

namespace {

// 1601-01-01 00:00, the platform's first moment of a conversion between zones.
constexpr std::int64_t S_firstConverted = -11644473600;

void CheckZone(const LocalZoneRule& a_rule)
{
    // The platform names standard or daylight time only where the zone has both; callers expect the refusal.
    if (!a_rule.daylight)
        throw std::runtime_error("Nieznana strefa czasowa"_cp1250);
}

NDateTime Converted(const LocalZoneRule& a_rule, const COleDateTime& a_value, unsigned long a_millisecond,
                    std::int64_t (*a_convert)(const LocalZoneRule&, std::int64_t))
{
    CheckZone(a_rule);
    if (a_value.GetStatus() == COleDateTime::valid) {
        const auto from = OleDate::ToSeconds(a_value.m_dt);
        if (from && *from >= S_firstConverted) {
            const std::int64_t to = a_convert(a_rule, *from);
            if (to >= S_firstConverted)
                return TimeParts::TimeOf(to, a_millisecond);
        }
    }
    throw std::runtime_error("Błąd konwersji czasów"_cp1250);
}

} // namespace

NDateTime LocalTimeAt(const LocalZoneRule& a_rule, std::int64_t a_unixSeconds)
{
    return TimeParts::TimeOf(ToLocalSeconds(a_rule, a_unixSeconds));
}

NDateTime UtcToLocal(const LocalZoneRule& a_rule, const COleDateTime& a_utc, unsigned long a_millisecond)
{
    return Converted(a_rule, a_utc, a_millisecond, ToLocalSeconds);
}

NDateTime LocalToUtc(const LocalZoneRule& a_rule, const COleDateTime& a_local, unsigned long a_millisecond)
{
    return Converted(a_rule, a_local, a_millisecond, ToUtcSeconds);
}

CTime ToCTime(const LocalZoneRule& a_rule, const NDateTime& a_local)
{
    const auto local = a_local.IsValid() ? OleDate::ToSeconds(a_local.ToDouble()) : std::nullopt;
    constexpr std::int64_t firstOf1900 = -25567 * OleDate::S_secondsOfDay;
    if (!local || *local < firstOf1900)
        return CTime(0);
    if (*local < 0)
        throw std::system_error(HResult::MakeCode(HResult::S_fail), "NDateTime::ToCTime");
    const auto made = MakeTime(a_rule, *local);
    if (!made)
        throw std::system_error(HResult::MakeCode(HResult::S_invalidArg), "NDateTime::ToCTime");
    return CTime(*made);
}

} // namespace kalvento::internal

// Of the class NDateTime, but apart from its source, on which all of this stands.
CTime NDateTime::ToCTime() const
{
    return kalvento::internal::ToCTime(kalvento::internal::ReadLocalZoneRule(), *this);
}
