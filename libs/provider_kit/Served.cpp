#include "provider_kit/Served.h"

#include "modules/IConsumer.h"
#include "provider_kit/CheckedRows.h"
#include "series/Record.h"

namespace kalvento::internal {

void Served::TellRows(bool a_isLive, const History& a_rows, std::uint64_t a_first)
{
    const std::uint64_t end = a_first + a_rows.GetRecordsCount();
    std::optional<Record> record;
    for (;;) {
        const auto lock = Lock();
        const std::uint64_t row = nextRow;
        if (isLive != a_isLive || row < a_first || row >= end || !Wants(ParamsBase::S_kindDataRecord))
            return;
        const auto place = static_cast<std::size_t>(row - a_first);
        const NDateTime& time = a_rows.TimeSeries()[place];
        CheckedRows::CheckOrder(lastTime, time);
        if (!record)
            record.emplace(a_rows.GetEmptyRecord());
        auto value = record->begin();
        for (const auto& [series, values] : a_rows)
            (value++)->second = values[place];
        record->SetTime(time);
        nextRow = row + 1;
        lastTime = time;
        SubscriptionBook::Tell(*this, ParamsBase::S_kindDataRecord,
                               [&](IConsumer& a_consumer, unsigned int a_number) {
                                   a_consumer.ProcessRecord(a_number, *record);
                               });
    }
}

} // namespace kalvento::internal
