#include "series/Record.h"

#include "platform/CodePage.h"
#include "series/SeriesTestTools.h"
#include "support/Testing.h"

using namespace kalvento::tests;

namespace {

std::vector<ESeriesId> SeriesOf(const Record& a_record)
{
    std::vector<ESeriesId> series;
    for (const Record::Value& value : a_record)
        series.push_back(value.first);
    return series;
}

std::string WhyNotCandle(Record a_record)
{
    const std::vector<ESeriesId> before = SeriesOf(a_record);
    const std::string text = RaisedText<std::runtime_error>([&a_record] { a_record.AddAggregationSeries(); });
    EXPECT_EQ(before, SeriesOf(a_record));
    return text;
}

} // namespace

TEST(RecordTest, NeverGainsASeriesByValue)
{
    Record record(std::set<ESeriesId>{Time, Volume});
    EXPECT_TRUE(record.HasSeries(Time));
    for (const ESeriesId refused : {Time, ESeriesId(0), Price}) {
        EXPECT_FALSE(record.SetData(refused, 1.0)) << refused;
        EXPECT_EQ(2U, record.SeriesCount());
    }
    EXPECT_EQ(0.0, record.find(Time)->second);
    EXPECT_TRUE(record.SetData(Volume, 7.0));
    EXPECT_EQ(7.0, record.find(Volume)->second);
}

TEST(RecordTest, UnsortedPairsAreOrderedByNumberThenValue)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    Record record(At(10, 0),
                  {{Indicator, nan}, {Indicator, 3.0}, {Price, 5.0}, {Indicator, nan}, {Indicator, -1.0}});
    record.AddAggregationSeries();
    EXPECT_EQ((std::vector<ESeriesId>{Price, IntervalOpen, IntervalMax, IntervalMin, Indicator, Indicator,
                                      Indicator, Indicator}),
              SeriesOf(record));
    EXPECT_EQ(-1.0, record.begin()[4].second);
    EXPECT_EQ(3.0, record.begin()[5].second);
    EXPECT_TRUE(std::isnan(record.begin()[6].second) && std::isnan(record.begin()[7].second));
    EXPECT_EQ(At(10, 0), record.GetTime());
}

TEST(RecordTest, RefusalsOfCandleSeriesComeInOrder)
{
    EXPECT_EQ("zbiór serii jest pusty: a_series"_cp1250,
              RaisedText<std::invalid_argument>([] { Record(std::set<ESeriesId>{}); }));
    EXPECT_EQ("Rekord zawiera już serie agregacyjne"_cp1250,
              WhyNotCandle(Record(std::set<ESeriesId>{IntervalMin})));
    EXPECT_EQ("Rekord zawiera już serie agregacyjne"_cp1250,
              WhyNotCandle(Record(std::set<ESeriesId>{Price, IntervalOpen})));
    EXPECT_EQ("brak serii podstawowej", WhyNotCandle(Record(std::set<ESeriesId>{Volume})));
}
