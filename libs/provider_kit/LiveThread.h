#pragma once

#include "provider_kit/IMarketStore.h"
#include "provider_kit/SessionState.h"
#include "provider_kit/StoreFailure.h"
#include "provider_kit/SubscriptionBook.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>

class InstrumentList;
class ProviderBase;

namespace kalvento::internal {

class CheckedRows;
class KnownInstruments;

/// The thread that tells what is live: of each item with news, the rows behind the positions of its subscriptions, and the
/// current state, which all of them share.
///
/// What the store raises costs the item at hand a pause and nothing else: the positions stay where they are.
class LiveThread {
public:
    /// What it needs of the engine around it, which must take no lock of its own that is held while this is called.
    struct Engine {
        /// Calls the function when the pause is over. False where the store isn't connected: then all begins anew anyway.
        std::function<bool(std::chrono::milliseconds a_pause, std::function<void()> a_call)> callLater;
        /// The item's data are damaged: ends, on the thread of the past, those whom this one tells.
        std::function<void(const std::string& a_isin)> cutOff;
    };

    /// All of them outlive it.
    LiveThread(const ProviderBase& a_provider, IMarketStore& a_store, const CheckedRows& a_rows,
               KnownInstruments& a_instruments, const SubscriptionBook& a_book, Engine a_engine);

    /// Any thread. Quit lets the thread come to its end, Join waits for that.
    void Quit();
    void Join() { m_thread.join(); }

    /// The item has news. Any thread.
    void Mark(const std::string& a_isin);
    /// The store is connected again: these have news, and no pause holds any more. Any thread.
    void Restart(const std::set<std::string>& a_items);

    // The sessions, which are made by the thread of the past. The live thread alone uses what is in them.

    bool HasSession(const std::string& a_isin) const;
    /// With which the live thread goes on.
    void SetSession(const std::string& a_isin, std::shared_ptr<SessionState> a_session);
    void DropSession(const std::string& a_isin);
    /// Those of instruments whose rows are others now.
    void DropOldSessions(const InstrumentList& a_before, const InstrumentList& a_now);

    LiveThread(const LiveThread&) = delete;
    LiveThread& operator=(const LiveThread&) = delete;

private:
    struct Failure {
        FailurePause pause;
        bool isPending = false; // the pause isn't over
    };

    void Run();
    void RetryItem(const std::string& a_isin);
    void TellItem(const std::string& a_isin);
    static void TellSession(SessionState& a_session, const SubscriptionBook::Subscriptions& a_subscriptions);

    const ProviderBase& m_provider;
    IMarketStore& m_store;
    const CheckedRows& m_rows;
    KnownInstruments& m_instruments;
    const SubscriptionBook& m_book;
    const Engine m_engine;

    mutable std::mutex
        m_mutex; // never held while the store is asked or a callback runs; what follows is under it
    bool m_quit = false;
    std::set<std::string> m_marked;          // items with news
    std::map<std::string, Failure> m_failed; // items that couldn't be told
    std::map<std::string, std::shared_ptr<SessionState>> m_sessions;
    std::condition_variable m_wake;

    std::thread m_thread; // last: it uses all the others
};

} // namespace kalvento::internal
