#include "provider_kit/ImpliedBook.h"
#include "support/Testing.h"

using kalvento::internal::ImpliedBook;

namespace {

std::vector<double> Line(const Offers& a_offers, ESeriesId a_first)
{
    std::vector<double> values;
    for (std::size_t place = 0; place < ImpliedBook::S_levels; ++place)
        if (const auto& value = a_offers.find(static_cast<ESeriesId>(a_first + place))->second; value.IsSet())
            values.push_back(value.value);
    return values;
}

} // namespace

TEST(ImpliedBookTest, TradesShowTheSideThatWasMet)
{
    struct Case {
        const char* name;
        std::vector<double> prices; // volumes are 1, 2, 3 ...
        std::vector<double> bids;
        std::vector<double> asks;
        std::vector<double> askVolumes;
        std::vector<double> askOrders;
    };
    const std::vector<Case> cases = {
        {"the first trade tells no side", {10, 10}, {}, {}, {}, {}},
        {"up is an ask, and so is a repetition", {10, 11, 11}, {}, {11}, {3}, {2}},
        {"down is a bid", {10, 9}, {9}, {}, {}, {}},
        {"a buyer goes through lower asks and leaves no bid as high", {10, 11, 10, 12}, {10}, {12}, {4}, {1}},
        {"a seller goes through higher bids", {10, 9, 12, 8}, {8}, {12}, {3}, {1}},
        {"a bid at the price of the asks drops them",
         {10, 13, 10, 12, 9, 11, 11, 8},
         {8},
         {11, 12, 13},
         {7, 4, 2},
         {2, 1, 1}},
        {"five levels, those met last",
         {1, 20, 1, 19, 1, 18, 1, 17, 1, 16, 1, 15},
         {1},
         {15, 16, 17, 18, 19},
         {12, 10, 8, 6, 4},
         {1, 1, 1, 1, 1}},
    };
    for (const auto& tried : cases) {
        SCOPED_TRACE(tried.name);
        ImpliedBook book;
        Offers offers;
        double volume = 0.0;
        for (const double price : tried.prices) {
            book.AddTrade(price, ++volume);
            book.Show(offers); // levels that go must leave the series too
        }
        EXPECT_EQ(Line(offers, Bid1), tried.bids);
        EXPECT_EQ(Line(offers, Ask1), tried.asks);
        EXPECT_EQ(Line(offers, AskVolume1), tried.askVolumes);
        EXPECT_EQ(Line(offers, AskOrders1), tried.askOrders);
        EXPECT_FALSE(book.Show(offers)) << "nothing has changed since";
        book.Clear();
        book.Show(offers);
        EXPECT_FALSE(offers.IsAnyDataSeriesSetOrChanged());
    }
}
