#pragma once

#include "platform/Export.h"
#include "platform/MessageTypes.h"

#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

namespace kalvento::internal {

/// Messages that wait for the window thread, in the order in which they were posted, whatever their windows.
///
/// Whatever waits has a wake-up on its way: the call that SetWakeUp names comes when the queue gets its first message,
/// and again when a message is handed out while others wait. So a loop that runs inside a handler goes on with the rest.
class KALVENTO_API PostedMessages {
public:
    using Handler = std::function<void(const MSG&)>;

    /// The one of the process, for all libraries in it. Never destroyed.
    static PostedMessages& OfProcess();

    /// a_wakeUp: makes the window thread call Deliver soon. It is called on any thread, at once if messages wait already;
    /// it doesn't throw and doesn't call this object. Once SetWakeUp is back, the former call isn't running and
    /// doesn't come again. Empty for none.
    void SetWakeUp(std::function<void()> a_wakeUp);

    /// From any thread. a_payload is kept until the message has been handled or dropped, so what the message points to
    /// may outlive its sender; it is released on the window thread.
    void Post(const MSG& a_message, std::shared_ptr<const void> a_payload = {});

    /// Hands out, each at most once, as many messages as waited when it was called, oldest first; what is posted meanwhile
    /// comes with the next wake-up, so that messages that post messages don't keep everything else waiting. May be called
    /// inside a_handler: then the inner call goes on where the outer one is. What a_handler throws flies on; that
    /// message is done and the others wait. On the window thread. Returns the number of messages handed out.
    std::size_t Deliver(const Handler& a_handler);

    /// Drops whatever waits. On the window thread.
    void Clear();

private:
    struct Posted {
        MSG message;
        std::shared_ptr<const void> payload;
    };

    std::optional<Posted> Take();
    void WakeUp();

    std::mutex m_mutex; // guards all below; no other lock is taken under it, but for those of m_wakeUp
    std::deque<Posted> m_waiting;
    std::function<void()> m_wakeUp;
    bool m_isWakeUpDue = false; // m_wakeUp was called, and Deliver hasn't come since
};

} // namespace kalvento::internal
