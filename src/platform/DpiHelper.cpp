#include "platform/DpiHelper.h"

#include "platform/NearestInt.h"

#include <algorithm>

namespace {

// a_value * a_numerator / a_denominator, halves away from zero.
std::int32_t Proportion(std::int32_t a_value, int a_numerator, int a_denominator)
{
    const std::int64_t doubled = std::int64_t{2} * a_value * a_numerator;
    const std::int64_t half = doubled < 0 ? -std::int64_t{a_denominator} : std::int64_t{a_denominator};
    return kalvento::internal::NearestInt((doubled + half) / (std::int64_t{2} * a_denominator));
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

std::int32_t DpiHelper::UnscaleX(std::int32_t a_x) const
{
    return Proportion(a_x, BaseDpi, GetDpi());
}

std::int32_t DpiHelper::UnscaleY(std::int32_t a_y) const
{
    return Proportion(a_y, BaseDpi, GetDpi());
}

DpiHelper& XTPDpiHelper()
{
    static DpiHelper helper;
    return helper;
}
