#pragma once

#include <cstdint>

/// A point in pixels; the fields are public as on the platform.
struct CPoint {
    std::int32_t x = 0;
    std::int32_t y = 0;

    friend constexpr bool operator==(const CPoint&, const CPoint&) = default;
};
