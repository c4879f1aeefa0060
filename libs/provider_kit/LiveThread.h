#pragma once

#include "provider_kit/SubscriptionBook.h"

#include <functional>
#include <string>
#include <thread>

namespace kalvento::internal {

class SessionState;
struct StoreParts;

/// The thread that delivers live data: for each item with news, the rows from the positions of its subscriptions on,
/// and the current state, which all of them share.
///
/// What the store raises costs the item at hand a pause and nothing else: the positions stay where they are.
class LiveThread {
public:
    /// a_cutOff, for an item whose data is damaged: ends the subscriptions that this thread serves, on the thread of
    /// the past.
    LiveThread(StoreParts& a_parts, std::function<void(const std::string& a_isin)> a_cutOff);

    /// Waits for the end, to which LiveItems::Quit lets it come.
    void Join() { m_thread.join(); }

    LiveThread(const LiveThread&) = delete;
    LiveThread& operator=(const LiveThread&) = delete;

private:
    void Run();
    void TryItem(const std::string& a_isin);
    void RetryItem(const std::string& a_isin);
    void TellItem(const std::string& a_isin);
    static void TellSession(SessionState& a_session, const SubscriptionBook::Subscriptions& a_subscriptions);

    StoreParts& m_parts;
    const std::function<void(const std::string& a_isin)> m_cutOff;
    std::thread m_thread; // last: it uses all the others
};

} // namespace kalvento::internal
