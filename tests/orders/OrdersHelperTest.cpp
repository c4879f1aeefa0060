#include "orders/OrdersHelper.h"

#include "orders/OrderData.h"
#include "series/CurrentState.h"
#include "series/Offers.h"
#include "support/LogWatch.h"
#include "support/Testing.h"

namespace {

Asset MakeAsset()
{
    return {nullptr, "PKO", "PKOBP", "GPW", "PLPKO0000016"};
}

Offers MakeOffers(double a_bestPrice = 10.0)
{
    Offers offers;
    offers.SetBuyIfChanged({a_bestPrice, 9.9, 9.8, 9.7, 9.6});
    offers.SetSellIfChanged({10.1, 10.2, 10.3, 10.4, 10.5});
    offers.SetQBuyIfChanged({100, 50, 25, 12, 6});
    offers.SetQSellIfChanged({1000, 500, 250, 120, 60});
    return offers;
}

/// One series of the book: line 0 buys, 1 sells; level 0 is the best; kind 0 is the price, 1 the volume, 2 the orders.
struct Cell {
    ESeriesId id;
    unsigned int line;
    unsigned int level;
    unsigned int kind;
};

std::vector<Cell> BookCells()
{
    const ESeriesId best[3][2] = {{Bid1, Ask1}, {BidVolume1, AskVolume1}, {BidOrders1, AskOrders1}};
    std::vector<Cell> book;
    for (unsigned int kind = 0; kind < 3; ++kind)
        for (unsigned int line = 0; line < 2; ++line)
            for (unsigned int level = 0; level < 5; ++level)
                book.push_back({static_cast<ESeriesId>(best[kind][line] + level), line, level, kind});
    return book;
}

ESeriesId PriceAt(unsigned int a_line, unsigned int a_level)
{
    return static_cast<ESeriesId>(20 + 5 * a_line + a_level);
}

TEST(OrdersHelperTest, EverySeriesOfTheBookKnowsItsPlace)
{
    using namespace OrdersHelper;
    for (const Cell& cell : BookCells()) {
        SCOPED_TRACE(cell.id);
        const ESeriesId price = PriceAt(cell.line, cell.level);
        const ESeriesId opposite = PriceAt(1 - cell.line, cell.level);
        EXPECT_EQ(GetOrderValueSeriesId(cell.id), price);
        EXPECT_TRUE(IsOfferBuyOrSell(cell.id));
        EXPECT_EQ(GetOppositePriceSeriesId(cell.id), cell.kind == 0 ? opposite : cell.id);
        EXPECT_EQ(GetFirstOffersLine(static_cast<int>(cell.id)), PriceAt(cell.line, 0));
        const EOrderSide side = cell.line == 0 ? EOrderSideSell : EOrderSideBuy;
        const EOrderSide otherSide = cell.line == 0 ? EOrderSideBuy : EOrderSideSell;
        EXPECT_EQ(GetOrderSideByOffersLine(cell.id), side);
        EXPECT_EQ(GetOffersLineByOrderSide(side, cell.id), price);
        EXPECT_EQ(GetOffersLineByOrderSide(otherSide, cell.id), cell.kind == 0 ? opposite : cell.id);
        EXPECT_EQ(GetOffersLineByOrderSide(EOrderSideNone, cell.id), cell.id);
    }
}

TEST(OrdersHelperTest, SeriesOutsideOfTheBookHaveNoPlace)
{
    using namespace OrdersHelper;
    for (const unsigned int number : {0U, 1U, 2U, 19U, 50U, 51U, 1013U, 0x84222325U, 0xFFFFFFFFU}) {
        SCOPED_TRACE(number);
        const auto id = static_cast<ESeriesId>(number);
        EXPECT_EQ(GetOrderValueSeriesId(id), 0U);
        EXPECT_FALSE(IsOfferBuyOrSell(id));
        EXPECT_EQ(GetOppositePriceSeriesId(id), id);
        EXPECT_EQ(GetOffersLineByOrderSide(EOrderSideBuy, id), id);
    }
    const std::map<int, unsigned int> lines = {{1012, 0}, {1013, 20}, {1014, 25}, {1015, 0},
                                               {1017, 0}, {1018, 25}, {1019, 20}, {1020, 0},
                                               {-1, 0},   {19, 0},    {50, 0}};
    for (const auto& [id, line] : lines)
        EXPECT_EQ(GetFirstOffersLine(id), line) << id;
    EXPECT_EQ(GetOrderSideByOffersLine(Price), EOrderSideNone);
}

TEST(OrdersHelperTest, AClickOnAnyCellOfALevelMeansTheLevel)
{
    const Offers offers = MakeOffers();
    const int amounts[2][5] = {{100, 150, 175, 187, 193}, {1000, 1500, 1750, 1870, 1930}};
    for (const Cell& cell : BookCells()) {
        SCOPED_TRACE(cell.id);
        const auto order = OrdersHelper::PrepareOrder(MakeAsset(), offers, cell.id);
        ASSERT_TRUE(order);
        const ESeriesId price = PriceAt(cell.line, cell.level);
        EXPECT_EQ(order->GetAsset()->GetIsin(), MakeAsset().GetIsin());
        EXPECT_EQ(order->GetOrderSide(), cell.line == 0 ? EOrderSideSell : EOrderSideBuy);
        EXPECT_EQ(order->GetOrderType(), OrderData::EOrderTypeLimit);
        EXPECT_EQ(order->GetValue(), offers.find(price)->second.value);
        EXPECT_EQ(order->GetAmount(), amounts[cell.line][cell.level]);
        EXPECT_EQ(order->GetSelectedOffer(), cell.level == 0 ? std::nullopt : std::optional(price));
        EXPECT_FALSE(order->GetForceSetValues());
    }
}

TEST(OrdersHelperTest, CodesInPlaceOfAPrice)
{
    // Type: none for no order
    const std::tuple<double, std::optional<OrderData::EOrderType>, std::optional<double>, std::size_t>
        cases[] = {
            {-100.0, OrderData::EOrderTypeCode100, std::nullopt, 0},
            {-20.0, OrderData::EOrderTypeCode20, std::nullopt, 0},
            {-10.0, std::nullopt, std::nullopt, 1},
            {-20.5, OrderData::EOrderTypeLimit, -20.5, 0},
        };
    for (const auto& [price, type, value, logLines] : cases) {
        SCOPED_TRACE(price);
        const LogWatch log;
        const auto order = OrdersHelper::PrepareOrder(MakeAsset(), MakeOffers(price), Bid1);
        EXPECT_EQ(log.lines, std::vector<std::string>(logLines, "OrdersHelper::PrepareOrder: Brak ceny"));
        ASSERT_EQ(order.has_value(), type.has_value());
        if (order) {
            EXPECT_EQ(order->GetOrderType(), *type);
            EXPECT_EQ(order->GetValue(), value);
            EXPECT_EQ(order->GetAmount(), 100);
        }
    }
}

TEST(OrdersHelperTest, ALevelThatIsNotThereIsASilentMiss)
{
    const LogWatch log;
    Offers offers = MakeOffers();
    offers.ResetDataSeries(Bid2);
    EXPECT_FALSE(OrdersHelper::PrepareOrder(MakeAsset(), offers, BidVolume2));
    EXPECT_FALSE(OrdersHelper::PrepareOrder(MakeAsset(), offers, Price));
    EXPECT_FALSE(OrdersHelper::PrepareOrder(MakeAsset(), Offers(std::set<ESeriesId>{Bid1}), Ask1));
    EXPECT_TRUE(log.lines.empty());

    offers.ClearUsageChangedValue();
    EXPECT_TRUE(OrdersHelper::PrepareOrder(MakeAsset(), offers, Bid3)) << "an unchanged price is a price";
}

TEST(OrdersHelperTest, AmountsAreCutLevelByLevel)
{
    Offers offers;
    offers.SetQBuyIfChanged({2.9, 2.9, -1.9, std::nan(""), 0.5});
    OrderData order;
    OrdersHelper::OrderAddAmount(offers, Bid5, order);
    EXPECT_EQ(order.GetAmount(), 3) << "2 + 2 - 1 + 0 + 0";

    offers.ResetDataSeries(BidVolume1);
    OrdersHelper::OrderAddAmount(offers, Bid2, order);
    EXPECT_EQ(order.GetAmount(), 5) << "added to what was there, a missing volume counts as none";

    OrderData missing;
    OrdersHelper::OrderAddAmount(offers, Ask2, missing);
    EXPECT_EQ(missing.GetAmount(), 0) << "set, though no volume was";
    Offers huge;
    huge.SetQSellIfChanged({1e300, 2147483647.5, std::numeric_limits<double>::infinity()});
    OrderData most;
    OrdersHelper::OrderAddAmount(huge, Ask3, most);
    EXPECT_EQ(most.GetAmount(), std::numeric_limits<int>::max());
    for (const ESeriesId outside : {Settlement, BidVolume1, AskOrders5, Price}) {
        OrderData untouched;
        OrdersHelper::OrderAddAmount(offers, outside, untouched);
        EXPECT_FALSE(untouched.GetAmount()) << outside;
    }
}

TEST(OrdersHelperTest, AGivenPriceDecidesTypeAndValue)
{
    const OrderData order = OrdersHelper::PrepareOrder(MakeAsset(), -10.0, EOrderSideSell, Price);
    EXPECT_EQ(order.GetOrderType(), OrderData::EOrderTypeLimit);
    EXPECT_EQ(order.GetValue(), -10.0);
    EXPECT_EQ(order.GetOrderSide(), EOrderSideSell);
    EXPECT_EQ(order.GetSelectedOffer(), Price) << "also where it is no level of the book";
    EXPECT_FALSE(order.GetAmount());
    // A code leaves the price that was there, no value takes it away.
    OrderData changed;
    changed.SetValue(7.0);
    OrdersHelper::OrderSetValue(-20.0, changed);
    EXPECT_EQ(changed.GetOrderType(), OrderData::EOrderTypeCode20);
    EXPECT_EQ(changed.GetValue(), 7.0);
    OrdersHelper::OrderSetValue(std::nullopt, changed);
    EXPECT_EQ(changed.GetValue(), std::nullopt);
}

TEST(OrdersHelperTest, TheFormStartsWithTheLastPriceOrTheReference)
{
    using OrdersHelper::GeOrderDefaultValueFromCS;
    EXPECT_EQ(GeOrderDefaultValueFromCS(std::nullopt), 0.0);
    CurrentState state(std::set<ESeriesId>{Price, Reference});
    EXPECT_EQ(GeOrderDefaultValueFromCS(state), 0.0);
    state.SetData(Reference, 9.0);
    EXPECT_EQ(GeOrderDefaultValueFromCS(state), 9.0);
    state.SetData(Price, 10.0);
    state.ClearUsageChangedValue();
    EXPECT_EQ(GeOrderDefaultValueFromCS(state), 10.0);
    state.ResetDataSeries(Price);
    EXPECT_EQ(GeOrderDefaultValueFromCS(state), 9.0) << "the value that a reset leaves behind isn't known";
    EXPECT_EQ(GeOrderDefaultValueFromCS(CurrentState(std::set<ESeriesId>{Volume})), 0.0);
}

TEST(OrderDataTest, ClearingKeepsOnlyTheSelectedOffer)
{
    OrderData order(MakeAsset());
    order.SetOrderType(OrderData::EOrderTypeLimit);
    order.SetSelectedOffer(Ask3);
    order.SetForceSetValues(true);
    order.SetValue(1.0);
    order.AddAmount(-4);
    order.ClearUsedValues();
    EXPECT_FALSE(order.GetAsset() || order.GetValue() || order.GetAmount() || order.GetForceSetValues());
    EXPECT_EQ(order.GetOrderSide(), EOrderSideNone);
    EXPECT_EQ(order.GetOrderType(), OrderData::EOrderTypeNone);
    EXPECT_EQ(order.GetSelectedOffer(), Ask3);
}

} // namespace
