#include "time/LocalTime.h"

#include "platform/CodePage.h"
#include "platform/HResultCategory.h"
#include "platform/OleDate.h"

#include <chrono>
#include <optional>
#include <stdexcept>
#include <system_error>

namespace kalvento::internal {

namespace {

constexpr std::int64_t S_secondsOfDay = 86400;
// 1601-01-01 00:00, the platform's first moment of a conversion between zones.
constexpr std::int64_t S_firstConverted = -11644473600;

// Seconds of the local or the UTC clock, counter 0. A conversion can leave the calendar by some hours; an NDateTime has
// no year 10000, which gives status invalid.
NDateTime FromSeconds(std::int64_t a_seconds, unsigned long a_millisecond)
{
    const std::chrono::sys_seconds moment{std::chrono::seconds(a_seconds)};
    const auto day = std::chrono::floor<std::chrono::days>(moment);
    const std::chrono::year_month_day date(day);
    const auto second = static_cast<unsigned long>((moment - day).count());
    return {static_cast<unsigned long>(static_cast<int>(date.year())),
            static_cast<unsigned>(date.month()),
            static_cast<unsigned>(date.day()),
            second / 3600,
            second / 60 % 60,
            second % 60,
            a_millisecond};
}

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
                return FromSeconds(to, a_millisecond);
        }
    }
    throw std::runtime_error("Błąd konwersji czasów"_cp1250);
}

} // namespace

NDateTime LocalTimeAt(const LocalZoneRule& a_rule, std::int64_t a_unixSeconds)
{
    return FromSeconds(ToLocalSeconds(a_rule, a_unixSeconds), 0);
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
    constexpr std::int64_t firstOf1900 = -25567 * S_secondsOfDay;
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
