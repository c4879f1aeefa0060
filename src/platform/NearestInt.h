#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace kalvento::internal {

/// The number of 32 bits that is nearest to a_value.
inline std::int32_t NearestInt(std::int64_t a_value)
{
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(a_value, Limits::min(), Limits::max()));
}

/// The same, cut toward zero; 0 for a NaN.
inline std::int32_t NearestInt(double a_value)
{
    using Limits = std::numeric_limits<std::int32_t>;
    if (std::isnan(a_value))
        return 0;
    return static_cast<std::int32_t>(std::clamp<double>(a_value, Limits::min(), Limits::max()));
}

} // namespace kalvento::internal
