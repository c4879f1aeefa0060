#include "platform/DpiHelper.h"

#include <algorithm>
#include <limits>

namespace {

// a_value * a_numerator / a_denominator, halves away from zero.
std::int32_t Proportion(std::int32_t a_value, int a_numerator, int a_denominator)
{
    const std::int64_t doubled = std::int64_t{2} * a_value * a_numerator;
    const std::int64_t half = doubled < 0 ? -std::int64_t{a_denominator} : std::int64_t{a_denominator};
    const std::int64_t rounded = (doubled + half) / (std::int64_t{2} * a_denominator);
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(
        rounded, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()));
}

} // namespace

void DpiHelper::SetDpi(int a_dpi)
{
    m_dpi.store(std::max(a_dpi, BaseDpi), std::memory_order_relaxed);
}

std::int32_t DpiHelper::ScaleX(std::int32_t a_x) const
{
    return Proportion(a_x, GetDpi(), BaseDpi);
}

std::int32_t DpiHelper::ScaleY(std::int32_t a_y) const
{
    return Proportion(a_y, GetDpi(), BaseDpi);
}

CSize DpiHelper::Scale(const CSize& a_size) const
{
    return {ScaleX(a_size.cx), ScaleY(a_size.cy)};
}

CRect DpiHelper::Scale(const CRect& a_rect) const
{
    return {ScaleX(a_rect.left), ScaleY(a_rect.top), ScaleX(a_rect.right), ScaleY(a_rect.bottom)};
}

std::int32_t DpiHelper::UnscaleX(std::int32_t a_x) const
{
    return Proportion(a_x, BaseDpi, GetDpi());
}

std::int32_t DpiHelper::UnscaleY(std::int32_t a_y) const
{
    return Proportion(a_y, BaseDpi, GetDpi());
}

CSize DpiHelper::Unscale(const CSize& a_size) const
{
    return {UnscaleX(a_size.cx), UnscaleY(a_size.cy)};
}

CRect DpiHelper::Unscale(const CRect& a_rect) const
{
    return {UnscaleX(a_rect.left), UnscaleY(a_rect.top), UnscaleX(a_rect.right), UnscaleY(a_rect.bottom)};
}

DpiHelper& XTPDpiHelper()
{
    static DpiHelper helper;
    return helper;
}
