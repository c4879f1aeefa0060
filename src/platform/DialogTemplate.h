#pragma once

#include "platform/CRect.h"
#include "platform/MessageTypes.h"

#include <span>

/// What a control of a dialog is made as.
enum EControlClass : std::uint8_t { EControlStatic, EControlEdit, EControlButton, EControlReport };

/// A control of a dialog.
struct DialogControl {
    UINT id; ///< IDC_STATIC, or the only one of its number in the dialog.
    EControlClass kind;
    CRect rectangle; ///< In the dialog's client area, in pixels at 96 dpi.
    const wchar_t* text = L"";
    UINT style = 0;         ///< Beside WS_CHILD and WS_VISIBLE, which every control has.
    bool isDefault = false; ///< The button that Enter presses; at most one.
};

/// A dialog as it is drawn at 96 dpi; made, it is scaled to the screen. Static data that its texts and controls outlive.
struct DialogTemplate {
    UINT number; ///< Above 0, and the only one of its number in its module.
    /// Its place in the parent, and the size of its client area, in pixels at 96 dpi.
    CRect rectangle;
    UINT style = 0;
    const wchar_t* caption = L"";
    std::span<const DialogControl> controls;
    const wchar_t* name = nullptr; ///< For those who ask by name; null for none.
};
