#pragma once

#include "modules/EConnectionStatus.h"
#include "provider_kit/CheckedRows.h"
#include "provider_kit/IMarketStore.h"
#include "provider_kit/KnownInstruments.h"
#include "provider_kit/LiveThread.h"
#include "provider_kit/OperationsKeeper.h"
#include "provider_kit/Served.h"
#include "provider_kit/StoreFailure.h"
#include "provider_kit/SubscriptionBook.h"
#include "provider_kit/SubscriptionSteps.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

class StoreProvider;

namespace kalvento::internal {

/// The work behind StoreProvider: its subscriptions and the two threads that serve them.
///
/// The thread of the past takes each subscription from its start to where the live thread can go on with it: operations,
/// history, synchronization. It works in steps of one part of the rows and takes the next subscription after each, so that
/// a short one needn't wait for a long one. The live thread tells whoever has got so far the rows from its position on. A
/// subscription's position changes under its number's lock only, which is what joins the two without a gap. SubscriptionSteps
/// has the steps, LiveThread the other thread; here is who has its turn, and what becomes of all when the store has news.
///
/// What a store raises, and rows that aren't as IMarketStore promises, cost the step or the item at hand and nothing else: it
/// waits for the new connection where the store says that it is broken, and otherwise for a pause that doubles with every
/// failure in a row. News of the item doesn't cut the pause short, or a store that fails at each row would fill the log.
/// DamagedData ends the subscriptions that came upon it.
class StoreEngine : public IMarketStoreListener {
public:
    StoreEngine(StoreProvider& a_provider, std::unique_ptr<IMarketStore> a_store);
    ~StoreEngine() override;

    /// Closes the store, ends all subscriptions and the threads. Once is enough; more do nothing.
    void End();
    /// From now on files of operations are kept.
    void KeepOperations() { m_keepsOperations = true; }

    void SwitchConnection(bool a_connect);
    EConnectionStatus GetStatus() const;
    /// Why the connection broke; empty where it didn't.
    std::wstring GetBreakReason() const;
    IMarketStore& GetStore() const { return *m_store; }
    const KnownInstruments& GetInstruments() const { return m_instruments; }
    HistoryOperations ReadOperations(const std::string& a_isin);

    bool Start(const Subscribe::StartParams& a_params);
    void Stop(const Subscribe::StopParams& a_params) { m_book.Stop(a_params); }

    // From the store, and the provider's own command.
    void RowsAdded(const std::string& a_isin) override;
    void Broken(const std::wstring& a_reason) override;
    void Restored() override;
    void InstrumentsChanged() override;

private:
    using Clock = std::chrono::steady_clock;
    struct Task {
        std::function<void()> run;
        std::uint64_t connection; // m_connection when it was queued
    };

    bool SwitchStore(bool a_connect);
    void CloseStore(); // m_switch held

    // The thread of the past.
    void TellPast();
    void RunStep(const ServedPtr& a_served);
    void RunTask(const Task& a_task);
    void RetryStep(const ServedPtr& a_served);       // under m_mutex
    bool WaitForPast(std::unique_lock<std::mutex>&); // false: the end
    void CutOffItem(const std::string& a_isin);
    void ReadInstruments();
    void EndWhatIsGone(const InstrumentList& a_before, const InstrumentList& a_now);
    void TellConsumers();
    void Reconnect(std::uint64_t a_connection);
    void Revisit(bool a_synchronize);

    // Both threads.
    void CallLater(std::chrono::milliseconds a_pause, std::function<void()> a_call); // under m_mutex
    void Queue(std::function<void()> a_run);
    void ReleaseWaiting(const std::string* a_isin); // under m_mutex; null: all

    StoreProvider& m_provider;
    std::unique_ptr<IMarketStore> m_store; // gone only when the threads are
    OperationsKeeper m_operations;
    SubscriptionBook m_book;
    std::atomic<bool> m_keepsOperations = false;

    std::mutex m_switch; // held over Open and Close; taken before m_mutex
    bool m_ended = false;

    mutable std::mutex
        m_mutex; // of what follows, to m_wakePast; never held while the store is asked or a callback runs
    bool m_quit = false;
    bool m_switchedOn = false;
    bool m_connected = false;
    std::uint64_t m_connection = 0; // changes with each news of the connection
    std::wstring m_breakReason;
    std::deque<Task> m_tasks;         // of the past's thread, before its steps
    std::deque<ServedPtr> m_queue;    // subscriptions that have a past to be told
    std::vector<ServedPtr> m_waiting; // those that can't be served until something happens
    std::multimap<Clock::time_point, std::function<void()>>
        m_later; // called by the past's thread under m_mutex
    std::condition_variable m_wakePast;

    KnownInstruments m_instruments;
    CheckedRows m_rows;
    LiveThread m_live;         // its lock is taken under m_mutex, and never the other way round
    SubscriptionSteps m_steps; // of the past's thread alone, as the next one
    FailurePause m_taskPause;
    std::thread m_past; // last: it uses all the others
};

} // namespace kalvento::internal
