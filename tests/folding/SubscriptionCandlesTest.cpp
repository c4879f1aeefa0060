#include "folding/SubscriptionCandles.h"

#include "folding/FoldingTestTools.h"
#include "series/Synchronization.h"
#include "support/MarketData.h"
#include "time/KalventoException.h"

using namespace kalvento::tests;

namespace {

Record Row(const NDateTime& a_time, double a_price, double a_volume)
{
    return {a_time, {{Price, a_price}, {Volume, a_volume}}};
}

// Trades with all that real files have: many in one second, gaps, sums that round.
DataSeriesSet RealRows(const std::string& a_name)
{
    std::vector<NDateTime> times;
    DataSeriesSet::Columns columns = {{Price, {}}, {Volume, {}}};
    std::ifstream file(MarketData::Path(a_name));
    std::string line;
    std::getline(file, line);
    NDateTime last;
    unsigned int counter = 0;
    while (std::getline(file, line)) {
        unsigned int field[6] = {};
        double price = 0.0;
        double volume = 0.0;
        if (std::sscanf(line.c_str(), "%u-%u-%u %u:%u:%u.%*u,%lf,%lf", &field[0], &field[1], &field[2],
                        &field[3], &field[4], &field[5], &price, &volume) != 8)
            break;
        const NDateTime second(field[0], field[1], field[2], field[3], field[4], field[5], 0);
        counter = times.empty() || last != second ? 0 : counter + 1;
        last = second;
        columns[0].second.push_back(price);
        columns[1].second.push_back(volume);
        times.emplace_back(field[0], field[1], field[2], field[3], field[4], field[5], counter);
    }
    return {EIntervalTick, 1, std::move(times), std::move(columns)};
}

/// Number of the row that opened the window in which the row of that number lies.
std::size_t WindowBegin(const DataSeriesSet& a_rows, std::size_t a_row, IntervalAndMultiplicity a_interval)
{
    const History candles = Folded(Slice<History>(a_rows, 0, a_row + 1), PriceAndVolume(), a_interval);
    if (candles.GetRecordsCount() < 2)
        return 0;
    const NDateTime before = candles.TimeSeries()[candles.GetRecordsCount() - 2];
    std::size_t row = a_row;
    while (a_rows.TimeSeries()[row - 1] > before)
        --row;
    return row;
}

/// None, one inside a week, and some with factors that round, between the rows of RandomTicks.
HistoryOperations RandomOperations(std::mt19937& a_random)
{
    static constexpr std::array<const char*, 3> S_texts = {
        "1\n", "2\n1,201230,2,0.5\n", "3\n1,201229,7,0.7\n2,211229,4,3\n3,211231,2,0.3\n"};
    HistoryOperations operations;
    operations.Parse(S_texts[a_random() % S_texts.size()]);
    return operations;
}

/// One course of a subscription as random as the promises of IConsumer allow.
class Course {
public:
    /// a_finer: also with a history in finer candles. That asks for sums that don't round: partial sums go into them.
    Course(const DataSeriesSet& a_rows, bool a_finer, IntervalAndMultiplicity a_interval,
           std::mt19937& a_random)
        : m_rows(a_rows),
          m_finer(a_finer),
          m_interval(a_interval),
          m_asked(SubscriptionCandles::IntervalToAsk(a_interval)),
          m_random(a_random),
          m_model(PriceAndVolume(), a_interval.GetInterval(),
                  static_cast<unsigned short>(a_interval.GetMultiplicity()))
    {}

    void Run()
    {
        TellOperations();
        const std::size_t kind = m_random() % 4;
        const std::size_t before = m_random() % m_rows.GetRecordsCount();
        if (kind == 0)
            GiveParts(before, {EIntervalTick, 1});
        else if (kind == 1)
            GiveParts(m_asked.IsTick() ? WindowBegin(m_rows, before, m_asked) : before, m_asked);
        else if (kind == 2 && m_finer && m_asked.GetInterval() >= EIntervalMinute)
            GiveParts(before, {EIntervalSecond, 30});
        m_model.HistoryEnd();
        TellOperations();
        // A window of ticks whose candle came as one can't be gone on with.
        if (m_random() % 3 != 0 || kind == 1) {
            m_told = kind == 1 || m_random() % 2 == 0 ? WindowBegin(m_rows, m_told, m_asked) : m_told;
            Synchronize(m_told);
        }
        Live();
        TellOperations();
        // The connection breaks and comes back.
        if (m_told > 0)
            Synchronize(m_random() % 2 == 0 ? WindowBegin(m_rows, m_told - 1, m_asked) : m_told - 1);
        Live();
        while (m_told < m_rows.GetRecordsCount())
            m_model.AddRecord(Next());
        TellOperations();
        History expected = Folded(HistoryOf(m_rows), PriceAndVolume(), m_asked);
        expected.ApplyDataOperations(m_operations);
        if (!m_asked.Equals(m_interval))
            expected = Folded(std::move(expected), PriceAndVolume(), m_interval);
        EXPECT_TRUE(SameBits(m_model.GetLastCandles(m_model.GetCount()), expected))
            << m_model.GetCount() << " candles, expected " << expected.GetRecordsCount();
    }

private:
    void TellOperations()
    {
        if (m_random() % 2 == 0)
            return;
        m_operations = RandomOperations(m_random);
        m_model.SetOperations(m_operations);
    }
    void GiveParts(std::size_t a_last, IntervalAndMultiplicity a_interval)
    {
        while (m_told < a_last) {
            std::size_t end = std::min(a_last, m_told + 1 + m_random() % 200);
            // A candle lies in one part.
            if (!a_interval.IsSingleTick() && end < a_last)
                end = WindowBegin(m_rows, end, a_interval);
            if (end <= m_told)
                end = a_last;
            History part = Slice<History>(m_rows, m_told, end);
            EXPECT_TRUE(m_model.AddHistory(a_interval.IsSingleTick()
                                               ? std::move(part)
                                               : Folded(std::move(part), PriceAndVolume(), a_interval)));
            m_told = end;
        }
    }
    Record Next()
    {
        ++m_told;
        return Slice<DataSeriesSet>(m_rows, m_told - 1, m_told).GetLastRecord();
    }
    void Synchronize(std::size_t a_first)
    {
        const std::size_t end =
            std::min(m_rows.GetRecordsCount(), std::max(m_told, a_first) + m_random() % 100);
        EXPECT_TRUE(m_model.SetSynchronization(Slice<Synchronization>(m_rows, a_first, end)));
        m_told = end;
    }
    void Live()
    {
        for (std::size_t count = m_random() % 100; count > 0 && m_told < m_rows.GetRecordsCount(); --count) {
            const auto change = m_model.AddRecord(Next());
            ASSERT_TRUE(change);
            const Record last = m_model.GetCandle(m_model.GetCount() - 1);
            EXPECT_TRUE(std::equal(last.begin(), last.end(), change->candle.begin()));
        }
    }

    const DataSeriesSet& m_rows;
    bool m_finer;
    IntervalAndMultiplicity m_interval;
    IntervalAndMultiplicity m_asked;
    std::mt19937& m_random;
    SubscriptionCandles m_model;
    HistoryOperations m_operations;
    std::size_t m_told = 0;
};

void RunCourses(const DataSeriesSet& a_rows, bool a_finer, int a_rounds)
{
    for (const IntervalAndMultiplicity interval : S_candleIntervals)
        for (int seed = 0; seed < a_rounds; ++seed) {
            SCOPED_TRACE(Shown(interval) + ", seed " + std::to_string(seed));
            std::mt19937 random(static_cast<unsigned int>(seed));
            Course(a_rows, a_finer, interval, random).Run();
            if (testing::Test::HasFailure())
                return;
        }
}

} // namespace

TEST(SubscriptionCandlesTest, HoweverRowsAreHandedOverTheCandlesAreThoseOfOneFold)
{
    RunCourses(RandomTicks(600, 7), false, 7);
    RunCourses(RandomTicks(600, 8, {}, 0.5), true, 7);
}

TEST(SubscriptionCandlesTest, TheLawHoldsOnRealTrades)
{
    const DataSeriesSet rows = RealRows("ticks/mtgox_btcusd_2013-01-01.csv");
    ASSERT_EQ(rows.GetRecordsCount(), 2331U);
    RunCourses(rows, false, 2);
}

TEST(SubscriptionCandlesTest, WhatDoesNotFitChangesNothing)
{
    SubscriptionCandles model(PriceAndVolume(), EIntervalMinute, 5);
    ASSERT_TRUE(model.AddRecord(Row(At(10, 0), 5.0, 1.0)));
    const History before = model.GetLastCandles(9);

    History hours(PriceAndVolume(), EIntervalHour, 1);
    hours.AddAggregationSeries();
    Record hour = hours.GetEmptyRecord();
    hour.SetTime(At(11, 0));
    ASSERT_TRUE(hours.AddData(hour));
    EXPECT_FALSE(model.AddHistory(std::move(hours)));
    EXPECT_FALSE(model.AddHistory(HistoryOf(RandomTicks(3, 1)))) << "earlier rows";
    Synchronization prices(EIntervalTick, 1, std::set<ESeriesId>{Price});
    ASSERT_TRUE(prices.AddData(Record(At(12, 0), {{Price, 1.0}})));
    EXPECT_FALSE(model.SetSynchronization(std::move(prices)));
    EXPECT_FALSE(model.AddRecord(Record(At(12, 0), {{Price, 1.0}})));
    EXPECT_FALSE(model.AddRecord(Row(At(9, 59), 1.0, 1.0))) << "came already";
    EXPECT_TRUE(SameBits(model.GetLastCandles(9), before));
}

TEST(SubscriptionCandlesTest, ARowOfTheLastRowsTimeIsNotLate)
{
    SubscriptionCandles model(PriceAndVolume(), EIntervalMinute, 5);
    for (const double price : {5.0, 7.0})
        ASSERT_TRUE(model.AddRecord(Row(At(10, 0), price, 1.0)));
    EXPECT_EQ(model.GetCandle(0).find(Volume)->second, 2.0);
}

// A source may have nothing shorter than weeks: they are its rows.
TEST(SubscriptionCandlesTest, WeeksOfASourceOfWeeksAreShownAsTheyCame)
{
    const DataSeriesSet rows = RandomTicks(600, 9);
    const History weeks = Folded(HistoryOf(rows), PriceAndVolume(), {EIntervalWeek, 1});
    SubscriptionCandles model(PriceAndVolume(), EIntervalWeek, 1);
    ASSERT_TRUE(model.AddHistory(History(weeks)));
    EXPECT_TRUE(SameBits(model.GetLastCandles(99), weeks));
    SubscriptionCandles months(PriceAndVolume(), EIntervalMonth, 1);
    ASSERT_TRUE(months.AddHistory(History(weeks)));
    EXPECT_TRUE(
        SameBits(months.GetLastCandles(99), Folded(History(weeks), PriceAndVolume(), {EIntervalMonth, 1})));
    EXPECT_THROW(SubscriptionCandles(PriceAndVolume(), EIntervalWeek, 5000), KalventoException);
}
