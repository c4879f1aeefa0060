#pragma once

#include "assets/RangeData.h"
#include "provider_kit/InstrumentList.h"
#include "time/NDateTime.h"

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace kalvento::internal {

/// The list of instruments as last read, and what was seen of their days since then. Any thread.
class KnownInstruments {
public:
    /// Never null; empty before the first one was read.
    std::shared_ptr<const InstrumentList> Get() const;
    /// Null before the first one was read.
    std::shared_ptr<const InstrumentList> GetIfRead() const;
    /// The list before; null for the first one.
    std::shared_ptr<const InstrumentList> Replace(std::shared_ptr<const InstrumentList> a_now);
    /// A row of that time was seen.
    void NoteLastDay(const std::string& a_isin, const NDateTime& a_time);
    /// Days with rows, as far as they are known; empty where there are none.
    std::optional<RangeData> GetDays(const std::string& a_isin) const;

    /// Whether a subscription served from the one can't go on with the other (null: it is gone).
    static bool HasOtherRows(const StoreInstrument& a_before, const StoreInstrument* a_now);

private:
    mutable std::mutex m_mutex; // of all that follows
    bool m_isRead = false;
    std::shared_ptr<const InstrumentList> m_instruments = std::make_shared<const InstrumentList>();
    std::map<std::string, NDateTime> m_lastDays; // of rows that came since the instruments were read
};

} // namespace kalvento::internal
