#pragma once

#include <cstdint>

/// A colour as the platform packs it: 0x00BBGGRR, so red is 0x0000FF.
using COLORREF = std::uint32_t;
