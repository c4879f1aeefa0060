#pragma once

#include "assets/RangeData.h"
#include "modules/EConnectionStatus.h"
#include "provider_kit/HistoryFold.h"
#include "provider_kit/IMarketStore.h"
#include "provider_kit/InstrumentList.h"
#include "provider_kit/OperationsKeeper.h"
#include "provider_kit/SessionState.h"
#include "provider_kit/SubscriptionBook.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
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
/// subscription's position changes under its number's lock only, which is what joins the two without a gap.
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
    std::shared_ptr<const InstrumentList> GetInstruments() const;
    /// Days with rows, as far as they are known; empty where there are none.
    std::optional<RangeData> GetDays(const std::string& a_isin) const;
    HistoryOperations ReadOperations(const std::string& a_isin);

    bool Start(const Subscribe::StartParams& a_params);
    void Stop(const Subscribe::StopParams& a_params) { m_book.Stop(a_params); }

    // From the store, and the provider's own command.
    void RowsAdded(const std::string& a_isin) override;
    void Broken(const std::wstring& a_reason) override;
    void Restored() override;
    void InstrumentsChanged() override;

private:
    struct Served;
    using ServedPtr = std::shared_ptr<Served>;
    using Clock = std::chrono::steady_clock;
    struct Task {
        std::function<void()> run;
        std::uint64_t connection; // m_connection when it was queued
    };
    struct Failure {
        std::chrono::milliseconds pause;
        bool isPending; // the pause isn't over
    };

    enum EStep : std::uint32_t {
        EStepMore,
        EStepDone,
        EStepWaits,       // for the connection, or for any news of the item
        EStepWaitsForRows // for the first row
    };

    bool SwitchStore(bool a_connect);
    void CloseStore(); // m_switch held

    // The thread of the past.
    void TellPast();
    void RunStep(const ServedPtr& a_served);
    void RunTask(const Task& a_task);
    void RetryStep(const ServedPtr& a_served);       // under m_mutex
    bool WaitForPast(std::unique_lock<std::mutex>&); // false: the end
    EStep Step(Served& a_served);
    EStep Begin(Served& a_served);
    EStep MakeSession(Served& a_served);
    EStep TellOperations(Served& a_served);
    EStep FindPlaces(Served& a_served);
    EStep TellHistory(Served& a_served);
    EStep Synchronize(Served& a_served);
    EStep CatchUp(Served& a_served);
    void Refuse(Served& a_served, std::wstring_view a_reason);
    void CutOff(Served& a_served, std::wstring_view a_reason);
    void CutOffItem(const std::string& a_isin);
    std::uint64_t FindWindow(const Served& a_served, std::uint64_t a_count);
    void EnsureSession(const StoreInstrument& a_instrument);
    void ReadInstruments();
    void EndWhatIsGone(const InstrumentList& a_before, const InstrumentList& a_now);
    void TellConsumers();
    void Reconnect(std::uint64_t a_connection);
    void Revisit(bool a_synchronize);

    // The live thread.
    void TellLive();
    void RetryItem(const std::string& a_isin);
    void GiveUpItem(const std::string& a_isin);
    void TellItem(const std::string& a_isin);
    void NoteLastDay(const std::string& a_isin, const NDateTime& a_time);
    void TellSession(SessionState& a_session, const SubscriptionBook::Subscriptions& a_subscriptions);
    std::shared_ptr<SessionState> SessionOf(const std::string& a_isin);

    // Both.
    void CallLater(std::chrono::milliseconds a_pause, std::function<void()> a_call); // under m_mutex
    void LogFailure(const char* a_place, int a_line, const std::string& a_isin) const;
    History ReadPart(const std::string& a_isin, std::uint64_t a_first, std::uint64_t a_last);
    static void TellRows(Served& a_served, bool a_isLive, const History& a_rows, std::uint64_t a_first);
    void Queue(std::function<void()> a_run);
    void MarkItem(const std::string& a_isin);
    void ReleaseWaiting(const std::string* a_isin); // under m_mutex; null: all

    StoreProvider& m_provider;
    std::unique_ptr<IMarketStore> m_store; // gone only when the threads are
    OperationsKeeper m_operations;
    SubscriptionBook m_book;
    std::atomic<bool> m_keepsOperations = false;

    std::mutex m_switch; // held over Open and Close; taken before m_mutex
    bool m_ended = false;

    mutable std::mutex
        m_mutex; // never held while the store is asked or a callback runs; what follows is under it
    bool m_quit = false;
    bool m_switchedOn = false;
    bool m_connected = false;
    bool m_listed = false;          // instruments have been read once
    std::uint64_t m_connection = 0; // changes with each news of the connection
    std::wstring m_breakReason;
    std::shared_ptr<const InstrumentList> m_instruments = std::make_shared<const InstrumentList>();
    std::deque<Task> m_tasks;                // of the past's thread, before its steps
    std::deque<ServedPtr> m_steps;           // subscriptions that have a past to be told
    std::vector<ServedPtr> m_waiting;        // those that can't be served until something happens
    std::set<std::string> m_marked;          // items with news
    std::map<std::string, Failure> m_failed; // items that couldn't be told
    std::chrono::milliseconds m_taskPause;   // of the past's thread alone
    std::multimap<Clock::time_point, std::function<void()>>
        m_later; // called by the past's thread under m_mutex
    std::map<std::string, std::shared_ptr<SessionState>> m_sessions; // used by the live thread alone
    std::map<std::string, NDateTime> m_lastDays; // of rows that came since the instruments were read
    std::condition_variable m_wakePast;
    std::condition_variable m_wakeLive;

    std::thread m_past; // last: they use all the others
    std::thread m_live;
};

} // namespace kalvento::internal
