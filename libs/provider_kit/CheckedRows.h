#pragma once

#include "provider_kit/IMarketStore.h"

#include <cstdint>
#include <optional>
#include <string>

namespace kalvento::internal {

class KnownInstruments;

/// Rows of a store as IMarketStore promises them; those that aren't raise std::runtime_error (CP1250). What is handed
/// on is indexed without further checks. Any thread.
class CheckedRows {
public:
    /// Rows that are read, folded and delivered at once. It sets how much memory a reading takes and how long another
    /// subscription waits.
    static constexpr std::uint64_t S_atOnce = 20'000;

    CheckedRows(IMarketStore& a_store, const KnownInstruments& a_instruments)
        : m_store(a_store), m_instruments(a_instruments)
    {}

    /// Rows a_first to before a_last, or fewer, but never none: rows that were counted can be read.
    History Read(const std::string& a_isin, std::uint64_t a_first, std::uint64_t a_last) const;
    /// A store whose rows go back in time from one reading to the next is no longer read.
    static void CheckOrder(const std::optional<NDateTime>& a_last, const NDateTime& a_next);

private:
    IMarketStore& m_store;
    const KnownInstruments& m_instruments;
};

} // namespace kalvento::internal
