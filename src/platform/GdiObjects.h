#pragma once

#include "platform/Export.h"
#include "platform/Handles.h"
#include "platform/LOGFONTW.h"

/// The objects that windows are painted with, under the platform's names. Nothing here draws: an object is a handle with
/// the description that it was made from, by which the window layer finds what its toolkit draws with. A handle is never
/// given out twice, so a stale one is no object. Safe from any thread.

/// Never null. The caller deletes it.
KALVENTO_API HFONT CreateFontIndirectW(const LOGFONTW* a_font);
/// False where the handle is no object.
KALVENTO_API bool DeleteObject(HGDIOBJ a_object);
/// Copies the description of a font to a_data, which has a_size bytes, and gives the number of bytes copied: that of a
/// LOGFONTW. 0, with a_data unchanged, where the handle is no object or a_size is smaller.
KALVENTO_API int GetObjectW(HGDIOBJ a_object, int a_size, void* a_data);
