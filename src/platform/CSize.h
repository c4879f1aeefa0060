#pragma once

#include <cstdint>

/// A width and a height in pixels; the fields are public as on the platform.
struct CSize {
    std::int32_t cx = 0;
    std::int32_t cy = 0;

    friend constexpr bool operator==(const CSize&, const CSize&) = default;
};
