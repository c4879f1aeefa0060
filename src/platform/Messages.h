#pragma once

#include "platform/Export.h"
#include "platform/MessageTypes.h"

#include <memory>

/// Whether the handle stands for a window now. From any thread; elsewhere than on the window thread the answer may be old
/// when it arrives.
KALVENTO_API bool IsWindow(HWND a_window);

/// Has the window handle the message at once and gives its answer; 0 for a handle that is no window. The window may be
/// gone afterwards. On the window thread only: any other raises std::logic_error.
KALVENTO_API LRESULT SendMessageW(HWND a_window, UINT a_message, WPARAM a_wParam, LPARAM a_lParam);

/// Queues the message, after everything that was posted before, to whatever window. From any thread. False for a handle
/// that is no window; a window that goes before the message arrives takes it along. What the message points to must live
/// until it arrives.
KALVENTO_API bool PostMessageW(HWND a_window, UINT a_message, WPARAM a_wParam, LPARAM a_lParam);
/// The same with the address of what a_payload points to as wParam. The payload is held until the message has been
/// handled, or is dropped because its window has gone, and is let go on the window thread, or by the caller where the
/// answer is false. So a sender that ends meanwhile takes nothing from the receiver.
KALVENTO_API bool PostMessageW(HWND a_window, UINT a_message, std::shared_ptr<const void> a_payload,
                               LPARAM a_lParam);
