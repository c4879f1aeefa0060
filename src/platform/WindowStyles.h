#pragma once

#include "platform/MessageTypes.h"

/// Bits of a window's style, with the platform's values.
inline constexpr UINT WS_POPUP = 0x80000000;
inline constexpr UINT WS_CHILD = 0x40000000;
inline constexpr UINT WS_MINIMIZE = 0x20000000;
inline constexpr UINT WS_VISIBLE = 0x10000000;
inline constexpr UINT WS_DISABLED = 0x08000000;
inline constexpr UINT WS_MAXIMIZE = 0x01000000;
inline constexpr UINT WS_BORDER = 0x00800000;
inline constexpr UINT WS_DLGFRAME = 0x00400000;
inline constexpr UINT WS_CAPTION = WS_BORDER | WS_DLGFRAME;
inline constexpr UINT WS_SYSMENU = 0x00080000;
inline constexpr UINT WS_THICKFRAME = 0x00040000; ///< Its size can be dragged.
inline constexpr UINT WS_MINIMIZEBOX = 0x00020000;
inline constexpr UINT WS_MAXIMIZEBOX = 0x00010000;
inline constexpr UINT WS_TABSTOP = 0x00010000; ///< Of a control, where the bit means nothing else.
inline constexpr UINT DS_MODALFRAME = 0x80;

/// What ShowWindow is told.
inline constexpr int SW_HIDE = 0;
inline constexpr int SW_SHOWNORMAL = 1;
inline constexpr int SW_SHOWMINIMIZED = 2;
inline constexpr int SW_SHOWMAXIMIZED = 3;
inline constexpr int SW_SHOW = 5;
inline constexpr int SW_RESTORE = 9;

/// What SetWindowPos leaves alone.
inline constexpr UINT SWP_NOSIZE = 0x0001;
inline constexpr UINT SWP_NOMOVE = 0x0002;
inline constexpr UINT SWP_NOZORDER = 0x0004;
inline constexpr UINT SWP_NOREDRAW = 0x0008;
inline constexpr UINT SWP_NOACTIVATE = 0x0010;
inline constexpr UINT SWP_SHOWWINDOW = 0x0040;
inline constexpr UINT SWP_HIDEWINDOW = 0x0080;

/// Which window GetWindow is asked for. The first is the top of the z-order, and the next is below.
inline constexpr UINT GW_HWNDFIRST = 0;
inline constexpr UINT GW_HWNDLAST = 1;
inline constexpr UINT GW_HWNDNEXT = 2;
inline constexpr UINT GW_HWNDPREV = 3;
inline constexpr UINT GW_CHILD = 5;
