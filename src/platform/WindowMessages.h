#pragma once

#include "platform/MessageTypes.h"

/// The numbers of window messages and of what they carry, with the platform's values: plug-ins hold them compiled in, and
/// handlers compare with the exact values. A registered message has its number from UniqueMessage, 0xC000 and above.

// The life of a window.
inline constexpr UINT WM_CREATE = 0x0001;
inline constexpr UINT WM_DESTROY = 0x0002;   ///< Before its children are destroyed.
inline constexpr UINT WM_NCDESTROY = 0x0082; ///< The last one, after its children.
inline constexpr UINT WM_CLOSE = 0x0010;
inline constexpr UINT WM_INITDIALOG = 0x0110;

// Place and look.
inline constexpr UINT WM_MOVE = 0x0003;
inline constexpr UINT WM_SIZE = 0x0005; ///< wParam: SIZE_..., lParam: width and height of the client area.
inline constexpr UINT WM_ENABLE = 0x000A;
inline constexpr UINT WM_PAINT = 0x000F;
inline constexpr UINT WM_SHOWWINDOW = 0x0018;       ///< wParam: whether it is shown.
inline constexpr UINT WM_GETMINMAXINFO = 0x0024;    ///< lParam: a MINMAXINFO to change.
inline constexpr UINT WM_WINDOWPOSCHANGED = 0x0047; ///< lParam: a WINDOWPOS.
inline constexpr UINT WM_SETICON = 0x0080;
inline constexpr UINT WM_ENTERSIZEMOVE = 0x0231;
inline constexpr UINT WM_EXITSIZEMOVE = 0x0232;

// Activation and focus.
inline constexpr UINT WM_ACTIVATE = 0x0006;
inline constexpr UINT WM_SETFOCUS = 0x0007;
inline constexpr UINT WM_KILLFOCUS = 0x0008;
inline constexpr UINT WM_NCACTIVATE = 0x0086; ///< wParam: whether the caption is to look active.

// Keys and commands.
inline constexpr UINT WM_KEYDOWN = 0x0100; ///< wParam: VK_...
inline constexpr UINT WM_KEYUP = 0x0101;
inline constexpr UINT WM_CHAR = 0x0102;
inline constexpr UINT WM_SYSKEYDOWN = 0x0104;
inline constexpr UINT WM_SYSKEYUP = 0x0105;
inline constexpr UINT WM_COMMAND = 0x0111;    ///< wParam: the control's id.
inline constexpr UINT WM_SYSCOMMAND = 0x0112; ///< wParam: SC_...
inline constexpr UINT WM_TIMER = 0x0113;

// The mouse: in the frame (WM_NC...), wParam is HT...; in the client area MK_...
inline constexpr UINT WM_CONTEXTMENU = 0x007B;
inline constexpr UINT WM_NCHITTEST = 0x0084;
inline constexpr UINT WM_NCMOUSEMOVE = 0x00A0;
inline constexpr UINT WM_NCLBUTTONDOWN = 0x00A1;
inline constexpr UINT WM_NCLBUTTONUP = 0x00A2;
inline constexpr UINT WM_NCLBUTTONDBLCLK = 0x00A3;
inline constexpr UINT WM_NCRBUTTONDOWN = 0x00A4;
inline constexpr UINT WM_NCRBUTTONUP = 0x00A5;
inline constexpr UINT WM_NCRBUTTONDBLCLK = 0x00A6;
inline constexpr UINT WM_MOUSEMOVE = 0x0200;
inline constexpr UINT WM_LBUTTONDOWN = 0x0201;
inline constexpr UINT WM_LBUTTONUP = 0x0202;
inline constexpr UINT WM_LBUTTONDBLCLK = 0x0203;
inline constexpr UINT WM_RBUTTONDOWN = 0x0204;
inline constexpr UINT WM_RBUTTONUP = 0x0205;
inline constexpr UINT WM_RBUTTONDBLCLK = 0x0206;
inline constexpr UINT WM_MOUSEWHEEL = 0x020A;
inline constexpr UINT WM_MOUSELEAVE = 0x02A3;

// From here on a window's own class numbers its messages, and from WM_APP on the application.
inline constexpr UINT WM_USER = 0x0400;
inline constexpr UINT WM_APP = 0x8000;

// WM_SIZE
inline constexpr WPARAM SIZE_RESTORED = 0;
inline constexpr WPARAM SIZE_MINIMIZED = 1;
inline constexpr WPARAM SIZE_MAXIMIZED = 2;

// WM_SYSCOMMAND
inline constexpr WPARAM SC_SIZE = 0xF000;
inline constexpr WPARAM SC_MOVE = 0xF010;
inline constexpr WPARAM SC_MINIMIZE = 0xF020;
inline constexpr WPARAM SC_MAXIMIZE = 0xF030;
inline constexpr WPARAM SC_CLOSE = 0xF060;
inline constexpr WPARAM SC_RESTORE = 0xF120;

// The answers to WM_NCHITTEST
inline constexpr LRESULT HTNOWHERE = 0;
inline constexpr LRESULT HTCLIENT = 1;
inline constexpr LRESULT HTCAPTION = 2;
inline constexpr LRESULT HTMINBUTTON = 8;
inline constexpr LRESULT HTMAXBUTTON = 9;
inline constexpr LRESULT HTLEFT = 10;
inline constexpr LRESULT HTRIGHT = 11;
inline constexpr LRESULT HTTOP = 12;
inline constexpr LRESULT HTTOPLEFT = 13;
inline constexpr LRESULT HTTOPRIGHT = 14;
inline constexpr LRESULT HTBOTTOM = 15;
inline constexpr LRESULT HTBOTTOMLEFT = 16;
inline constexpr LRESULT HTBOTTOMRIGHT = 17;
inline constexpr LRESULT HTBORDER = 18;
inline constexpr LRESULT HTCLOSE = 20;
