#pragma once

#include "folding/PieceFolder.h"
#include "history_operations/HistoryOperations.h"
#include "provider_kit/IMarketStore.h"
#include "provider_kit/StoreFailure.h"
#include "provider_kit/SubscriptionBook.h"
#include "time/IntervalAndMultiplicity.h"
#include "time/NDateTime.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>

namespace kalvento::internal {

/// A subscription of StoreEngine and how far it has been served.
class Served : public SubscriptionBook::Subscription {
public:
    enum EStage : std::uint32_t {
        EBegin,
        ESession,
        EOperations,
        EPlaces,
        EHistory,
        ESynchronize,
        ECatchUp,
        ELive
    };

    static constexpr unsigned int S_allKinds = ~0U;

    using Subscription::Subscription;

    // The position: the row to be delivered next as a record. Any thread; each operation takes Lock.

    void SetPosition(std::uint64_t a_row, const std::optional<NDateTime>& a_timeBefore);
    std::uint64_t GetPosition() const;
    /// Empty unless the live thread delivers the rows.
    std::optional<std::uint64_t> GetLivePosition() const;
    /// Whose turn it is to deliver the rows: the live thread's, or else that of the past.
    void SetLive(bool a_isLive);
    /// Without Lock, so that nobody waits while the past is being delivered.
    bool IsLive() const { return m_isLive; }
    /// Delivers those of the rows that the subscription is owed and moves the position along. The first of them has the
    /// number a_first. a_isLive: which thread this is, and hence whose turn it must be.
    void TellRows(bool a_isLive, const History& a_rows, std::uint64_t a_first);

    // The thread of the past alone.
    EStage stage = EBegin;
    std::optional<StoreInstrument> instrument;
    IntervalAndMultiplicity interval;
    std::optional<HistoryOperations> operations; // as delivered
    std::uint64_t nextHistory = 0;               // row that the history goes on with
    std::uint64_t endHistory = 0;
    std::uint64_t firstSynchronized = 0;
    std::optional<NDateTime> lastHistory; // time of the last row of the history that was read
    std::uint64_t endSynchronized = 0;    // also where records go on without a synchronization
    std::unique_ptr<PieceFolder> fold;
    bool mustSynchronize = false;     // once more, after a break
    bool mustCheckOperations = false; // they may have changed since they were delivered
    bool historyDone = false;
    FailurePause pause; // after the next failure
    // The live thread alone.
    bool knowsSession = false;

private:
    std::atomic<bool> m_isLive = false; // changes under Lock
    std::uint64_t m_nextRow = 0;
    std::optional<NDateTime> m_timeBefore; // of the row before it, where that was delivered
};
using ServedPtr = std::shared_ptr<Served>;

} // namespace kalvento::internal
