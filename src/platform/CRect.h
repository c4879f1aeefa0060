#pragma once

#include <cstdint>

/// A rectangle in pixels: left and top belong to it, right and bottom are the first places outside.
/// The fields are public as on the platform; nothing keeps them in order.
struct CRect {
    std::int32_t left = 0;
    std::int32_t top = 0;
    std::int32_t right = 0;
    std::int32_t bottom = 0;

    constexpr std::int32_t Width() const { return right - left; }
    constexpr std::int32_t Height() const { return bottom - top; }

    friend constexpr bool operator==(const CRect&, const CRect&) = default;
};
