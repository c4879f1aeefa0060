#include "assets/AssetParams.h"

#include "assets/IntervalLimits.h"
#include "settings/Settings.h"
#include "support/Testing.h"
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

RangeData WrongOrder()
{
    return {NDateTime(2021, 3, 2), NDateTime(2021, 3, 1)};
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
    try {
        const AssetParams params(8, 1, {});
        ADD_FAILURE() << "taken";
    } catch (const KalventoException& failure) {
        EXPECT_TRUE(
            std::string(failure.what()).ends_with(" - Argument exception: a_kindData == S_kindDataHistory"));
    }
}

TEST(AssetParamsTest, ValidityLooksAtTheFirstIntervalsLimit)
{
    struct Case {
        const char* what;
        AssetParams params;
        bool valid;
    };
    AssetParams::Intervals wrongSecond = IntervalsOf({EIntervalDay});
    wrongSecond.emplace_back(EIntervalMinute, WrongOrder());
    const std::vector<Case> cases = {
        {"nothing offered", AssetParams(), false},
        {"history from a mask alone", AssetParams(8), false},
        {"multiplicity 0", AssetParams(8, 0, IntervalsOf({EIntervalDay})), false},
        {"multiplicity 0 without history", AssetParams(7, 0, {}), true},
        {"over the limit", AssetParams(8, 60, IntervalsOf({EIntervalMinute})), false},
        {"under the second's limit", AssetParams(8, 60, IntervalsOf({EIntervalMinute, EIntervalDay})), false},
        {"ticks have no limit", AssetParams(8, 4000000000U, IntervalsOf({EIntervalTick})), true},
        {"a wrong range behind", AssetParams(8, 1, std::move(wrongSecond)), false},
    };
    for (const auto& tried : cases) {
        SCOPED_TRACE(tried.what);
        EXPECT_EQ(tried.params.IsValid(), tried.valid);
    }
}

TEST(AssetParamsTest, StoredFormReadsBackInOrder)
{
    AssetParams written(11, 5, IntervalsOf({EIntervalDay, EIntervalTick, EIntervalDay}));
    written.SetAggregationTime(EWindowBorder);
    Settings settings;
    // Twice into one node, as a save over an earlier one does it.
    AssetParams(8, 1, IntervalsOf({EIntervalHour})).SerializeState(settings);
    const ParamsBase& base = written;
    base.SerializeState(settings);

    EXPECT_EQ(static_cast<unsigned int>(settings["KindData"]), 11U);
    EXPECT_EQ(static_cast<int>(settings["AggrTime"]), static_cast<int>(EWindowBorder));
    EXPECT_EQ(static_cast<unsigned int>(settings["Multipl"]), 5U);
    const Settings& entry = *settings["Intervals"].begin_unnamed();
    EXPECT_EQ(static_cast<unsigned int>(entry["Interval"]), 5U);
    EXPECT_EQ(static_cast<double>(entry["From"]["DateTime"]), 44260.0);

    const AssetParams read(settings);
    EXPECT_EQ(read.GetKindData(), 11U);
    EXPECT_EQ(read.GetMultiplicity(), 5U);
    EXPECT_EQ(read.GetAggregationTime(), EWindowBorder);
    std::vector<unsigned int> intervals;
    for (const auto& [interval, range] : read) {
        intervals.push_back(interval);
        EXPECT_EQ(range.GetDates().to.GetDay(), interval);
    }
    EXPECT_EQ(intervals, (std::vector<unsigned int>{5, 1, 5}));
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
