#include "provider_kit/CheckedRows.h"

#include "platform/CodePage.h"
#include "provider_kit/KnownInstruments.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

namespace kalvento::internal {

History CheckedRows::Read(const std::string& a_isin, std::uint64_t a_first, std::uint64_t a_last) const
{
    const auto refuse = [&](const char* a_message) {
        throw std::runtime_error(std::string(a_message) + ": "_cp1250 + a_isin);
    };
    History rows = m_store.ReadRows(a_isin, a_first, a_last);
    const std::vector<NDateTime>& times = rows.TimeSeries();
    if (times.empty())
        refuse("Magazyn nie oddał wierszy, które policzył"_cp1250);
    if (times.size() > a_last - a_first)
        refuse("Magazyn oddał więcej wierszy, niż miał przeczytać"_cp1250);
    if (!times.front().IsValid() ||
        std::ranges::adjacent_find(times, [](const auto& earlier, const auto& later) {
            return !later.IsValid() || !(earlier < later);
        }) != times.end())
        refuse("Czasy wierszy z magazynu nie rosną"_cp1250);
    if (std::ranges::any_of(rows, [&](const auto& column) { return column.second.size() != times.size(); }))
        refuse("Kolumny wierszy z magazynu nie są równej długości"_cp1250);
    const auto instruments = m_instruments.Get();
    const StoreInstrument* const instrument = instruments->Find(a_isin);
    // The subscriptions of one that is no longer listed are being ended.
    if (instrument != nullptr &&
        !std::ranges::equal(rows, instrument->series, {}, &History::Column::first, &DSProp::GetSeriesID))
        refuse("Serie wierszy z magazynu nie są tymi, które walor ma w spisie"_cp1250);
    return rows;
}

void CheckedRows::CheckOrder(const std::optional<NDateTime>& a_last, const NDateTime& a_next)
{
    if (a_last && !(*a_last < a_next))
        throw std::runtime_error("Wiersze z magazynu cofają się w czasie"_cp1250);
}

} // namespace kalvento::internal
