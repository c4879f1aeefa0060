#pragma once

#include "platform/Export.h"

namespace VeloTools::Keyboard {

/// Whether the Shift key is down at this moment; false without a window system.
KALVENTO_API bool IsShiftPressed();

/// The window system's answer to that question, asked on the thread that asks IsShiftPressed. Null takes it back.
using ShiftState = bool (*)();
KALVENTO_API void SetShiftState(ShiftState a_state);

} // namespace VeloTools::Keyboard
