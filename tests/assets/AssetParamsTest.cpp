#include "assets/AssetParams.h"

#include "assets/IntervalLimits.h"
#include "support/RaisedText.h"
#include "support/StoredForm.h"
#include "time/DateTimeTools.h"
#include "time/KalventoException.h"

namespace {

constexpr unsigned int S_history = ParamsBase::S_kindDataHistory;

// One day in March tells the ranges apart.
RangeData DayRange(unsigned int a_day)
{
    return {NDateTime(2021, 3, a_day), NDateTime(2021, 3, a_day)};
}

AssetParams::Intervals IntervalsOf(const std::vector<EInterval>& a_intervals)
{
    AssetParams::Intervals intervals;
    for (const EInterval interval : a_intervals)
        intervals.emplace_back(interval, DayRange(interval));
    return intervals;
}

} // namespace

TEST(AssetParamsTest, AnIntervalIsServedByItselfElseByTheFirstFinerOne)
{
    const AssetParams params(S_history, 1, IntervalsOf({EIntervalDay, EIntervalMinute, EIntervalSecond}));
    // From the interval asked for to the one that answers; 0 for none.
    const std::vector<std::pair<unsigned int, unsigned int>> cases = {{1, 0}, {2, 2}, {3, 3}, {4, 3},
                                                                      {5, 5}, {6, 5}, {8, 5}, {0, 0}};
    for (const auto& [asked, answering] : cases) {
        SCOPED_TRACE(asked);
        const auto dates = params.GetDates(static_cast<EInterval>(asked));
        ASSERT_EQ(dates.has_value(), answering != 0);
        if (dates) {
            EXPECT_EQ(dates->from.GetDay(), answering);
        }
    }
}

TEST(AssetParamsTest, DatesAreSetOnThatVeryIntervalOnly)
{
    AssetParams params(S_history, 1, IntervalsOf({EIntervalDay, EIntervalMinute}));
    EXPECT_FALSE(params.SetDates(EIntervalHour, NDateTime(2021, 4, 1), NDateTime(2021, 4, 2)));
    EXPECT_FALSE(params.SetDates(EIntervalMinute, NDateTime(2021, 4, 2), NDateTime(2021, 4, 1)));
    EXPECT_EQ(params.GetDates(EIntervalMinute)->from.GetMonth(), 3U);
    EXPECT_TRUE(params.SetDates(EIntervalMinute, NDateTime(2021, 4, 1, 8, 0, 0, 0), NDateTime(2021, 4, 2)));
    EXPECT_EQ(params.GetDates(EIntervalMinute)->from.GetHour(), 0U);
    EXPECT_EQ(params.GetDates(EIntervalMinute)->from.GetMonth(), 4U);
    EXPECT_EQ(params.GetDates(EIntervalDay)->from.GetMonth(), 3U);
}

TEST(AssetParamsTest, HistoryWithoutIntervalsIsRefused)
{
    EXPECT_THROW(AssetParams(15, 1, {}), KalventoException);
    const std::string text = kalvento::tests::RaisedText<KalventoException>([] { AssetParams(8, 1, {}); });
    EXPECT_TRUE(text.ends_with(" - Argument exception: a_kindData == S_kindDataHistory")) << text;
}

TEST(AssetParamsTest, ValidityLooksAtTheFirstIntervalsLimit)
{
    AssetParams::Intervals wrongSecond = IntervalsOf({EIntervalDay});
    wrongSecond.emplace_back(EIntervalMinute, RangeData(NDateTime(2021, 3, 2), NDateTime(2021, 3, 1)));
    const std::tuple<const char*, AssetParams, bool> cases[] = {
        {"nothing offered", AssetParams(), false},
        {"history from a mask alone", AssetParams(8), false},
        {"multiplicity 0", AssetParams(8, 0, IntervalsOf({EIntervalDay})), false},
        {"multiplicity 0 without history", AssetParams(7, 0, {}), true},
        {"over the limit", AssetParams(8, 60, IntervalsOf({EIntervalMinute})), false},
        {"under the second's limit", AssetParams(8, 60, IntervalsOf({EIntervalMinute, EIntervalDay})), false},
        {"ticks have no limit", AssetParams(8, 4000000000U, IntervalsOf({EIntervalTick})), true},
        {"a wrong range behind", AssetParams(8, 1, std::move(wrongSecond)), false},
    };
    for (const auto& [what, params, valid] : cases)
        EXPECT_EQ(params.IsValid(), valid) << what;
}

TEST(AssetParamsTest, StoredFormKeepsTheOrder)
{
    AssetParams written(11, 5, IntervalsOf({EIntervalDay, EIntervalTick, EIntervalDay}));
    written.SetAggregationTime(EWindowBorder);
    // An entry begins and ends on the day that its number names.
    const auto entry = [](int a_interval) {
        const std::string day =
            "<DateTime>" + std::to_string(44255 + a_interval) + "</DateTime><Millisecond>0</Millisecond>";
        return "<item><Interval>" + std::to_string(a_interval) + "</Interval><From>" + day + "</From><To>" +
               day + "</To></item>";
    };
    ExpectStoredAs(written,
                   "<settings><KindData>11</KindData><AggrTime>4</AggrTime><Multipl>5</Multipl><Intervals>" +
                       entry(5) + entry(1) + entry(5) + "</Intervals></settings>");
    // Twice into one node, as a save over an earlier one does it.
    Settings settings;
    AssetParams(8, 1, IntervalsOf({EIntervalHour})).SerializeState(settings);
    written.SerializeState(settings);
    EXPECT_EQ(settings.ConvertToString(), StoredText(written));
}

TEST(IntervalLimitsTest, EachIntervalReachesItsSessionsBack)
{
    const std::vector<std::pair<unsigned int, unsigned int>> sessions = {
        {0, 1}, {1, 5}, {2, 15}, {3, 15}, {4, 30}, {5, 10000}, {6, 10000}, {7, 10000}, {8, 10000}, {9, 1}};
    const NDateTime to(2021, 3, 3, 15, 30, 0, 3);
    for (const auto& [interval, count] : sessions) {
        SCOPED_TRACE(interval);
        const auto dates = IntervalLimits::GetDatesLimit(static_cast<EInterval>(interval), to);
        ASSERT_TRUE(dates);
        EXPECT_TRUE(dates->to == to);
        EXPECT_EQ(DateTimeTools::GetSessionCountForDates(dates->from, dates->to), count);
    }
    EXPECT_FALSE(IntervalLimits::GetDatesLimit(EIntervalHour, NDateTime(2021, 2, 30)));
    EXPECT_FALSE(IntervalLimits::GetDatesLimit(EIntervalDay, NDateTime(110, 1, 4)));
}
