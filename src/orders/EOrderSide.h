#pragma once

#include <cstdint>

/// The side of an order. Modules exchange the numbers: append, never renumber.
enum EOrderSide : std::uint32_t {
    EOrderSideNone = 0,
    EOrderSideBuy = 1, ///< Goes with the sell line of the book.
    EOrderSideSell = 2 ///< Goes with the buy line of the book.
};
