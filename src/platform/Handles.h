#pragma once

/// Names for what the platform owns. Pointers that are handed around and compared, never looked into.

/// A module of the process: the address of anything inside of it, a function or a static object.
struct HInstanceTag;
using HINSTANCE = HInstanceTag*;

/// A font of the window system.
struct HFontTag;
using HFONT = HFontTag*;
