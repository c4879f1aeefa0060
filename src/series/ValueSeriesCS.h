#pragma once

#include <cstdint>

/// A value and its state. Copied and moved as a whole.
template<class T>
struct ValueSeriesCS {
    /// Values of the state.
    static constexpr std::int32_t S_notSet = 0;
    static constexpr std::int32_t S_changed =
        1; ///< Set or changed since the reader last took the changes over.
    static constexpr std::int32_t S_unchanged = 2; ///< Set, and seen by the reader.

    T value{};
    std::int32_t state = S_notSet;

    bool IsSet() const { return state != S_notSet; }
};
