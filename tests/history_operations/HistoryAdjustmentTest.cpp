#include "history_operations/HistoryOperations.h"
#include "series/History.h"
#include "support/Testing.h"

namespace {

const std::vector<ESeriesId> S_prices = {Price, IntervalOpen, IntervalMax, IntervalMin};
const std::vector<ESeriesId> S_volumes = {Volume, Lop};
const std::vector<ESeriesId> S_untouched = {Tko,        Open,     Max,         Min,  Close, Reference,
                                            Settlement, Turnover, VolumeTotal, Bid1, Ask1};

// All of them, in every row 8 + row.
History Filled(std::vector<NDateTime> a_times)
{
    DataSeriesSet::Columns columns;
    std::vector<double> values;
    for (std::size_t row = 0; row < a_times.size(); ++row)
        values.push_back(8.0 + static_cast<double>(row));
    for (const auto* const group : {&S_prices, &S_volumes, &S_untouched}) {
        for (const ESeriesId id : *group)
            columns.emplace_back(id, values);
    }
    return {EIntervalDay, 1, std::move(a_times), std::move(columns)};
}

HistoryOperations Parsed(std::string_view a_text)
{
    HistoryOperations operations;
    EXPECT_TRUE(operations.Parse(a_text));
    return operations;
}

// Rows 0 to a_scaled - 1 have their prices and volumes times these factors, everything else is as Filled left it.
void ExpectScaled(const History& a_history, std::size_t a_scaled, double a_priceFactor, double a_volumeFactor)
{
    const auto expectColumn = [&](ESeriesId a_id, double a_factor) {
        SCOPED_TRACE(a_id);
        const std::vector<double>& values = a_history.find(a_id)->second;
        for (std::size_t row = 0; row < values.size(); ++row)
            EXPECT_EQ(values[row], (8.0 + static_cast<double>(row)) * (row < a_scaled ? a_factor : 1.0));
    };
    for (const ESeriesId id : S_prices)
        expectColumn(id, a_priceFactor);
    for (const ESeriesId id : S_volumes)
        expectColumn(id, a_volumeFactor);
    for (const ESeriesId id : S_untouched)
        expectColumn(id, 1.0);
}

std::vector<NDateTime> FirstDaysOfMarch2021(unsigned int a_count)
{
    std::vector<NDateTime> times;
    for (unsigned int day = 1; day <= a_count; ++day)
        times.emplace_back(2021, 3, day);
    return times;
}

} // namespace

TEST(HistoryAdjustmentTest, TheWholeDayOfTheOperationIsScaled)
{
    History history = Filled({NDateTime(2021, 3, 1, 17, 0, 0, 0), NDateTime(2021, 3, 2),
                              NDateTime(2021, 3, 2, 0, 0, 0, 1), NDateTime(2021, 3, 2, 23, 59, 59, 50000),
                              NDateTime(2021, 3, 3), NDateTime(2021, 3, 3, 0, 0, 0, 1)});
    history.ApplyDataOperations(Parsed("1\n1,210302,2,0.5"));
    ExpectScaled(history, 4, 0.5, 2.0);
}

// Times that near are earlier than the limit and equal to it at once, or even on both sides of it, since their
// counter is greater: such a first row counts as the first of the new scale, and so do the rows after it.
TEST(HistoryAdjustmentTest, AHistoryThatBeginsInTheLastHalfSecondStaysAsItIs)
{
    const auto movedOn = [](unsigned int a_steps) {
        NDateTime time(2021, 3, 2, 23, 59, 59, 0);
        for (unsigned int step = 0; step < a_steps; ++step)
            time.ShiftMilliSec();
        return time;
    };
    const NDateTime counted = movedOn(60000);
    const NDateTime wrapped = movedOn(65536); // its counter has come round to that of the limit
    ASSERT_EQ(wrapped.GetMilliSec(), 0U);
    for (const NDateTime& first : {counted, wrapped}) {
        SCOPED_TRACE(first.GetMilliSec());
        History history = Filled({first, movedOn(65537)});
        history.ApplyDataOperations(Parsed("1\n1,210302,2,0.5"));
        ExpectScaled(history, 0, 0.5, 2.0);
    }
    History earlier = Filled({movedOn(0), wrapped});
    earlier.ApplyDataOperations(Parsed("1\n1,210302,2,0.5"));
    ExpectScaled(earlier, 2, 0.5, 2.0);
}

TEST(HistoryAdjustmentTest, MissingAndShortColumns)
{
    DataSeriesSet::Columns columns = {{Price, {8.0, 8.0, 8.0}}, {Volume, {6.0}}, {Turnover, {1.0, 2.0}}};
    History ticks(EIntervalTick, 1, FirstDaysOfMarch2021(3), std::move(columns));
    ticks.ApplyDataOperations(Parsed("1\n1,210302,2,0.5"));
    EXPECT_EQ(ticks.find(Price)->second, (std::vector<double>{4.0, 4.0, 8.0}));
    EXPECT_EQ(ticks.find(Volume)->second, std::vector<double>{12.0});
    EXPECT_EQ(ticks.find(Turnover)->second, (std::vector<double>{1.0, 2.0}));
    EXPECT_EQ(ticks.SeriesCount(), 3U);
}

// The law of the whole: each row is scaled by the product of the factors of all operations dated on its day or later,
// whatever the order of the list. With powers of two the products are exact. Types up to 6 scale volumes too.
TEST(HistoryAdjustmentTest, RowsAreScaledByTheProductOfAllLaterOperations)
{
    std::mt19937 random(3);
    for (int round = 0; round < 100; ++round) {
        std::string text = "1\n";
        std::vector<double> priceFactors(10, 1.0);
        std::vector<double> volumeFactors(10, 1.0);
        for (std::size_t count = random() % 6; count > 0; --count) {
            const std::size_t day =
                10 + random() % 12; // from the day before the first row to the one after the last
            const int type =
                random() % 8 == 0 ? std::numeric_limits<int>::max() : static_cast<int>(random() % 20) - 4;
            const double stored = std::ldexp(1.0, static_cast<int>(random() % 7) - 3);
            text += "1,2103" + std::to_string(day) + "," + std::to_string(type) + "," +
                    std::to_string(stored) + "\n";
            const double factor = type == 4 || type == 14 ? 1.0 / stored : stored;
            for (std::size_t row = 0; row < 10 && 11 + row <= day; ++row) {
                priceFactors[row] *= factor;
                volumeFactors[row] /= type <= 6 ? factor : 1.0;
            }
        }
        SCOPED_TRACE(text);
        std::vector<NDateTime> times = FirstDaysOfMarch2021(20);
        History history = Filled({times.begin() + 10, times.end()});
        history.ApplyDataOperations(Parsed(text));
        History empty = Filled({});
        empty.ApplyDataOperations(Parsed(text));
        EXPECT_TRUE(empty.IsEmpty());
        for (std::size_t row = 0; row < 10; ++row) {
            const double value = 8.0 + static_cast<double>(row);
            EXPECT_EQ(history.find(IntervalMax)->second[row], value * priceFactors[row]);
            EXPECT_EQ(history.find(Lop)->second[row], value * volumeFactors[row]);
            EXPECT_EQ(history.find(Close)->second[row], value);
        }
    }
}
