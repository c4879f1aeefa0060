#pragma once

#include "platform/Handles.h"

#include <cstdint>

/// The widths of window messages. Fixed, or as wide as an address, whatever the machine's `long` is.
using UINT = std::uint32_t;
using WPARAM = std::uintptr_t;
using LPARAM = std::intptr_t;
using LRESULT = std::intptr_t;

/// A message on its way to a window.
struct MSG {
    HWND hwnd = nullptr;
    UINT message = 0;
    WPARAM wParam = 0;
    LPARAM lParam = 0;

    friend bool operator==(const MSG&, const MSG&) = default;
};
