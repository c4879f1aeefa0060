#pragma once

#include "platform/MessageTypes.h"

/// What WM_WINDOWPOSCHANGED tells: the window's new rectangle in its parent's client area, and by SWP_... what of it
/// did not change.
struct WINDOWPOS {
    HWND hwnd = nullptr;
    HWND hwndInsertAfter = nullptr; ///< The sibling right above it; null for none.
    std::int32_t x = 0;
    std::int32_t y = 0;
    std::int32_t cx = 0;
    std::int32_t cy = 0;
    UINT flags = 0;
};
