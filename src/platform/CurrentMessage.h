#pragma once

#include "platform/Export.h"
#include "platform/MessageTypes.h"

#include <utility>

namespace kalvento::internal {

/// The message that the window thread is handling, for the life of the object: the default handling asks for it when a
/// handler runs it in mid-way. Objects end in the reverse order of their making, as scopes do.
class KALVENTO_API CurrentMessage {
public:
    explicit CurrentMessage(const MSG& a_message) noexcept
        : m_message(a_message), m_outer(std::exchange(Sm_innermost, this))
    {}
    ~CurrentMessage() { Sm_innermost = m_outer; }
    CurrentMessage(const CurrentMessage&) = delete;
    CurrentMessage& operator=(const CurrentMessage&) = delete;

    /// The innermost one; null outside of all handling.
    static const MSG* Get() noexcept { return Sm_innermost == nullptr ? nullptr : &Sm_innermost->m_message; }

private:
    static const CurrentMessage* Sm_innermost; // the window thread's alone

    MSG m_message;
    const CurrentMessage* m_outer;
};

} // namespace kalvento::internal
