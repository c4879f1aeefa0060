#pragma once

#include "history_operations/HistoryOperations.h"
#include "provider_kit/IMarketStore.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

class SubscriptionBook;

namespace kalvento::internal {

class CheckedRows;
class KnownInstruments;
class LiveThread;
struct Served;

/// The way of a subscription from its start to where the live thread goes on with it: current state, operations, history,
/// synchronization, and what came meanwhile. The thread of the past alone.
class SubscriptionSteps {
public:
    enum EStep : std::uint32_t {
        EStepMore,
        EStepDone,
        EStepWaits,       ///< For the connection, or for any news of the item.
        EStepWaitsForRows ///< For the first row.
    };

    /// All of them outlive it.
    SubscriptionSteps(IMarketStore& a_store, const CheckedRows& a_rows, const KnownInstruments& a_instruments,
                      SubscriptionBook& a_book, LiveThread& a_live,
                      std::function<HistoryOperations(const std::string& a_isin)> a_readOperations);

    /// One step, of one part of the rows at most. What it raises leaves the subscription at the stage where it was.
    EStep Step(Served& a_served);
    /// Ends what can't go on, by a refusal where the history was not told to its end.
    void CutOff(Served& a_served, std::wstring_view a_reason);

private:
    EStep Begin(Served& a_served);
    EStep MakeSession(Served& a_served);
    EStep TellOperations(Served& a_served);
    EStep FindPlaces(Served& a_served);
    EStep TellHistory(Served& a_served);
    EStep Synchronize(Served& a_served);
    EStep CatchUp(Served& a_served);
    void Refuse(Served& a_served, std::wstring_view a_reason);
    std::uint64_t FindWindow(const Served& a_served, std::uint64_t a_count);
    void EnsureSession(const StoreInstrument& a_instrument);

    IMarketStore& m_store;
    const CheckedRows& m_rows;
    const KnownInstruments& m_instruments;
    SubscriptionBook& m_book;
    LiveThread& m_live;
    const std::function<HistoryOperations(const std::string& a_isin)> m_readOperations;
};

} // namespace kalvento::internal
