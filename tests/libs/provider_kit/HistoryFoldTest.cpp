#include "provider_kit/HistoryFold.h"

#include "StoreTestTools.h"
#include "folding/AggregatorWrapper.h"

#include <gtest/gtest.h>

#include <random>

namespace {

constexpr std::size_t S_rows = 30 * TickMaker::S_rowsPerDay;

void Append(DataSeriesSet& a_all, const History& a_part)
{
    for (std::size_t row = 0; row < a_part.GetRecordsCount(); ++row) {
        Record::Values values;
        for (const auto& [series, column] : a_part)
            values.emplace_back(series, column.at(row));
        ASSERT_TRUE(a_all.AddData(Record(a_part.TimeSeries()[row], std::move(values))));
    }
}

void ExpectSameBits(const DataSeriesSet& a_left, const DataSeriesSet& a_right)
{
    ASSERT_EQ(a_left.TimeSeries(), a_right.TimeSeries());
    ASSERT_EQ(a_left.GetSeries(), a_right.GetSeries());
    for (const auto& [series, column] : a_left) {
        SCOPED_TRACE(series);
        EXPECT_EQ(column, a_right.find(series)->second);
    }
}

} // namespace

TEST(HistoryFoldTest, PartsEqualOneFold)
{
    std::mt19937 random(7);
    // Ticks straight to the interval, and by candles of 2 minutes, which have an open, high and low of their own.
    for (const bool byCandles : {false, true}) {
        StoreInstrument instrument = TickMaker::Instrument("PLTEST000001");
        History rows = TickMaker::Rows(0, S_rows);
        if (byCandles) {
            AggregatorWrapper finer(instrument.series, ELastRecordTime, EIntervalMinute, 2);
            ASSERT_TRUE(finer.AgregateHistory(rows));
            instrument.interval.Set(EIntervalMinute, 2);
            instrument.series.insert({DSProp(IntervalOpen), DSProp(IntervalMax), DSProp(IntervalMin)});
        }
        for (const IntervalAndMultiplicity interval :
             {IntervalAndMultiplicity(EIntervalTick, 3), IntervalAndMultiplicity(EIntervalMinute, 10),
              IntervalAndMultiplicity(EIntervalHour, 1), IntervalAndMultiplicity(EIntervalDay, 1),
              IntervalAndMultiplicity(EIntervalWeek, 2), IntervalAndMultiplicity(EIntervalYear, 1)}) {
            if (!HistoryFold::Reaches(instrument, interval))
                continue;
            SCOPED_TRACE(testing::Message()
                         << byCandles << ' ' << interval.GetInterval() << ' ' << interval.GetMultiplicity());
            History expected = rows;
            AggregatorWrapper wrapper(TickMaker::Instrument("PLTEST000001").series, ELastRecordTime,
                                      interval.GetInterval(),
                                      static_cast<unsigned short>(interval.GetMultiplicity()));
            ASSERT_TRUE(wrapper.AgregateHistory(expected));

            HistoryFold fold(instrument, interval);
            History all(expected.GetSeries(), interval.GetInterval(), interval.GetMultiplicity());
            for (std::size_t row = 0; row < rows.GetRecordsCount();) {
                const std::size_t end = std::min<std::size_t>(row + random() % 50, rows.GetRecordsCount());
                History part(rows.GetSeries(), rows.GetIntervalData().GetInterval(),
                             rows.GetIntervalData().GetMultiplicity());
                for (; row < end; ++row) {
                    Record::Values values;
                    for (const auto& [series, column] : rows)
                        values.emplace_back(series, column[row]);
                    part.AddData(Record(rows.TimeSeries()[row], std::move(values)));
                }
                Append(all, fold.Add(std::move(part)));
            }
            Append(all, fold.Finish());
            ExpectSameBits(all, expected);
        }
    }
}

TEST(HistoryFoldTest, RowsOfTheIntervalGoThroughAndFinerOnesAreRefused)
{
    StoreInstrument daily = TickMaker::Instrument("PLTEST000001");
    daily.interval.Set(EIntervalDay, 1);
    EXPECT_FALSE(HistoryFold::Reaches(daily, {EIntervalMinute, 1}));
    EXPECT_FALSE(HistoryFold::Reaches(daily, {EIntervalWeek, 0}));
    EXPECT_ANY_THROW(HistoryFold(daily, {EIntervalMinute, 1}));

    HistoryFold ticks(TickMaker::Instrument("PLTEST000001"), {EIntervalTick, 1});
    ExpectSameBits(ticks.Add(TickMaker::Rows(0, 100)), TickMaker::Rows(0, 100));
    EXPECT_TRUE(ticks.Finish().IsEmpty());
}
