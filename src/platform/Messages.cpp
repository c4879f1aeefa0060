#include "platform/Messages.h"

#include "platform/CurrentMessage.h"
#include "platform/HandleTable.h"
#include "platform/MessageDelivery.h"
#include "platform/PostedMessages.h"
#include "platform/WindowThread.h"

#include <utility>

using namespace kalvento::internal;

bool IsWindow(HWND a_window)
{
    return HandleTable::OfProcess().IsWindow(a_window);
}

LRESULT SendMessageW(HWND a_window, UINT a_message, WPARAM a_wParam, LPARAM a_lParam)
{
    WindowThread::Require("SendMessageW");
    IMessageTarget* const target = HandleTable::OfProcess().Find(a_window);
    if (target == nullptr)
        return 0;
    const CurrentMessage current({a_window, a_message, a_wParam, a_lParam});
    return target->WindowProc(a_message, a_wParam, a_lParam);
}

bool PostMessageW(HWND a_window, UINT a_message, WPARAM a_wParam, LPARAM a_lParam)
{
    if (!IsWindow(a_window))
        return false;
    PostedMessages::OfProcess().Post({a_window, a_message, a_wParam, a_lParam});
    return true;
}

bool PostMessageW(HWND a_window, UINT a_message, std::shared_ptr<const void> a_payload, LPARAM a_lParam)
{
    if (!IsWindow(a_window))
        return false;
    const auto address = reinterpret_cast<WPARAM>(a_payload.get());
    PostedMessages::OfProcess().Post({a_window, a_message, address, a_lParam}, std::move(a_payload));
    return true;
}

namespace kalvento::internal {

bool EndsBeforeItsWindow(MSG& a_message)
{
    const HandleTable& windows = HandleTable::OfProcess();
    const HWND window = a_message.hwnd;
    HWND asked = window;
    // Each of them may end any window, so every handle is looked up afresh after it.
    while (IMessageTarget* const target = windows.Find(asked)) {
        if (target->PreTranslateMessage(&a_message) || windows.Find(window) == nullptr)
            return true;
        const IMessageTarget* const survivor = windows.Find(asked);
        asked = survivor == nullptr ? nullptr : survivor->GetParentHandle();
    }
    return windows.Find(window) == nullptr;
}

std::size_t DeliverPostedMessages()
{
    WindowThread::Require("DeliverPostedMessages");
    return PostedMessages::OfProcess().Deliver([](const MSG& a_posted) {
        MSG message = a_posted;
        if (!EndsBeforeItsWindow(message))
            SendMessageW(message.hwnd, message.message, message.wParam, message.lParam);
    });
}

} // namespace kalvento::internal
