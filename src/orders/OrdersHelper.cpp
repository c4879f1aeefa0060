#include "orders/OrdersHelper.h"

#include "orders/OrderData.h"
#include "platform/CodePage.h"
#include "platform/NearestInt.h"
#include "series/CurrentState.h"
#include "series/Offers.h"
#include "velo/Log.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

using kalvento::internal::NearestInt;

namespace {

// Codes used in the book in place of a price.
constexpr double S_codeWithoutPrice100 = -100.0;
constexpr double S_codeWithoutPrice20 = -20.0;
constexpr double S_noPrice = -10.0;

// Additional fields that belong to a line of the book.
constexpr int S_buyFields[] = {1013, 1019};
constexpr int S_sellFields[] = {1014, 1018};

// The book's numbers run in three blocks (prices, volumes, numbers of orders), each with the buy line before the sell
// line.
constexpr std::uint32_t S_levels = Ask1 - Bid1;
constexpr std::uint32_t S_block = BidVolume1 - Bid1;

constexpr ESeriesId S_noSeries{};

bool IsBookPrice(ESeriesId a_seriesId)
{
    return a_seriesId >= Bid1 && a_seriesId <= Ask5;
}

ESeriesId LineOfSide(EOrderSide a_side)
{
    return a_side == EOrderSideBuy ? Ask1 : Bid1;
}

/// The value of a series that is held and set.
std::optional<double> FindSetValue(const SettableVariables& a_variables, ESeriesId a_seriesId)
{
    const auto entry = a_variables.find(a_seriesId);
    if (entry == a_variables.end() || !entry->second.IsSet())
        return std::nullopt;
    return entry->second.value;
}

} // namespace

namespace OrdersHelper {

ESeriesId GetOrderValueSeriesId(ESeriesId a_seriesId)
{
    if (a_seriesId < Bid1 || a_seriesId > AskOrders5)
        return S_noSeries;
    return static_cast<ESeriesId>(Bid1 + (a_seriesId - Bid1) % S_block);
}

bool IsOfferBuyOrSell(ESeriesId a_seriesId)
{
    return GetOrderValueSeriesId(a_seriesId) != S_noSeries;
}

ESeriesId GetOppositePriceSeriesId(ESeriesId a_seriesId)
{
    if (!IsBookPrice(a_seriesId))
        return a_seriesId;
    return static_cast<ESeriesId>(a_seriesId < Ask1 ? a_seriesId + S_levels : a_seriesId - S_levels);
}

ESeriesId GetFirstOffersLine(int a_id)
{
    if (std::ranges::find(S_buyFields, a_id) != std::end(S_buyFields))
        return Bid1;
    if (std::ranges::find(S_sellFields, a_id) != std::end(S_sellFields))
        return Ask1;
    const ESeriesId price = GetOrderValueSeriesId(static_cast<ESeriesId>(a_id));
    if (price == S_noSeries)
        return S_noSeries;
    return price < Ask1 ? Bid1 : Ask1;
}

EOrderSide GetOrderSideByOffersLine(ESeriesId a_seriesId)
{
    switch (GetFirstOffersLine(static_cast<int>(a_seriesId))) {
    case Bid1:
        return EOrderSideSell;
    case Ask1:
        return EOrderSideBuy;
    default:
        return EOrderSideNone;
    }
}

ESeriesId GetOffersLineByOrderSide(EOrderSide a_side, ESeriesId a_seriesId)
{
    if (a_side == EOrderSideNone || !IsOfferBuyOrSell(a_seriesId))
        return a_seriesId;
    if (GetFirstOffersLine(static_cast<int>(a_seriesId)) == LineOfSide(a_side))
        return GetOrderValueSeriesId(a_seriesId);
    return GetOppositePriceSeriesId(a_seriesId);
}

double GeOrderDefaultValueFromCS(const std::optional<CurrentState>& a_state)
{
    if (!a_state)
        return 0.0;
    if (const auto price = FindSetValue(*a_state, Price))
        return *price;
    return FindSetValue(*a_state, Reference).value_or(0.0);
}

void OrderSetValue(std::optional<double> a_value, OrderData& a_order)
{
    if (a_value == S_codeWithoutPrice100) {
        a_order.SetOrderType(OrderData::EOrderTypeCode100);
    } else if (a_value == S_codeWithoutPrice20) {
        a_order.SetOrderType(OrderData::EOrderTypeCode20);
    } else {
        a_order.SetOrderType(OrderData::EOrderTypeLimit);
        a_order.SetValue(a_value);
    }
}

void OrderAddAmount(const Offers& a_offers, ESeriesId a_seriesId, OrderData& a_order)
{
    if (!IsBookPrice(a_seriesId))
        return;
    const std::uint32_t first = GetFirstOffersLine(static_cast<int>(a_seriesId)) + S_block;
    // Feeds may send anything.
    for (std::uint32_t volume = a_seriesId + S_block; volume >= first; --volume)
        a_order.AddAmount(NearestInt(FindSetValue(a_offers, static_cast<ESeriesId>(volume)).value_or(0.0)));
}

std::optional<OrderData> PrepareOrder(const Asset& a_asset, const Offers& a_offers, ESeriesId a_seriesId)
{
    const ESeriesId priceSeries = GetOrderValueSeriesId(a_seriesId);
    if (priceSeries == S_noSeries)
        return std::nullopt;
    const std::optional<double> price = FindSetValue(a_offers, priceSeries);
    if (!price)
        return std::nullopt;
    if (*price == S_noPrice || *price == 0.0) {
        VeloTools::Log::Instance().Write("OrdersHelper::PrepareOrder", __LINE__, "Brak ceny"_cp1250);
        return std::nullopt;
    }

    OrderData order(a_asset);
    if (priceSeries != Bid1 && priceSeries != Ask1)
        order.SetSelectedOffer(priceSeries);
    OrderSetValue(price, order);
    OrderAddAmount(a_offers, priceSeries, order);
    order.SetOrderSide(priceSeries < Ask1 ? EOrderSideSell : EOrderSideBuy);
    return order;
}

OrderData PrepareOrder(const Asset& a_asset, std::optional<double> a_value, EOrderSide a_side,
                       ESeriesId a_seriesId)
{
    OrderData order(a_asset, a_side);
    order.SetSelectedOffer(a_seriesId);
    OrderSetValue(a_value, order);
    return order;
}

} // namespace OrdersHelper
