#pragma once

#include <cstdint>

/// What becomes of the windows when the user chooses another skin.
enum ChangeSkinMode : std::uint32_t {
    ESkinResetWindows = 0, ///< Every window goes back to the new skin's style.
    ESkinKeepWindows = 1   ///< A window whose style the user changed keeps it.
};
