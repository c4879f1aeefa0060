#include "folding/Explanation.h"

#include "folding/CandleDifference.h"
#include "folding/FoldingTestTools.h"
#include "time/KalventoException.h"

using namespace kalvento::tests;

namespace {

std::vector<Explanation::Source> Sources(const DataSeriesSet& a_rows)
{
    std::vector<Explanation::Source> sources;
    for (const NDateTime& time : a_rows.TimeSeries())
        sources.push_back({2 * sources.size(), time});
    return sources;
}

} // namespace

TEST(ExplanationTest, EveryCandleIsExplainedAsItIsFolded)
{
    const DataSeriesSet ticks = RandomTicks(120, 17);
    for (const EAggrType fold : {EAggrTypeOhlc, EAggrTypeOhlcSum, EAggrTypeOhlcLast})
        for (const IntervalAndMultiplicity interval : S_candleIntervals) {
            if (interval.IsSingleTick())
                continue; // a tick is no candle
            SCOPED_TRACE(std::to_string(fold) + ", " + Shown(interval));
            const std::set<DSProp> properties = PriceAndVolume(fold);
            const History folded = Folded(HistoryOf(ticks), properties, interval);
            const Explanation explanation(ticks, Sources(ticks), {}, properties, interval);
            ASSERT_EQ(explanation.GetCandles().size(), folded.GetRecordsCount());
            std::size_t behind = 0;
            for (std::size_t place = 0; place < folded.GetRecordsCount(); ++place) {
                const Explanation::Span rows = explanation.GetCandles()[place];
                ASSERT_EQ(rows.begin, behind) << "every row makes one candle";
                behind = rows.end;
                const auto candle = explanation.Explain(ticks.TimeSeries()[rows.begin]);
                ASSERT_TRUE(candle);
                // Candles of ticks may meet in a second; the first of them is told of.
                if (interval.IsTick() && candle->place != place)
                    continue;
                ASSERT_EQ(candle->place, place);
                ASSERT_EQ(candle->values.size(), folded.SeriesCount());
                for (const Explanation::Value& value : candle->values) {
                    const bool ofPrice = value.series != Volume;
                    const auto& column = ticks.find(ofPrice ? Price : Volume)->second;
                    ASSERT_EQ(value.value, folded.find(value.series)->second[place]);
                    const auto first = column.begin();
                    ASSERT_EQ(value.value,
                              value.from == Explanation::Value::EFromRow
                                  ? column[value.row]
                                  : std::accumulate(first + static_cast<std::ptrdiff_t>(rows.begin) + 1,
                                                    first + static_cast<std::ptrdiff_t>(rows.end),
                                                    column[rows.begin]));
                    ASSERT_TRUE(value.from == Explanation::Value::EFromRows ||
                                (value.row >= rows.begin && value.row < rows.end));
                }
            }
            EXPECT_EQ(behind, ticks.GetRecordsCount());
        }
}

TEST(ExplanationTest, SaysWhichRowsAreNotInTheCandle)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    // The second row came late and was raised; the last one lies in the same window one year later.
    const std::vector<NDateTime> times{{2023, 1, 2, 10, 6, 0, 0},
                                       {2023, 1, 2, 10, 6, 0, 1},
                                       {2023, 1, 2, 10, 12, 0, 0},
                                       {2024, 1, 2, 10, 12, 0, 0}};
    const DataSeriesSet rows(EIntervalTick, 1, std::vector<NDateTime>(times),
                             {{Price, {nan, 7.0, 8.0, 9.0}}});
    std::vector<Explanation::Source> sources = Sources(rows);
    const NDateTime early(2023, 1, 2, 10, 1, 0, 0);
    sources[1].written = early;
    const std::vector<Explanation::Source> refused{
        {1, {}}, {5, {}}, {7, NDateTime(2023, 1, 2, 10, 9, 59, 0)}, {8, early}};
    const std::set<DSProp> properties{DSProp(Price)};
    const Explanation explanation(rows, sources, refused, properties, {EIntervalMinute, 5});
    ASSERT_EQ(explanation.GetCandles().size(), 2U);

    const auto first = explanation.Explain(NDateTime(2023, 1, 2, 10, 7, 0, 0));
    ASSERT_TRUE(first);
    EXPECT_EQ(first->number, 121);
    EXPECT_EQ(first->border, NDateTime(2023, 1, 2, 10, 9, 59, 0));
    EXPECT_EQ(first->refused, (std::vector<std::size_t>{0, 2}));
    EXPECT_EQ(first->raised, (std::vector<std::size_t>{1}));
    EXPECT_FALSE(first->isMixed);
    EXPECT_EQ(first->values[0].from, Explanation::Value::EFromRow) << "open";
    EXPECT_EQ(first->values[1].from, Explanation::Value::EFromNone) << "a high that is no number";

    // Another window of the same number holds it, so that its rows are found from there, too.
    const auto mixed = explanation.Explain(NDateTime(2024, 1, 2, 10, 10, 0, 0));
    ASSERT_TRUE(mixed);
    EXPECT_TRUE(mixed->isMixed);
    EXPECT_EQ(mixed->place, 1U);
    EXPECT_FALSE(explanation.Explain(early)) << "its row counts elsewhere";
    EXPECT_EQ(explanation.TimeOf(1), NDateTime(2023, 1, 2, 10, 10, 0, 0));

    EXPECT_THROW(Explanation(rows, {}, {}, properties, {EIntervalMinute, 5}), std::invalid_argument);
    EXPECT_THROW(Explanation(rows, sources, {}, properties, {EIntervalTick, 65536}), std::invalid_argument);
    EXPECT_THROW(Explanation(rows, sources, {}, properties, {EIntervalMinute, 60}), KalventoException);
}
