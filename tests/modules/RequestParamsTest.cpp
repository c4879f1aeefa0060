#include "modules/RequestParams.h"

#include "settings/Settings.h"
#include "support/Testing.h"

namespace {

const NDateTime S_from(2021, 3, 1);
const NDateTime S_to(2021, 3, 5);

RequestParams HistoryOf(unsigned int a_interval, unsigned int a_multiplicity)
{
    return {8, static_cast<EInterval>(a_interval), a_multiplicity, S_from, S_to, false};
}

} // namespace

TEST(RequestParamsTest, OnlyHistoryIsHeldAgainstRangeAndInterval)
{
    const std::vector<std::tuple<const char*, RequestParams, bool>> cases = {
        {"nothing asked for", RequestParams(), false},
        {"history with all defaults", RequestParams(8), true},
        {"wrong order", RequestParams(8, EIntervalTick, 1, S_to, S_from, false), false},
        {"wrong order beside synchronization", RequestParams(12, EIntervalTick, 1, S_to, S_from, false),
         false},
        {"wrong order without history", RequestParams(7, EIntervalEmpty, 0, S_to, S_from, false), true},
        {"minutes at the limit", HistoryOf(3, 59), true},
        {"minutes over it", HistoryOf(3, 60), false},
        {"no multiplicity", HistoryOf(3, 0), false},
        {"no interval", HistoryOf(0, 1), false},
        {"many ticks", HistoryOf(1, 4294967295U), true},
        {"an unknown interval", HistoryOf(9, 2), false},
    };
    for (const auto& [what, params, valid] : cases) {
        SCOPED_TRACE(what);
        EXPECT_EQ(params.IsValid(), valid);
    }
}

TEST(RequestParamsTest, StoredFormReadsBack)
{
    const RequestParams written(13, EIntervalMinute, 15, NDateTime(2021, 3, 1, 9, 30, 0, 7), S_to, true);
    Settings settings;
    const ParamsBase& base = written;
    base.SerializeState(settings);
    EXPECT_EQ(static_cast<unsigned int>(settings["KindData"]), 13U);
    EXPECT_EQ(static_cast<unsigned int>(settings["Interval"]), 3U);
    EXPECT_EQ(static_cast<unsigned int>(settings["Multipl"]), 15U);
    EXPECT_EQ(static_cast<unsigned int>(settings["From"]["Millisecond"]), 7U);
    EXPECT_EQ(static_cast<double>(settings["To"]["DateTime"]), 44260.0);
    EXPECT_TRUE(static_cast<bool>(settings["DataOper"]));

    const RequestParams read(settings);
    EXPECT_EQ(read.GetKindData(), 13U);
    EXPECT_EQ(read.GetInterval(), EIntervalMinute);
    EXPECT_EQ(read.GetMultiplicity(), 15U);
    EXPECT_TRUE(read.GetDates().from == written.GetDates().from);
    EXPECT_TRUE(read.GetDates().to == written.GetDates().to);
    EXPECT_TRUE(read.NeedsDataOperationInfo());
    EXPECT_FALSE(RequestParams(Settings()).IsValid());
}
