#pragma once

#include "platform/CPoint.h"
#include "platform/CRect.h"
#include "platform/MessageTypes.h"

/// Where a window is, and where it is when restored.
struct WINDOWPLACEMENT {
    UINT length = sizeof(WINDOWPLACEMENT);
    UINT flags = 0;
    UINT showCmd = 0; ///< SW_SHOWNORMAL, SW_SHOWMINIMIZED or SW_SHOWMAXIMIZED
    CPoint ptMinPosition;
    CPoint ptMaxPosition;
    CRect rcNormalPosition; ///< In the parent's client area; kept while maximised or minimised.
};
