#include "provider_kit/Served.h"

#include "modules/IConsumer.h"
#include "provider_kit/CheckedRows.h"
#include "series/Record.h"

namespace kalvento::internal {

void Served::SetPosition(std::uint64_t a_row, const std::optional<NDateTime>& a_timeBefore)
{
    const auto lock = Lock();
    m_nextRow = a_row;
    m_timeBefore = a_timeBefore;
}

std::uint64_t Served::GetPosition() const
{
    const auto lock = Lock();
    return m_nextRow;
}

std::optional<std::uint64_t> Served::GetLivePosition() const
{
    if (!m_isLive)
        return std::nullopt;
    const auto lock = Lock();
    return m_isLive ? std::optional(m_nextRow) : std::nullopt;
}

void Served::SetLive(bool a_isLive)
{
    const auto lock = Lock();
    m_isLive = a_isLive;
}

void Served::TellRows(bool a_isLive, const History& a_rows, std::uint64_t a_first)
{
    const std::uint64_t end = a_first + a_rows.GetRecordsCount();
    std::optional<Record> record;
    for (;;) {
        const auto lock = Lock();
        const std::uint64_t row = m_nextRow;
        if (m_isLive != a_isLive || row < a_first || row >= end || !Wants(ParamsBase::S_kindDataRecord))
            return;
        const auto place = static_cast<std::size_t>(row - a_first);
        const NDateTime& time = a_rows.TimeSeries()[place];
        CheckedRows::CheckOrder(m_timeBefore, time);
        if (!record)
            record.emplace(a_rows.GetEmptyRecord());
        auto value = record->begin();
        for (const auto& [series, values] : a_rows)
            (value++)->second = values[place];
        record->SetTime(time);
        m_nextRow = row + 1;
        m_timeBefore = time;
        SubscriptionBook::Tell(*this, ParamsBase::S_kindDataRecord,
                               [&](IConsumer& a_consumer, unsigned int a_number) {
                                   a_consumer.ProcessRecord(a_number, *record);
                               });
    }
}

} // namespace kalvento::internal
