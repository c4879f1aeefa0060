#pragma once

#include <cstdint>

/// Where a provider stands with its source.
enum EConnectionStatus : std::uint32_t {
    EConnectionStatusDisconnected = 0, ///< And not trying.
    EConnectionStatusConnecting = 1,   ///< Trying, also again after a break.
    EConnectionStatusConnected = 2
};
