#pragma once

#include <vector>

namespace kalvento::internal {

/// Where the engine puts open, high and low of candles made of single ticks. A history has far more ticks than
/// candles, so these three columns start small and the engine makes them longer as candles appear; filling three
/// columns of the ticks' length first would cost more than the folding itself.
/// The vectors belong to the caller. After the call each holds at least the candles; the rest is zero.
struct CandleRoom {
    std::vector<double>* open = nullptr;
    std::vector<double>* high = nullptr;
    std::vector<double>* low = nullptr;
};

} // namespace kalvento::internal
