#pragma once

#include "platform/CRect.h"
#include "platform/CSize.h"
#include "platform/Export.h"
#include "platform/MINMAXINFO.h"
#include "platform/MessageTypes.h"

#include <vector>

namespace kalvento::internal {

/// Where the controls of a dialog go when its client area changes its size. Each edge of a control follows the growth by
/// its anchor: 0 stays with the left or top side, 1 goes with the right or bottom side, 0.5 goes half of the way. Places are
/// reckoned from the first ones, so no sequence of sizes adds up errors, and edges that met and have one anchor still meet.
/// Pixels of one dpi throughout. A value type.
class KALVENTO_API ResizeAnchors {
public:
    /// Shares from 0 to 1.
    struct Shares {
        double left = 0.0;
        double top = 0.0;
        double right = 0.0;
        double bottom = 0.0;
    };
    struct Placed {
        UINT id = 0;
        CRect rectangle;

        friend bool operator==(const Placed&, const Placed&) = default;
    };

    /// The client area's size for which the controls' rectangles are told.
    void SetInitialSize(const CSize& a_client) { m_initial = a_client; }
    /// A control and its rectangle in the client area; another one with that id is replaced. A share outside of 0 to 1
    /// raises std::invalid_argument.
    void SetResize(UINT a_id, const CRect& a_rectangle, const Shares& a_shares);
    void Clear() { m_controls.clear(); }
    /// Every control's rectangle for a client area of that size, in the order of their first SetResize. A control that is
    /// left no room has width or height 0.
    std::vector<Placed> Place(const CSize& a_client) const;

    /// Limits of the client area; 0 for none, on each axis.
    void SetMinSize(const CSize& a_client) { m_min = a_client; }
    void SetMaxSize(const CSize& a_client) { m_max = a_client; }
    /// Fills the sizes up to which the window may be dragged, a_frame larger than the client area; an axis without a limit
    /// stays as it is. A greatest size below the smallest one is taken as that.
    void FillTrackSizes(MINMAXINFO& a_info, const CSize& a_frame) const;

private:
    struct Control {
        Placed initial;
        Shares shares;
    };

    CSize m_initial;
    CSize m_min;
    CSize m_max;
    std::vector<Control> m_controls;
};

} // namespace kalvento::internal
