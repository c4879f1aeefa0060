#include "modules/RequestParams.h"

#include "support/StoredForm.h"

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

TEST(RequestParamsTest, StoredForm)
{
    ExpectStoredAs(RequestParams(13, EIntervalMinute, 15, NDateTime(2021, 3, 1, 9, 0, 0, 0), S_to, true),
                   "<settings><KindData>13</KindData><Interval>3</Interval><Multipl>15</Multipl>"
                   "<From><DateTime>44256.375</DateTime><Millisecond>0</Millisecond></From>"
                   "<To><DateTime>44260</DateTime><Millisecond>0</Millisecond></To>"
                   "<DataOper>true</DataOper></settings>");
    EXPECT_FALSE(RequestParams(Settings()).IsValid());
}
