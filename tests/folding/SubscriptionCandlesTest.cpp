#include "folding/SubscriptionCandles.h"

#include "series/SeriesTestTools.h"
#include "series/Synchronization.h"
#include "support/MarketData.h"
#include "support/Testing.h"

using namespace kalvento::tests;

namespace {

std::set<DSProp> Properties()
{
    return {DSProp(Price), DSProp(Volume), DSProp(Lop)};
}

Record Row(const NDateTime& a_time, double a_price, double a_volume, double a_lop = 0.0)
{
    return {a_time, {{Price, a_price}, {Volume, a_volume}, {Lop, a_lop}}};
}

std::vector<Record> RandomRows(std::mt19937& a_random, std::size_t a_count, double a_volumeStep = 0.1)
{
    std::vector<Record> rows;
    NDateTime time(2020, 12, 30, 22, 0, 0, 0);
    for (std::size_t row = 0; row < a_count; ++row) {
        // Decimal fractions, so that another order of additions shows in the sums.
        rows.push_back(Row(time, 10.0 + static_cast<double>(a_random() % 999) / 100.0,
                           static_cast<double>(a_random() % 999) * a_volumeStep,
                           static_cast<double>(a_random() % 50)));
        if (a_random() % 4 == 0)
            time.ShiftMilliSec();
        else
            time.ShiftSec(1 + static_cast<int>(a_random() % (a_random() % 20 == 0 ? 9000 : 50)));
    }
    return rows;
}

// Trades with all that real files have: many in one second, gaps, sums that round.
std::vector<Record> RealRows(const std::string& a_name)
{
    std::vector<Record> rows;
    std::ifstream file(MarketData::Path(a_name));
    std::string line;
    std::getline(file, line);
    NDateTime last;
    unsigned int counter = 0;
    while (std::getline(file, line)) {
        unsigned int field[6] = {};
        int end = 0;
        if (std::sscanf(line.c_str(), "%u-%u-%u %u:%u:%u%n", &field[0], &field[1], &field[2], &field[3],
                        &field[4], &field[5], &end) != 6)
            break;
        const NDateTime second(field[0], field[1], field[2], field[3], field[4], field[5], 0);
        counter = rows.empty() || last != second ? 0 : counter + 1;
        last = second;
        std::size_t place = line.find(',', static_cast<std::size_t>(end)) + 1;
        const double price = std::strtod(line.c_str() + place, nullptr);
        place = line.find(',', place) + 1;
        rows.push_back(Row(NDateTime(field[0], field[1], field[2], field[3], field[4], field[5], counter),
                           price, std::strtod(line.c_str() + place, nullptr)));
    }
    return rows;
}

template<class Set>
Set Block(const std::vector<Record>& a_rows, std::size_t a_first, std::size_t a_last)
{
    Set set(EIntervalTick, 1, Properties());
    for (std::size_t row = a_first; row < a_last; ++row)
        EXPECT_TRUE(set.AddData(a_rows[row]));
    return set;
}

template<>
History Block<History>(const std::vector<Record>& a_rows, std::size_t a_first, std::size_t a_last)
{
    History set(Properties(), EIntervalTick, 1);
    for (std::size_t row = a_first; row < a_last; ++row)
        EXPECT_TRUE(set.AddData(a_rows[row]));
    return set;
}

History Fold(History a_history, IntervalAndMultiplicity a_interval)
{
    AggregatorWrapper folder(Properties(), ELastRecordTime, a_interval.GetInterval(),
                             static_cast<unsigned short>(a_interval.GetMultiplicity()));
    EXPECT_TRUE(a_history.IsEmpty() || folder.AgregateHistory(a_history));
    return a_history;
}

/// Number of the row that opened the window in which the row of that number lies.
std::size_t WindowBegin(const std::vector<Record>& a_rows, std::size_t a_row,
                        IntervalAndMultiplicity a_interval)
{
    const History candles = Fold(Block<History>(a_rows, 0, a_row + 1), a_interval);
    if (candles.GetRecordsCount() < 2)
        return 0;
    const NDateTime before = candles.TimeSeries()[candles.GetRecordsCount() - 2];
    std::size_t row = a_row;
    while (a_rows[row - 1].GetTime() > before)
        --row;
    return row;
}

const std::vector<IntervalAndMultiplicity> S_intervals = {
    {EIntervalTick, 1}, {EIntervalTick, 7}, {EIntervalSecond, 10}, {EIntervalMinute, 1}, {EIntervalMinute, 5},
    {EIntervalHour, 1}, {EIntervalDay, 1},  {EIntervalWeek, 1},    {EIntervalMonth, 1},  {EIntervalYear, 1}};

/// One course of a subscription as random as the promises of IConsumer allow.
class Course {
public:
    /// a_finer: also with a history in finer candles. That asks for sums that don't round: partial sums go into them.
    Course(const std::vector<Record>& a_rows, bool a_finer, IntervalAndMultiplicity a_interval,
           std::mt19937& a_random)
        : m_rows(a_rows),
          m_finer(a_finer),
          m_interval(a_interval),
          m_random(a_random),
          m_model(Properties(), a_interval.GetInterval(),
                  static_cast<unsigned short>(a_interval.GetMultiplicity()))
    {}

    void Run()
    {
        const std::size_t kind = m_random() % 4;
        const std::size_t before = m_random() % m_rows.size();
        if (kind == 0)
            GiveParts(before, {EIntervalTick, 1});
        else if (kind == 1)
            GiveParts(m_interval.IsTick() ? WindowBegin(m_rows, before, m_interval) : before, m_interval);
        else if (kind == 2 && m_finer && m_interval.GetInterval() >= EIntervalMinute)
            GiveParts(before, {EIntervalSecond, 30});
        m_model.HistoryEnd();
        // A window of ticks whose candle came as one can't be gone on with.
        if (m_random() % 3 != 0 || kind == 1) {
            m_told = kind == 1 || m_random() % 2 == 0 ? WindowBegin(m_rows, m_told, m_interval) : m_told;
            Synchronize(m_told);
        }
        Live();
        // The connection breaks and comes back.
        if (m_told > 0)
            Synchronize(m_random() % 2 == 0 ? WindowBegin(m_rows, m_told - 1, m_interval) : m_told - 1);
        Live();
        while (m_told < m_rows.size())
            m_model.AddRecord(m_rows[m_told++]);
        const History expected = Fold(Block<History>(m_rows, 0, m_rows.size()), m_interval);
        EXPECT_TRUE(SameBits(m_model.GetLastCandles(m_model.GetCount()), expected))
            << m_model.GetCount() << " candles, expected " << expected.GetRecordsCount();
    }

private:
    void GiveParts(std::size_t a_last, IntervalAndMultiplicity a_interval)
    {
        while (m_told < a_last) {
            std::size_t end = std::min(a_last, m_told + 1 + m_random() % 200);
            // A candle lies in one part.
            if (!a_interval.IsSingleTick() && end < a_last)
                end = WindowBegin(m_rows, end, a_interval);
            if (end <= m_told)
                end = a_last;
            History part = Block<History>(m_rows, m_told, end);
            EXPECT_TRUE(m_model.AddHistory(a_interval.IsSingleTick() ? std::move(part)
                                                                     : Fold(std::move(part), a_interval)));
            m_told = end;
        }
    }
    void Synchronize(std::size_t a_first)
    {
        const std::size_t end = std::min(m_rows.size(), std::max(m_told, a_first) + m_random() % 100);
        EXPECT_TRUE(m_model.SetSynchronization(Block<Synchronization>(m_rows, a_first, end)));
        m_told = end;
    }
    void Live()
    {
        for (std::size_t count = m_random() % 100; count > 0 && m_told < m_rows.size(); --count) {
            const auto change = m_model.AddRecord(m_rows[m_told++]);
            ASSERT_TRUE(change);
            const Record last = m_model.GetCandle(m_model.GetCount() - 1);
            EXPECT_TRUE(std::equal(last.begin(), last.end(), change->candle.begin()));
        }
    }

    const std::vector<Record>& m_rows;
    bool m_finer;
    IntervalAndMultiplicity m_interval;
    std::mt19937& m_random;
    SubscriptionCandles m_model;
    std::size_t m_told = 0;
};

void RunCourses(const std::vector<Record>& a_rows, bool a_finer, int a_rounds)
{
    for (const IntervalAndMultiplicity interval : S_intervals)
        for (int seed = 0; seed < a_rounds; ++seed) {
            SCOPED_TRACE(testing::Message() << "interval " << interval.GetInterval() << " x "
                                            << interval.GetMultiplicity() << ", seed " << seed);
            std::mt19937 random(static_cast<unsigned int>(seed));
            Course(a_rows, a_finer, interval, random).Run();
            if (testing::Test::HasFailure())
                return;
        }
}

} // namespace

TEST(SubscriptionCandlesTest, HoweverRowsAreHandedOverTheCandlesAreThoseOfOneFold)
{
    std::mt19937 random(7);
    RunCourses(RandomRows(random, 600), false, 12);
    RunCourses(RandomRows(random, 600, 0.5), true, 12);
}

TEST(SubscriptionCandlesTest, TheLawHoldsOnRealTrades)
{
    const std::vector<Record> rows = RealRows("ticks/mtgox_btcusd_2013-01-01.csv");
    ASSERT_EQ(rows.size(), 2331U);
    RunCourses(rows, false, 2);
}

TEST(SubscriptionCandlesTest, WhatDoesNotFitChangesNothing)
{
    SubscriptionCandles model(Properties(), EIntervalMinute, 5);
    ASSERT_TRUE(model.AddRecord(Row(At(10, 0), 5.0, 1.0)));
    const History before = model.GetLastCandles(9);

    History hours(Properties(), EIntervalHour, 1);
    hours.AddAggregationSeries();
    Record hour = hours.GetEmptyRecord();
    hour.SetTime(At(11, 0));
    ASSERT_TRUE(hours.AddData(hour));
    EXPECT_FALSE(model.AddHistory(std::move(hours)));
    std::mt19937 random(1);
    EXPECT_FALSE(model.AddHistory(Block<History>(RandomRows(random, 3), 0, 3))) << "earlier rows";
    Synchronization prices(EIntervalTick, 1, std::set<ESeriesId>{Price});
    ASSERT_TRUE(prices.AddData(Record(At(12, 0), {{Price, 1.0}})));
    EXPECT_FALSE(model.SetSynchronization(std::move(prices)));
    EXPECT_FALSE(model.AddRecord(Record(At(12, 0), {{Price, 1.0}})));
    EXPECT_FALSE(model.AddRecord(Row(At(9, 59), 1.0, 1.0))) << "came already";
    EXPECT_TRUE(SameBits(model.GetLastCandles(9), before));
}

TEST(SubscriptionCandlesTest, OperationsCorrectEveryRowOnce)
{
    HistoryOperations operations;
    ASSERT_TRUE(operations.Parse("1\n1,210304,2,0.5\n"));
    SubscriptionCandles model(Properties(), EIntervalMinute, 1);
    model.SetOperations(operations);
    History history(Properties(), EIntervalTick, 1);
    ASSERT_TRUE(history.AddData(Row(At(10, 0), 8.0, 1.0)));
    ASSERT_TRUE(model.AddHistory(std::move(history)));
    Synchronization synchronization(EIntervalTick, 1, Properties());
    ASSERT_TRUE(synchronization.AddData(Row(At(10, 0, 5), 6.0, 1.0)));
    ASSERT_TRUE(model.SetSynchronization(std::move(synchronization)));
    ASSERT_TRUE(model.AddRecord(Row(At(10, 0, 7), 4.0, 1.0)));
    ASSERT_EQ(model.GetCount(), 1U);
    const Record candle = model.GetCandle(0);
    EXPECT_EQ(candle.find(IntervalOpen)->second, 4.0);
    EXPECT_EQ(candle.find(Price)->second, 2.0);
    EXPECT_EQ(candle.find(Volume)->second, 6.0);
}
