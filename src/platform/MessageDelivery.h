#pragma once

#include "platform/Export.h"
#include "platform/MessageTypes.h"

#include <cstddef>

/// What the owner of the event loop calls, on the window thread.
namespace kalvento::internal {

/// Takes a queued message or input through PreTranslateMessage of the window and its ancestors, from the inside out. True
/// when it goes no further: one of them took it, or the window has gone. a_message is as they left it.
KALVENTO_API bool EndsBeforeItsWindow(MSG& a_message);

/// Takes the posted messages that wait now to their windows, as PostedMessages::Deliver tells; those whose window has gone
/// are dropped. Call it whenever the wake-up of PostedMessages came, in the main loop as in nested ones. Also before
/// code is unloaded, after its windows have been destroyed, until it returns 0: then no message holds anything of that code.
/// Returns the number of messages taken from the queue. Elsewhere than on the window thread: std::logic_error.
KALVENTO_API std::size_t DeliverPostedMessages();

} // namespace kalvento::internal
