#include "series/History.h"

#include "platform/CodePage.h"
#include "series/RandomTicks.h"
#include "support/Testing.h"

using namespace kalvento::tests;

namespace {

const std::set<ESeriesId> S_series{Price, Volume};

/// Rows at random steps of up to a day and a half, so that days with many rows, one and none occur.
History MakeHistory(NDateTime a_first, std::size_t a_rows, unsigned int a_seed)
{
    std::mt19937 random(a_seed);
    History history(S_series, EIntervalTick, 1);
    Record record = history.GetEmptyRecord();
    NDateTime time = a_first;
    for (std::size_t row = 0; row < a_rows; ++row) {
        record.SetTime(time);
        record.SetData(Price, static_cast<double>(row));
        record.SetData(Volume, static_cast<double>(random() % 100));
        EXPECT_TRUE(history.AddData(record));
        time.ShiftSec(1 + static_cast<int>(random() % (random() % 2 == 0 ? 3600 : 129600)));
    }
    return history;
}

History FilterDays(const History& a_history, const NDateTime& a_from, const NDateTime& a_to)
{
    const auto count = [&](auto a_isBefore) {
        return static_cast<std::size_t>(std::ranges::count_if(a_history.TimeSeries(), a_isBefore));
    };
    return Slice<History>(
        a_history,
        count([&](const NDateTime& a_time) { return a_time.GetAbsoluteDay() < a_from.GetAbsoluteDay(); }),
        count([&](const NDateTime& a_time) { return a_time.GetAbsoluteDay() <= a_to.GetAbsoluteDay(); }));
}

} // namespace

TEST(HistoryTest, SubHistoryIsAFilterByDays)
{
    const History history = MakeHistory(NDateTime(2021, 2, 20, 13, 0, 0, 0), 200, 3);
    std::mt19937 random(4);
    for (int trial = 0; trial < 300; ++trial) {
        NDateTime from(2021, 2, 10, random() % 24, random() % 60, random() % 60, 0);
        from.ShiftDays(static_cast<int>(random() % 120));
        NDateTime to = from;
        to.ShiftSec(static_cast<int>(random() % (86400 * 12)));
        SCOPED_TRACE(testing::Message() << from.ToDouble() << " to " << to.ToDouble());
        const History expected = FilterDays(history, from, to);
        EXPECT_TRUE(SameBits(expected, history.GetSubHistory(from, to)));
        // A day number that many shifts have left below midnight, and that reads midnight.
        const NDateTime below = NDateTime::FromDouble(from.GetAbsoluteDay() - 1e-6);
        EXPECT_TRUE(SameBits(expected, history.GetSubHistory(below, to)));
    }
}

TEST(HistoryTest, SubHistoryAtItsLimits)
{
    const History history = MakeHistory(At(9, 0), 5, 1);
    EXPECT_EQ("Data od jest większa od daty do"_cp1250,
              RaisedText<std::invalid_argument>([&] { history.GetSubHistory(At(10, 0, 1), At(10, 0)); }));
    EXPECT_EQ(std::pair(2021UL, 2021UL), history.GetFirstLastYear());
    EXPECT_FALSE(history.GetSubHistory(NDateTime(1999, 1, 1), NDateTime(1999, 12, 31)).GetFirstLastYear());
    const History bare(EIntervalTick, 1, {At(9, 0)}, {});
    EXPECT_THROW(bare.GetSubHistory(At(0, 0), At(23, 0)), std::invalid_argument);
    const History uneven(EIntervalTick, 1, {At(9, 0), At(9, 1)}, {{Price, {1.0}}, {Volume, {}}});
    EXPECT_EQ(1U, uneven.GetSubHistory(At(0, 0), At(0, 0)).find(Price)->second.size());
}

TEST(HistoryTest, OlderRowsGoInFront)
{
    const History whole = MakeHistory(At(9, 0), 60, 9);
    for (std::size_t cut = 0; cut <= whole.GetRecordsCount(); ++cut) {
        SCOPED_TRACE(cut);
        const History older = Slice<History>(whole, 0, cut);
        auto newer = Slice<History>(whole, cut, whole.GetRecordsCount());
        ASSERT_TRUE(newer.InsertedHistoryAtTheBeginning(older));
        EXPECT_TRUE(SameBits(whole, newer));
    }
}

TEST(HistoryTest, BlocksThatDontFitLeaveEverythingAsItWas)
{
    History history = MakeHistory(At(9, 0), 5, 2);
    const std::string before = BytesOf(history);
    const auto refuses = [&](const History& a_older) {
        return !history.InsertedHistoryAtTheBeginning(a_older) && BytesOf(history) == before;
    };
    History touching = MakeHistory(NDateTime(2021, 1, 1), 1, 2);
    touching.SetNewTimes({At(9, 0)});
    EXPECT_TRUE(refuses(touching));
    EXPECT_TRUE(refuses(history));
    EXPECT_TRUE(refuses(History(std::set<ESeriesId>{Price}, EIntervalTick, 1)));
    EXPECT_TRUE(refuses(History(std::set<ESeriesId>{Price, Bid1}, EIntervalTick, 1)));
    const std::set<ESeriesId> candle{Price, IntervalOpen, IntervalMax, IntervalMin};
    EXPECT_TRUE(refuses(History(candle, EIntervalMinute, 1)));

    History hollow(std::set<ESeriesId>{Price}, EIntervalMinute, 1);
    EXPECT_FALSE(hollow.InsertedHistoryAtTheBeginning(hollow)) << "a candle set without candle columns";
    History candles(candle, EIntervalMinute, 1);
    EXPECT_TRUE(candles.InsertedHistoryAtTheBeginning(History(candle, EIntervalMinute, 1)));
    EXPECT_FALSE(candles.InsertedHistoryAtTheBeginning(History(candle, EIntervalMinute, 2)));
}
