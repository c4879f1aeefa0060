#pragma once

#include "provider_kit/StoreFailure.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>

namespace kalvento::internal {

class InstrumentList;
class SessionState;

/// The items of the live thread: those with news, those that failed, which are left out until their pause is over, and
/// the current states. Any thread but for Take, which is the live thread's.
class LiveItems {
public:
    /// Waits for items with news; gives none at the end.
    std::set<std::string> Take();
    void Quit();

    /// The item has news.
    void Mark(const std::string& a_isin);
    /// The store is connected again: these have news, and all pauses are over.
    void Restart(const std::set<std::string>& a_items);

    /// The item couldn't be delivered. Returns how long to wait before Retry, which does nothing where the failure was
    /// forgotten.
    std::chrono::milliseconds NoteFailure(const std::string& a_isin);
    void Retry(const std::string& a_isin);
    void ForgetFailure(const std::string& a_isin);

    // The thread of the past makes the sessions; what is in them is the live thread's alone.

    bool HasSession(const std::string& a_isin) const;
    void SetSession(const std::string& a_isin, std::shared_ptr<SessionState> a_session);
    void DropSession(const std::string& a_isin);
    /// Those of instruments whose rows changed.
    void DropStaleSessions(const InstrumentList& a_before, const InstrumentList& a_now);
    /// Null where there is none. One that isn't wanted is dropped; a_isWanted is asked under the lock, so that a
    /// subscription that starts to want it meanwhile is either seen, or finds none and has one made.
    std::shared_ptr<SessionState> UseSession(const std::string& a_isin,
                                             const std::function<bool()>& a_isWanted);

private:
    struct Failure {
        FailurePause pause;
        bool isPending = false; // the pause isn't over
    };

    mutable std::mutex m_mutex; // of all that follows
    bool m_quit = false;
    std::set<std::string> m_marked;
    std::map<std::string, Failure> m_failed;
    std::map<std::string, std::shared_ptr<SessionState>> m_sessions;
    std::condition_variable m_wake;
};

} // namespace kalvento::internal
