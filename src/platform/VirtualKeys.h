#pragma once

#include "platform/MessageTypes.h"

/// Keys and mouse buttons as key messages and GetKeyState name them. Letters and digits have their ASCII capital.
inline constexpr UINT VK_LBUTTON = 0x01;
inline constexpr UINT VK_RBUTTON = 0x02;
inline constexpr UINT VK_MBUTTON = 0x04;
inline constexpr UINT VK_BACK = 0x08;
inline constexpr UINT VK_TAB = 0x09;
inline constexpr UINT VK_RETURN = 0x0D;
inline constexpr UINT VK_SHIFT = 0x10;
inline constexpr UINT VK_CONTROL = 0x11;
inline constexpr UINT VK_MENU = 0x12;
inline constexpr UINT VK_ESCAPE = 0x1B;
inline constexpr UINT VK_SPACE = 0x20;
inline constexpr UINT VK_PRIOR = 0x21;
inline constexpr UINT VK_NEXT = 0x22;
inline constexpr UINT VK_END = 0x23;
inline constexpr UINT VK_HOME = 0x24;
inline constexpr UINT VK_LEFT = 0x25;
inline constexpr UINT VK_UP = 0x26;
inline constexpr UINT VK_RIGHT = 0x27;
inline constexpr UINT VK_DOWN = 0x28;
inline constexpr UINT VK_INSERT = 0x2D;
inline constexpr UINT VK_DELETE = 0x2E;
inline constexpr UINT VK_F1 = 0x70; ///< The further ones follow.

/// What is down while a mouse message is sent: its wParam.
inline constexpr WPARAM MK_LBUTTON = 0x01;
inline constexpr WPARAM MK_RBUTTON = 0x02;
inline constexpr WPARAM MK_SHIFT = 0x04;
inline constexpr WPARAM MK_CONTROL = 0x08;
inline constexpr WPARAM MK_MBUTTON = 0x10;
