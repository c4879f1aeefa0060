#include "provider_kit/ImpliedBook.h"

#include "provider_kit/ShowSeries.h"

#include <algorithm>

namespace kalvento::internal {

void ImpliedBook::AddTrade(double a_price, double a_volume)
{
    if (m_hasPrice && a_price > m_lastPrice)
        m_lastSide = EAsk;
    else if (m_hasPrice && a_price < m_lastPrice)
        m_lastSide = EBid;
    m_lastPrice = a_price;
    m_hasPrice = true;
    if (m_lastSide == ENoSide)
        return;

    // A buyer who pays this price has emptied all asks below it, and no bid is as high; the other way round for
    // sellers.
    const bool isAsk = m_lastSide == EAsk;
    Side& met = m_sides[m_lastSide];
    Side& other = m_sides[isAsk ? EBid : EAsk];
    std::erase_if(
        met, [&](const Level& a_level) { return isAsk ? a_level.price < a_price : a_level.price > a_price; });
    std::erase_if(other, [&](const Level& a_level) {
        return isAsk ? a_level.price >= a_price : a_level.price <= a_price;
    });

    Level level{a_price, a_volume, 1.0};
    if (const auto known = std::ranges::find(met, a_price, &Level::price); known != met.end()) {
        level.trades += known->trades;
        met.erase(known);
    }
    met.push_back(level);
    if (met.size() > S_levels)
        met.erase(met.begin());
}

void ImpliedBook::Clear()
{
    *this = ImpliedBook();
}

bool ImpliedBook::Show(Offers& a_offers) const
{
    Side bids = m_sides[EBid];
    Side asks = m_sides[EAsk];
    std::ranges::sort(bids, std::ranges::greater(), &Level::price);
    std::ranges::sort(asks, std::ranges::less(), &Level::price);

    bool changed = false;
    const auto show = [&](ESeriesId a_first, const Side& a_side, double Level::*a_value) {
        for (std::size_t place = 0; place < S_levels; ++place) {
            const auto series = static_cast<ESeriesId>(a_first + place);
            changed |= place < a_side.size() ? ShowSeries(a_offers, series, a_side[place].*a_value)
                                             : HideSeries(a_offers, series);
        }
    };
    show(Bid1, bids, &Level::price);
    show(Ask1, asks, &Level::price);
    show(BidVolume1, bids, &Level::volume);
    show(AskVolume1, asks, &Level::volume);
    show(BidOrders1, bids, &Level::trades);
    show(AskOrders1, asks, &Level::trades);
    return changed;
}

} // namespace kalvento::internal
