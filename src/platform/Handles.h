#pragma once

/// Names for what the platform owns. Pointers that are handed around and compared, never looked into.

/// A module of the process: the address of anything inside it, a function or a static object.
struct HInstanceTag;
using HINSTANCE = HInstanceTag*;

/// A font of the window system.
struct HFontTag;
using HFONT = HFontTag*;

/// A font or another object that things are painted with.
using HGDIOBJ = void*;

/// A window. Valid only within the run of one process; a stale one is never a window again.
struct HWndTag;
using HWND = HWndTag*;

/// An icon of the window system.
struct HIconTag;
using HICON = HIconTag*;
