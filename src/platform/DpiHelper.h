#pragma once

#include "platform/CRect.h"
#include "platform/CSize.h"
#include "platform/Export.h"

#include <atomic>
#include <cstdint>

/// Converts between pixels at 96 dpi, in which geometry is stored, and pixels at the present screen's dpi. Halves are
/// rounded away from zero; what exceeds 32 bits ends at their limit. From 96 to the present dpi and back gives the same
/// number. Safe from any thread.
class KALVENTO_API DpiHelper {
public:
    static constexpr int BaseDpi = 96;

    int GetDpi() const { return m_dpi.load(std::memory_order_relaxed); }
    /// Below 96 is taken as 96: a smaller screen would not give back the stored numbers.
    void SetDpi(int a_dpi);

    std::int32_t ScaleX(std::int32_t a_x) const;
    std::int32_t ScaleY(std::int32_t a_y) const;
    CSize Scale(const CSize& a_size) const { return {ScaleX(a_size.cx), ScaleY(a_size.cy)}; }
    CRect Scale(const CRect& a_rect) const
    {
        return {ScaleX(a_rect.left), ScaleY(a_rect.top), ScaleX(a_rect.right), ScaleY(a_rect.bottom)};
    }

    std::int32_t UnscaleX(std::int32_t a_x) const;
    std::int32_t UnscaleY(std::int32_t a_y) const;
    CSize Unscale(const CSize& a_size) const { return {UnscaleX(a_size.cx), UnscaleY(a_size.cy)}; }
    CRect Unscale(const CRect& a_rect) const
    {
        return {UnscaleX(a_rect.left), UnscaleY(a_rect.top), UnscaleX(a_rect.right), UnscaleY(a_rect.bottom)};
    }

private:
    std::atomic<int> m_dpi = BaseDpi;
};

/// The one of the process. Starts at 96 dpi; the window layer sets the dpi of the screen.
KALVENTO_API DpiHelper& XTPDpiHelper();
