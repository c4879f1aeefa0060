#pragma once

#include "platform/MessageTypes.h"

namespace kalvento::internal {

/// What a handle stands for, as far as messages go: a window. Called on the window thread only. Every call may end the
/// window, and the object with it: whoever called asks the handle before going on.
class IMessageTarget {
public:
    virtual ~IMessageTarget() = default;

    /// Handles a message that was sent to it or has been taken from the queue.
    virtual LRESULT WindowProc(UINT a_message, WPARAM a_wParam, LPARAM a_lParam) = 0;
    /// Sees queued messages and input before they arrive, its own and its descendants'. True ends the message there.
    virtual bool PreTranslateMessage(MSG* a_message) = 0;
    /// The next to see them. Null for none; no window is its own ancestor.
    virtual HWND GetParentHandle() const = 0;
};

} // namespace kalvento::internal
