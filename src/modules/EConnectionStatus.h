#pragma once

#include <cstdint>

/// The state of a provider's connection to its source.
enum EConnectionStatus : std::uint32_t {
    EConnectionStatusDisconnected = 0, ///< And not trying.
    EConnectionStatusConnecting = 1,   ///< Trying, also again after a break.
    EConnectionStatusConnected = 2
};
