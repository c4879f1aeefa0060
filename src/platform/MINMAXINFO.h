#pragma once

#include "platform/CPoint.h"

/// What WM_GETMINMAXINFO asks for. Sizes are of the whole window, frame included; the place is the parent's client
/// area's, in pixels.
struct MINMAXINFO {
    CPoint ptReserved;
    CPoint ptMaxSize;     ///< The size of the maximised window.
    CPoint ptMaxPosition; ///< Its top left corner.
    CPoint ptMinTrackSize;
    CPoint ptMaxTrackSize;
};
