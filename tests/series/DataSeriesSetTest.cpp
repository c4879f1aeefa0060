#include "series/DataSeriesSet.h"

#include "aggregation/Aggregator.h"
#include "platform/CodePage.h"
#include "series/History.h"
#include "series/RandomTicks.h"
#include "series/Synchronization.h"
#include "support/Testing.h"
#include "time/KalventoException.h"

using namespace kalvento::tests;

namespace {

using namespace std::string_view_literals;

DataSeriesSet ReadBack(std::string_view a_bytes)
{
    std::istringstream stream{std::string(a_bytes)};
    return DataSeriesSet(stream);
}

std::string Count(std::uint64_t a_count)
{
    return std::string(reinterpret_cast<const char*>(&a_count), sizeof a_count);
}

// One tick of 2021-03-04 09:30:00, counter 7: price 10.5, volume 300.
constexpr std::string_view S_block = "\x01\x00\x00\x00"                 // version
                                     "\x02\x00\x00\x00\x00\x00\x00\x00" // columns
                                     "\x02\x00\x00\x00"                 // Price
                                     "\x01\x00\x00\x00\x00\x00\x00\x00"
                                     "\x00\x00\x00\x00\x00\x00\x25\x40"
                                     "\x03\x00\x00\x00" // Volume
                                     "\x01\x00\x00\x00\x00\x00\x00\x00"
                                     "\x00\x00\x00\x00\x00\xc0\x72\x40"
                                     "\x01\x00\x00\x00\x00\x00\x00\x00"    // times
                                     "\x0b\xab\xaa\xaa\x6c\x9c\xe5\x40"    // day number 44259.395833334034
                                     "\x00\x00\x00\x00\x00\x00\x00\x00"    // valid, reserved
                                     "\xe5\x37\x24\x79\xc0\x01\xc0\x0f"    // calendar, clock
                                     "\x01\x00\x00\x00\x01\x00\x00\x00"sv; // tick, 1

} // namespace

TEST(DataSeriesSetTest, BlockIsTheStoredFormByteForByte)
{
    DataSeriesSet set(EIntervalTick, 1);
    set.AddNewSeries(Volume, {300.0});
    set.AddNewSeries(Price, {10.5});
    set.SetNewTimes({At(9, 30, 0, 7)});
    EXPECT_EQ(S_block, BytesOf(set));
    EXPECT_TRUE(ReadBack(S_block).IsValid());
}

TEST(DataSeriesSetTest, ReadGivesBackEveryBit)
{
    std::mt19937_64 random(17);
    for (const std::size_t rows : {0U, 1U, 3U, 32767U, 32768U, 32769U, 70000U}) {
        SCOPED_TRACE(rows);
        DataSeriesSet set(EIntervalMinute, 5);
        for (const ESeriesId id : {Price, Indicator, ESeriesId(0x84222325U)}) {
            std::vector<double> values(rows);
            for (double& value : values)
                value = std::bit_cast<double>(random()); // NaNs with a load, infinities, denormals
            set.AddNewSeries(id, values);
        }
        std::vector<NDateTime> times(rows);
        for (NDateTime& time : times)
            for (std::size_t word = 0; word < sizeof(NDateTime); word += sizeof(std::uint64_t)) {
                const std::uint64_t bits = random(); // the reserved bytes too
                std::memcpy(reinterpret_cast<char*>(&time) + word, &bits, sizeof bits);
            }
        set.SetNewTimes(times);

        const std::string bytes = BytesOf(set);
        EXPECT_EQ(bytes, BytesOf(ReadBack(bytes)));
        std::istringstream forHistory(bytes);
        EXPECT_EQ(bytes, BytesOf(History(forHistory)));
    }
}

TEST(DataSeriesSetTest, TruncatedBlockReadsAsZerosBehindTheCut)
{
    const std::string whole = BytesOf(RandomTicks(5, 1));
    for (std::size_t length = sizeof(std::int32_t); length < whole.size(); ++length) {
        SCOPED_TRACE(length);
        const DataSeriesSet set = ReadBack(std::string_view(whole).substr(0, length));
        EXPECT_EQ(length > whole.size() - 4, set.IsValid()) << "only zeros are missing from the multiplicity";
        // As long as the counts were whole, the shape is that of the whole block and its missing bytes are zeros.
        if (length >= whole.size() - 8 - 5 * sizeof(NDateTime)) {
            EXPECT_EQ(whole.substr(0, length) + std::string(whole.size() - length, '\0'), BytesOf(set));
        }
    }
    EXPECT_THROW(ReadBack({}), KalventoException);
}

TEST(DataSeriesSetTest, LyingCountsTakeNoMemory)
{
    const std::string version("\x01\x00\x00\x00", 4);
    const std::string price("\x02\x00\x00\x00", 4);
    const std::uint64_t huge = std::uint64_t(1) << 56U; // fits a vector's length, and no memory

    const DataSeriesSet columns = ReadBack(version + Count(huge));
    EXPECT_LE(columns.SeriesCount(), 64U);
    const DataSeriesSet values = ReadBack(version + Count(1) + price + Count(huge) + std::string(16, '\x01'));
    ASSERT_EQ(1U, values.SeriesCount());
    EXPECT_LE(values.begin()->second.size(), 32768U + 2);
    EXPECT_NE(0.0, values.begin()->second[1]);
    EXPECT_EQ(0.0, values.begin()->second[2]);
    const DataSeriesSet times = ReadBack(version + Count(0) + Count(huge));
    EXPECT_LE(times.GetRecordsCount(), 32768U);
    EXPECT_FALSE(times.IsValid());

    const std::uint64_t beyond = std::numeric_limits<std::uint64_t>::max();
    EXPECT_THROW(ReadBack(version + Count(beyond)), std::length_error);
    EXPECT_THROW(ReadBack(version + Count(1) + price + Count(beyond)), std::length_error);
    EXPECT_THROW(ReadBack(version + Count(0) + Count(beyond)), std::length_error);
}

TEST(DataSeriesSetTest, ReadKeepsColumnsAndReplacesTheRest)
{
    DataSeriesSet set = RandomTicks(3, 1);
    std::istringstream stream{std::string(S_block)};
    set.Read(stream);
    EXPECT_EQ(4U, set.SeriesCount());
    EXPECT_EQ(3U, set.find(Price)->second.size());
    EXPECT_EQ(1U, set.GetRecordsCount());

    std::istringstream later(std::string("\x02\x00\x00\x00", 4) + std::string(S_block.substr(4)));
    EXPECT_NE(std::string::npos,
              RaisedText<KalventoException>([&] { set.Read(later); }).find("Nieznany typ wersji"));
}

TEST(DataSeriesSetTest, RowsRunStrictlyUpward)
{
    DataSeriesSet set(EIntervalTick, 1, std::set<ESeriesId>{Price});
    Record record = set.GetEmptyRecord();
    EXPECT_TRUE(set.AddData(record)) << "an empty set takes any time";
    const auto tryAt = [&](const NDateTime& a_time) {
        record.SetTime(a_time);
        return set.AddData(record);
    };
    EXPECT_TRUE(tryAt(At(10, 0, 0, 5)));
    EXPECT_FALSE(tryAt(At(10, 0, 0, 5)));
    EXPECT_FALSE(tryAt(At(10, 0, 0, 4)));
    EXPECT_FALSE(tryAt(At(9, 59, 59, 9)));
    EXPECT_TRUE(tryAt(At(10, 0, 0, 6))) << "one second, later counter";
    EXPECT_TRUE(tryAt(At(10, 0, 1)));
    EXPECT_EQ(4U, set.GetRecordsCount());
    EXPECT_EQ(4U, set.begin()->second.size());

    EXPECT_FALSE(set.AddData(Record(std::set<ESeriesId>{Price, Volume})));
    Record other(std::set<ESeriesId>{Bid1});
    other.SetData(Bid1, 3.5);
    other.SetTime(At(11, 0));
    EXPECT_TRUE(set.AddData(other)) << "values go by position";
    EXPECT_EQ(3.5, set.find(Price)->second.back());
}

TEST(DataSeriesSetTest, NewSeriesReplaceOrPrepend)
{
    DataSeriesSet set(EIntervalTick, 1, std::set<ESeriesId>{Price, Bid1});
    const std::vector<double> values{1.0, 2.0};
    EXPECT_FALSE(set.AddNewSeries(Time, values));
    EXPECT_FALSE(set.AddNewSeries(Time, values.begin(), values.end()));
    EXPECT_TRUE(set.AddNewSeries(Price, {9.0}));
    EXPECT_TRUE(set.AddNewSeries(Price, values.begin(), values.end()));
    EXPECT_EQ((std::vector<double>{1.0, 2.0, 9.0}), set.find(Price)->second);
    EXPECT_TRUE(set.AddNewSeries(Price, values));
    EXPECT_EQ(values, set.find(Price)->second);
    EXPECT_TRUE(set.AddNewSeries(Volume, values.begin(), values.end()));
    EXPECT_TRUE(set.AddNewSeries(Max, set.find(Price)->second)) << "a column of the set itself";
    EXPECT_EQ(values, set.find(Max)->second);
    std::vector<ESeriesId> order;
    for (const DataSeriesSet::Column& column : set)
        order.push_back(column.first);
    EXPECT_EQ((std::vector<ESeriesId>{Price, Volume, Max, Bid1}), order);
}

TEST(DataSeriesSetTest, LastAndEmptyRecords)
{
    const DataSeriesSet ticks = RandomTicks(3, 1);
    EXPECT_EQ(ticks.find(Volume)->second.back(), ticks.GetLastRecord().find(Volume)->second);
    EXPECT_EQ(ticks.TimeSeries().back(), ticks.GetLastRecord().GetTime());
    const DataSeriesSet bare(EIntervalTick, 1);
    EXPECT_STREQ("Obiekt nie zawiera danych",
                 RaisedText<std::exception>([&] { bare.GetLastRecord(); }).c_str());
    EXPECT_EQ("zbiór serii jest pusty: a_series"_cp1250,
              RaisedText<std::invalid_argument>([&] { bare.GetEmptyRecord(); }));
    const DataSeriesSet uneven(EIntervalTick, 1, {At(9, 0)}, {{Price, {}}});
    EXPECT_EQ(0.0, uneven.GetLastRecord().find(Price)->second);
}

TEST(DataSeriesSetTest, CandleColumnsComeOnceAndGoTogether)
{
    DataSeriesSet set = RandomTicks(3, 1);
    set.AddAggregationSeries();
    EXPECT_EQ((std::set<ESeriesId>{Price, Volume, IntervalOpen, IntervalMax, IntervalMin}), set.GetSeries());
    EXPECT_EQ((std::vector<double>{0.0, 0.0, 0.0}), set.find(IntervalMax)->second);
    for (const auto& [id, name] :
         {std::pair(IntervalOpen, "open"), {IntervalMax, "max"}, {IntervalMin, "min"}}) {
        DataSeriesSet one = RandomTicks(3, 1);
        one.AddNewSeries(id, {});
        EXPECT_EQ("Obiekt zawiera już serie "_cp1250 + std::string(name),
                  RaisedText<std::runtime_error>([&] { one.AddAggregationSeries(); }));
    }
    set.DeleteAggregationSeries();
    EXPECT_TRUE(SameBits(RandomTicks(3, 1), set));
}

TEST(DataSeriesSetTest, ValidityTable)
{
    const std::set<ESeriesId> tick{Price};
    const std::set<ESeriesId> candle{Price, IntervalOpen, IntervalMax, IntervalMin};
    const std::set<ESeriesId> half{Price, IntervalOpen, IntervalMin};
    const std::tuple<EInterval, unsigned int, std::set<ESeriesId>, bool> table[] = {
        {EIntervalTick, 1, tick, true},      {EIntervalTick, 1, half, false},
        {EIntervalTick, 2, tick, false},     {EIntervalTick, 0xFFFFFFFFU, candle, true},
        {EIntervalMinute, 5, tick, false},   {EIntervalMinute, 5, half, false},
        {EIntervalMinute, 59, candle, true}, {EIntervalMinute, 60, candle, false},
        {EIntervalMonth, 12, candle, false}, {EIntervalEmpty, 1, candle, false},
        {EIntervalTick, 0, tick, false},     {EInterval(9), 2, candle, false},
    };
    for (const auto& [interval, multiplicity, series, valid] : table) {
        SCOPED_TRACE(testing::Message() << interval << " x " << multiplicity << ", " << series.size());
        DataSeriesSet set(interval, multiplicity, series);
        EXPECT_EQ(valid, set.IsValid());
        set.SetNewTimes({At(9, 0)});
        EXPECT_FALSE(set.IsValid()) << "columns shorter than the times";
    }
}

TEST(DataSeriesSetTest, UnfitColumnsAreRefusedBeforeTheyAreTouched)
{
    Aggregator aggregator(EIntervalMinute, 1, ELastRecordTime, {EAggrTypeOhlc, EAggrTypeSum});
    const auto refuses = [&](DataSeriesSet a_set, std::size_t a_columnCount) {
        const std::string before = BytesOf(a_set);
        std::vector<double*> columns(a_columnCount);
        EXPECT_FALSE(a_set.AgregateData(Price, aggregator, columns));
        return before == BytesOf(a_set);
    };
    DataSeriesSet candles = RandomTicks(3, 1);
    candles.AddAggregationSeries();
    EXPECT_TRUE(refuses(candles, 4)) << "too few fields";
    EXPECT_TRUE(refuses(candles, 6)) << "too many fields";
    EXPECT_TRUE(refuses(RandomTicks(3, 1), 2)) << "no candle columns";
    // The main series twice; a candle series twice and another missing.
    for (const auto& series : {std::vector{Price, Price, IntervalOpen, IntervalMax, IntervalMin},
                               {Price, Volume, IntervalOpen, IntervalOpen, IntervalMin}}) {
        DataSeriesSet::Columns columns;
        for (const ESeriesId id : series)
            columns.emplace_back(id, std::vector<double>(3));
        EXPECT_TRUE(refuses({EIntervalTick, 1, std::vector(candles.TimeSeries()), std::move(columns)}, 5));
    }
    candles.AddNewSeries(Volume, {1.0, 2.0});
    EXPECT_TRUE(refuses(candles, 5)) << "a short column";
}
