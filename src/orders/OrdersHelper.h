#pragma once

#include "orders/EOrderSide.h"
#include "platform/Export.h"
#include "series/ESeriesId.h"

#include <optional>

class Asset;
class CurrentState;
class Offers;
class OrderData;

/// From a click on the order book to an order, and from one series of the book to another. No state; whoever owns the
/// arguments calls.
///
/// A price in the book may be a code: -100.0 and -20.0 are orders without a price, -10.0 and 0.0 mean that there is no
/// price.
namespace OrdersHelper {

/// The price series of a level, from its price, volume or number of orders: Bid1 to Ask5. 0 for any other series.
KALVENTO_API ESeriesId GetOrderValueSeriesId(ESeriesId a_seriesId);
/// The series belongs to the book.
KALVENTO_API bool IsOfferBuyOrSell(ESeriesId a_seriesId);
/// The price of the same level on the other side; anything but a price of the book comes back unchanged, volumes and
/// numbers of orders included.
KALVENTO_API ESeriesId GetOppositePriceSeriesId(ESeriesId a_seriesId);
/// The first price of the line to which a series of the book belongs: Bid1, Ask1, or 0. Takes any number, since the
/// four fields 1013 and 1019 (buy), 1014 and 1018 (sell) belong to a line too.
KALVENTO_API ESeriesId GetFirstOffersLine(int a_id);
/// A click on a buy offer sells, and the other way round; none for a series outside the book.
KALVENTO_API EOrderSide GetOrderSideByOffersLine(ESeriesId a_seriesId);
/// The price series to show for an order of that side: of the same level, on the line that goes with the side. A volume
/// or a number of orders of the other line, a series outside the book, and any series without a side come back
/// unchanged.
KALVENTO_API ESeriesId GetOffersLineByOrderSide(EOrderSide a_side, ESeriesId a_seriesId);

/// The price that an order form starts with: the last price, else the reference price, else 0.0.
KALVENTO_API double GeOrderDefaultValueFromCS(const std::optional<CurrentState>& a_state);

/// Sets type and price from the value: the two codes give their types and leave the price alone, everything else, no
/// value included, is an order with that price.
KALVENTO_API void OrderSetValue(std::optional<double> a_value, OrderData& a_order);
/// Adds the volumes of the level and of all better ones on its line, since an order that reaches the level takes them
/// first. a_seriesId: a price of the book; for all others nothing happens. Each volume is cut toward zero, a missing
/// one counts as 0, and what no int can hold stays at the end of its range (a NaN is 0). The amount is set in any case.
KALVENTO_API void OrderAddAmount(const Offers& a_offers, ESeriesId a_seriesId, OrderData& a_order);

/// The order for a click on a cell of the book: price, volume and number of orders all mean their level. Empty where
/// the series isn't of the book, where the level isn't set, and, with a line in the log, where it has no price. The
/// selected offer is left empty on the best level.
KALVENTO_API std::optional<OrderData> PrepareOrder(const Asset& a_asset, const Offers& a_offers,
                                                   ESeriesId a_seriesId);
/// The order for a given price; the selected offer is a_seriesId, whatever it is. No amount.
KALVENTO_API OrderData PrepareOrder(const Asset& a_asset, std::optional<double> a_value, EOrderSide a_side,
                                    ESeriesId a_seriesId);

} // namespace OrdersHelper
