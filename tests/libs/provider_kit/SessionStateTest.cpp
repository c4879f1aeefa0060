#include "provider_kit/SessionState.h"

#include "StoreTestTools.h"
#include "support/Testing.h"

using kalvento::internal::SessionState;

namespace {

double ValueOf(const SettableVariables& a_values, ESeriesId a_series)
{
    const auto value = a_values.find(a_series);
    EXPECT_TRUE(value != a_values.end() && value->second.IsSet()) << a_series;
    return value->second.value;
}

void ExpectSame(const SettableVariables& a_left, const SettableVariables& a_right)
{
    for (const auto& [series, value] : a_left) {
        SCOPED_TRACE(series);
        EXPECT_EQ(value.IsSet(), a_right.find(series)->second.IsSet());
        if (value.IsSet()) {
            EXPECT_EQ(value.value, a_right.find(series)->second.value);
        }
    }
}

} // namespace

// However the rows are cut, told or not in between, the state is the same; and it is the one of its last day.
TEST(SessionStateTest, BatchesEqualOneBatch)
{
    constexpr std::size_t rows = 3 * TickMaker::S_rowsPerDay - 5;
    const StoreInstrument instrument = TickMaker::Instrument("PLTEST000001");
    SessionState whole(instrument);
    whole.Add(TickMaker::Rows(0, rows), 0);
    whole.SetOffers(std::nullopt);

    std::mt19937 random(3);
    SessionState parts(instrument);
    while (parts.GetNextRow() < rows) {
        const std::size_t first = parts.GetNextRow();
        const std::size_t before = std::min<std::size_t>(first, random() % 4); // rows that it has had already
        parts.Add(TickMaker::Rows(first - before, std::min<std::size_t>(rows, first + 1 + random() % 30)),
                  before);
        parts.SetOffers(std::nullopt);
        if (random() % 2 == 0)
            parts.MarkTold();
    }
    ExpectSame(parts.GetState(), whole.GetState());
    ExpectSame(parts.GetOffers(), whole.GetOffers());
    ASSERT_EQ(parts.GetLatestRecords().GetTransactionCount(), LatestRecords::RecordsLimit + 1);
    EXPECT_EQ(parts.GetLatestRecords().begin()->time, TickMaker::TimeOf(rows - 1));

    constexpr std::size_t first = 2 * TickMaker::S_rowsPerDay;
    double high = 0.0;
    double volume = 0.0;
    for (std::size_t row = first; row < rows; ++row) {
        high = std::max(high, TickMaker::PriceOf(row));
        volume += TickMaker::VolumeOf(row);
    }
    EXPECT_EQ(ValueOf(whole.GetState(), Open), TickMaker::PriceOf(first));
    EXPECT_EQ(ValueOf(whole.GetState(), Max), high);
    EXPECT_EQ(ValueOf(whole.GetState(), VolumeTotal), volume);
    EXPECT_EQ(ValueOf(whole.GetState(), TradesCount), static_cast<double>(rows - first));
    EXPECT_EQ(ValueOf(whole.GetState(), Reference), TickMaker::PriceOf(first - 1));
}

TEST(SessionStateTest, ChangesAreMarkedOnceAndAWholeMarksAll)
{
    SessionState state(TickMaker::Instrument("PLTEST000001"));
    state.BeginAt(0, 9.5);
    state.Add(TickMaker::Rows(0, 2), 0);
    state.MarkTold();
    EXPECT_FALSE(state.StateChanged());
    state.Add(TickMaker::Rows(1, 3), 1);
    EXPECT_TRUE(state.StateChanged());
    const auto markOf = [](const CurrentState& a_state, ESeriesId a_series) {
        return a_state.find(a_series)->second.state;
    };
    EXPECT_EQ(markOf(state.GetState(), Price), ValueSeriesCS<double>::S_changed);
    EXPECT_EQ(markOf(state.GetState(), Open), ValueSeriesCS<double>::S_unchanged);
    EXPECT_EQ(markOf(state.GetWholeState(), Open), ValueSeriesCS<double>::S_changed);
    EXPECT_EQ(ValueOf(state.GetState(), Reference), 9.5);
}

TEST(SessionStateTest, OffersAreThoseGivenAndNoOthers)
{
    SessionState state(TickMaker::Instrument("PLTEST000001"));
    state.Add(TickMaker::Rows(0, 20), 0);
    state.SetOffers(std::nullopt);
    EXPECT_FALSE(state.OffersChanged()) << "guessed from trades";

    StoreInstrument quoted = TickMaker::Instrument("PLTEST000001");
    quoted.series.insert({DSProp(Bid1), DSProp(Ask1)});
    SessionState best(quoted);
    const History trades = TickMaker::Rows(0, 2);
    History rows(EIntervalTick, 1, std::vector<NDateTime>(trades.TimeSeries()),
                 {{Price, {9.0, 9.5}}, {Volume, {1.0, 1.0}}, {Bid1, {8.0, 9.0}}, {Ask1, {10.0, 10.5}}});
    best.Add(rows, 0);
    best.SetOffers(std::nullopt);
    EXPECT_EQ(ValueOf(best.GetOffers(), Bid1), 9.0);
    EXPECT_EQ(ValueOf(best.GetOffers(), Ask1), 10.5);
    EXPECT_FALSE(best.GetOffers().find(BidVolume1)->second.IsSet());

    Offers known;
    known.SetBuyIfChanged({9.0, 8.0});
    best.SetOffers(known);
    ExpectSame(best.GetOffers(), known);
    best.MarkTold();
    best.SetOffers(known);
    EXPECT_FALSE(best.OffersChanged());
}
