#pragma once

#include "provider_kit/IMarketStore.h"

#include <cstdint>
#include <memory>
#include <string_view>

namespace kalvento::internal {

class Served;
class SessionState;
struct StoreParts;

/// The way of a subscription from its start to where the live thread goes on with it: current state, operations,
/// history, synchronization, and what came meanwhile. The thread of the past alone.
class SubscriptionSteps {
public:
    enum EStep : std::uint32_t {
        EStepMore,
        EStepDone,
        EStepWaits,       ///< For the connection, or for any news of the item.
        EStepWaitsForRows ///< For the first row.
    };

    explicit SubscriptionSteps(StoreParts& a_parts) : m_parts(a_parts) {}

    /// One step, of one part of the rows at most. What it raises leaves the subscription at the stage where it was.
    EStep Step(Served& a_served);
    /// Ends what can't go on, by a refusal where the history was not delivered to its end.
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
    std::shared_ptr<SessionState> ReadSession(const StoreInstrument& a_instrument);

    StoreParts& m_parts;
};

} // namespace kalvento::internal
