#include "provider_kit/KnownInstruments.h"

#include "time/TimeParts.h"

#include <utility>

namespace kalvento::internal {

std::shared_ptr<const InstrumentList> KnownInstruments::Get() const
{
    const std::lock_guard lock(m_mutex);
    return m_instruments;
}

std::shared_ptr<const InstrumentList> KnownInstruments::GetIfRead() const
{
    const std::lock_guard lock(m_mutex);
    return m_isRead ? m_instruments : nullptr;
}

std::shared_ptr<const InstrumentList> KnownInstruments::Replace(std::shared_ptr<const InstrumentList> a_now)
{
    const std::lock_guard lock(m_mutex);
    auto before = std::exchange(m_instruments, std::move(a_now));
    std::erase_if(m_lastDays, [&](const auto& a_day) {
        const StoreInstrument* const known = before->Find(a_day.first);
        return known != nullptr && HasOtherRows(*known, m_instruments->Find(a_day.first));
    });
    return std::exchange(m_isRead, true) ? before : nullptr;
}

void KnownInstruments::NoteLastDay(const std::string& a_isin, const NDateTime& a_time)
{
    const NDateTime day = TimeParts::MidnightOf(a_time);
    const std::lock_guard lock(m_mutex);
    if (const auto [known, isNew] = m_lastDays.try_emplace(a_isin, day); !isNew && known->second < day)
        known->second = day;
}

std::optional<RangeData> KnownInstruments::GetDays(const std::string& a_isin) const
{
    const std::lock_guard lock(m_mutex);
    const StoreInstrument* const instrument = m_instruments->Find(a_isin);
    if (instrument == nullptr)
        return std::nullopt;
    RangeData days(instrument->firstDay, instrument->lastDay);
    const auto seen = m_lastDays.find(a_isin);
    if (seen == m_lastDays.end())
        return days.Validate() ? std::optional(days) : std::nullopt;
    if (!days.Validate())
        return RangeData(seen->second, seen->second);
    if (days.GetDates().to < seen->second)
        days.SetDateTo(seen->second);
    return days;
}

bool KnownInstruments::HasOtherRows(const StoreInstrument& a_before, const StoreInstrument* a_now)
{
    return a_now == nullptr || !a_now->interval.Equals(a_before.interval) ||
           a_now->series != a_before.series || a_now->live != a_before.live ||
           a_now->generation != a_before.generation;
}

} // namespace kalvento::internal
