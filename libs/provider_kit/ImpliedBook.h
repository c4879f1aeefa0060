#pragma once

#include "series/Offers.h"

#include <array>
#include <cstddef>
#include <vector>

namespace kalvento::internal {

/// An order book guessed from trades alone, for sources that have none: not what anybody offers, but where trades last
/// took place. A trade above the one before was paid by a buyer, so it shows an ask at its price; one below shows a
/// bid; one at the same price belongs to the side of the one before. Each side keeps the five prices traded last,
/// without those that the last trade went through. A level's volume is that of the last trade there; its orders count
/// the trades there. A value type; one thread at a time.
class ImpliedBook {
public:
    static constexpr std::size_t S_levels = 5;

    void AddTrade(double a_price, double a_volume);
    /// Forgets everything: another session begins.
    void Clear();
    /// Puts the book into a_offers, best level first. Series of missing levels are reset. True where that changed
    /// anything.
    bool Show(Offers& a_offers) const;

private:
    enum ESide : std::size_t { EBid, EAsk, ENoSide };
    struct Level {
        double price;
        double volume;
        double trades;
    };
    using Side = std::vector<Level>; // the price traded last is at the end

    std::array<Side, 2> m_sides;
    double m_lastPrice = 0.0;
    bool m_hasPrice = false;
    ESide m_lastSide = ENoSide;
};

} // namespace kalvento::internal
