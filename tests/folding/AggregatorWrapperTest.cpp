#include "folding/AggregatorWrapper.h"

#include "folding/AggregatorTools.h"
#include "folding/FoldingTestTools.h"
#include "platform/CodePage.h"
#include "series/Synchronization.h"
#include "settings/Settings.h"
#include "time/KalventoException.h"

#include <new>

using namespace kalvento::tests;

namespace {

std::size_t S_allocations = 0;

} // namespace

// Counts every allocation of this program, so that the live path can be shown to make none. Never inlined: the compiler
// would see malloc beside delete and take it for a mismatch.
[[gnu::noinline]] void* operator new(std::size_t a_size)
{
    ++S_allocations;
    if (void* const memory = std::malloc(a_size))
        return memory;
    throw std::bad_alloc();
}
[[gnu::noinline]] void* operator new(std::size_t a_size, const std::nothrow_t& /*a_tag*/) noexcept
{
    ++S_allocations;
    return std::malloc(a_size);
}
[[gnu::noinline]] void operator delete(void* a_memory) noexcept
{
    std::free(a_memory);
}
[[gnu::noinline]] void operator delete(void* a_memory, std::size_t /*a_size*/) noexcept
{
    std::free(a_memory);
}

namespace {

std::set<DSProp> Properties()
{
    return {DSProp(Price), DSProp(Volume), DSProp(Lop), DSProp(Bid1)};
}

History MakeHistory(std::size_t a_count)
{
    return HistoryOf(RandomTicks(a_count, 8, {Lop, Bid1}));
}

AggregatorWrapper MakeWrapper(EInterval a_interval, unsigned short a_multiplicity)
{
    return {Properties(), EMetaStockWindowEnd, a_interval, a_multiplicity};
}

} // namespace

TEST(AggregatorToolsTest, TypesStandMainFirst)
{
    const DSProp mainBid(Bid1, EAggrTypeOhlcLast, L"", EPrecision2);
    const DSProp summedLop(Lop, EAggrTypeSum, L"", EPrecision0);
    using Types = std::vector<EAggrType>;
    EXPECT_EQ((Types{EAggrTypeOhlc, EAggrTypeSum}),
              AggregatorTools::PrepareAggregationTypes({DSProp(Price), DSProp(Volume)}));
    EXPECT_EQ((Types{EAggrTypeOhlcLast, EAggrTypeSum, EAggrTypeSum}),
              AggregatorTools::PrepareAggregationTypes({DSProp(Volume), summedLop, mainBid}));
    // Two main types: the later one's type, the earlier one's name.
    const std::set<DSProp> twoMain{DSProp(Price), DSProp(Volume), mainBid};
    EXPECT_EQ((Types{EAggrTypeOhlcLast, EAggrTypeSum, EAggrTypeLast}),
              AggregatorTools::PrepareAggregationTypes(twoMain));
    EXPECT_EQ(Price, AggregatorTools::GetMainAggregationSeries(twoMain).GetSeriesID());
    EXPECT_EQ((Types{EAggrTypeLast, EAggrTypeSum}),
              AggregatorTools::PrepareAggregationTypes({DSProp(Volume), DSProp(Lop)}));
    EXPECT_THROW(AggregatorTools::GetMainAggregationSeries({DSProp(Volume)}), KalventoException);
}

TEST(AggregatorWrapperTest, FailedFoldLeavesFullCandleColumns)
{
    AggregatorWrapper wrapper = MakeWrapper(EIntervalMinute, 1);
    History first = MakeHistory(20);
    ASSERT_TRUE(wrapper.AgregateHistory(first));
    History second = MakeHistory(20);
    EXPECT_FALSE(wrapper.AgregateHistory(second)) << "no SetCurrentRecord since the first";
    EXPECT_EQ(20U, second.GetRecordsCount());
    EXPECT_TRUE(second.GetIntervalData().IsSingleTick());
    EXPECT_EQ(std::vector<double>(20), second.find(IntervalOpen)->second);
    EXPECT_EQ(std::vector<double>(20), second.find(IntervalMin)->second);
    Record live = MakeHistory(1).GetLastRecord();
    bool sameWindow = false;
    EXPECT_FALSE(wrapper.AggregateRecord(live, sameWindow));
    wrapper.ClearLastValue();
    History third = MakeHistory(20);
    EXPECT_TRUE(wrapper.AgregateHistory(third));

    History empty(Properties(), EIntervalTick, 1);
    EXPECT_FALSE(MakeWrapper(EIntervalMinute, 1).AgregateHistory(empty));
    EXPECT_EQ(7U, empty.SeriesCount());
}

TEST(AggregatorWrapperTest, LivePathAllocatesNothing)
{
    std::vector<Record> rows;
    for (std::size_t count = 1; count <= 300; ++count)
        rows.push_back(MakeHistory(count).GetLastRecord());
    AggregatorWrapper wrapper = MakeWrapper(EIntervalMinute, 1);
    Record working(Properties());
    bool sameWindow = false;
    const std::size_t before = S_allocations;
    for (const Record& row : rows) {
        working = row; // the shape shrinks back to that of a tick
        ASSERT_TRUE(wrapper.AggregateRecord(working, sameWindow));
    }
    EXPECT_EQ(before, S_allocations);
    ASSERT_TRUE(wrapper.AggregateRecord(rows[299], sameWindow));
    EXPECT_EQ(before, S_allocations) << "a copied record has the room too";
}

TEST(AggregatorWrapperTest, RefusedRecordsStayAsTheyWere)
{
    AggregatorWrapper wrapper = MakeWrapper(EIntervalMinute, 1);
    bool sameWindow = false;
    const auto refusesTick = [&](Record::Values a_values) {
        const Record::Values before = a_values;
        Record record(At(10, 0), std::move(a_values));
        return !wrapper.AggregateRecord(record, sameWindow) &&
               std::equal(before.begin(), before.end(), record.begin(), record.end());
    };
    EXPECT_TRUE(refusesTick({{Price, 1.0}, {Volume, 1.0}, {Lop, 1.0}}));
    EXPECT_TRUE(refusesTick({{Volume, 1.0}, {Lop, 1.0}, {Bid1, 1.0}, {Bid2, 1.0}}));
    EXPECT_TRUE(refusesTick({{Price, 1.0}, {Price, 2.0}, {Lop, 1.0}, {Bid1, 1.0}}));
    EXPECT_TRUE(refusesTick({{Price, 1.0}, {Lop, 1.0}, {IntervalOpen, 1.0}, {Bid1, 1.0}}));

    const auto refusesCandle = [&](Record::Values a_values) {
        Record record(At(10, 0), std::move(a_values));
        return !wrapper.SetCurrentRecord(record);
    };
    EXPECT_TRUE(refusesCandle({{Price, 1.0}, {Volume, 1.0}, {Lop, 1.0}, {Bid1, 1.0}}));
    EXPECT_TRUE(refusesCandle(
        {{Tko, 1}, {Volume, 1}, {Lop, 1}, {IntervalOpen, 1}, {IntervalMax, 1}, {IntervalMin, 1}, {Bid1, 1}}));
}

TEST(AggregatorWrapperTest, RefusedBlocksStayAsTheyWere)
{
    AggregatorWrapper wrapper = MakeWrapper(EIntervalMinute, 1);
    const std::set<ESeriesId> tick{Price, Volume, Lop, Bid1};
    std::set<ESeriesId> candle = tick;
    candle.insert({IntervalOpen, IntervalMax, IntervalMin});
    const auto refuses = [&](EInterval a_interval, unsigned int a_multiplicity,
                             const std::set<ESeriesId>& a_series) {
        Synchronization synchro(a_interval, a_multiplicity, a_series);
        History history(a_series, a_interval, a_multiplicity);
        const std::string before = BytesOf(synchro);
        return !wrapper.AgregateSynchro(synchro) && !wrapper.AgregateHistory(history) &&
               before == BytesOf(synchro) && before == BytesOf(history);
    };
    EXPECT_TRUE(refuses(EIntervalEmpty, 1, tick));
    EXPECT_TRUE(refuses(EIntervalTick, 0, tick));
    EXPECT_TRUE(refuses(EIntervalHour, 1, candle));
    EXPECT_TRUE(refuses(EIntervalTick, 1, {Price, Volume}));
    EXPECT_TRUE(refuses(EIntervalTick, 1, {Tko, Volume, Lop, Bid1}));

    // Columns shorter than the times must not be read beyond their ends.
    Synchronization uneven(EIntervalTick, 1, {At(9, 0), At(9, 1)},
                           {{Price, {1.0, 2.0}}, {Volume, {1.0}}, {Lop, {}}, {Bid1, {1.0, 2.0}}});
    EXPECT_FALSE(wrapper.AgregateSynchro(uneven));

    // Candle columns are what a history of candles has, and what a snapshot must not have.
    std::vector<NDateTime> times{At(9, 0)};
    DataSeriesSet::Columns columns;
    for (const ESeriesId id : candle)
        columns.emplace_back(id, std::vector<double>{5.0});
    Synchronization synchro(EIntervalMinute, 1, std::vector(times), DataSeriesSet::Columns(columns));
    EXPECT_FALSE(wrapper.AgregateSynchro(synchro));
    History history(EIntervalMinute, 1, std::move(times), std::move(columns));
    EXPECT_TRUE(wrapper.AgregateHistory(history));
}

TEST(AggregatorWrapperTest, CopiesAndMoves)
{
    AggregatorWrapper source = MakeWrapper(EIntervalDay, 1);
    const auto continues = [](AggregatorWrapper& a_wrapper) {
        bool sameWindow = false;
        Record row = MakeHistory(1).GetLastRecord();
        EXPECT_TRUE(a_wrapper.AggregateRecord(row, sameWindow));
        return sameWindow;
    };
    EXPECT_FALSE(continues(source));
    AggregatorWrapper copy(source);
    EXPECT_FALSE(continues(copy)) << "the open candle isn't copied";
    EXPECT_TRUE(continues(source));
    EXPECT_TRUE(copy.HaveTheSameIntevals(source));

    AggregatorWrapper taken(std::move(source));
    EXPECT_TRUE(continues(taken));
    // What was moved from refuses all and crashes nowhere.
    EXPECT_EQ(EIntervalEmpty,
              source.GetOutputInterval()); // NOLINT(bugprone-use-after-move,clang-analyzer-cplusplus.Move)
    bool sameWindow = false;
    Record row = MakeHistory(1).GetLastRecord();
    EXPECT_FALSE(source.AggregateRecord(row, sameWindow)); // NOLINT(clang-analyzer-cplusplus.Move)
    EXPECT_FALSE(source.SetCurrentRecord(row));
    History history = MakeHistory(1);
    EXPECT_FALSE(source.AgregateHistory(history));
    EXPECT_EQ(EIntervalEmpty, AggregatorWrapper(source).GetOutputInterval());
}

TEST(AggregatorWrapperTest, ConstructionRefusesWhatItCannotFold)
{
    const auto construct = [](const std::set<DSProp>& a_properties) {
        AggregatorWrapper(a_properties, ELastRecordTime, EIntervalMinute, 1);
    };
    EXPECT_THROW(construct({}), KalventoException);
    EXPECT_THROW(construct({DSProp(Volume)}), KalventoException);
    EXPECT_EQ("Niepoprawny argument: a_dsProps", RaisedText<std::invalid_argument>([&] {
                  construct({DSProp(Price), DSProp(IntervalMin)});
              }));
    EXPECT_THROW(MakeWrapper(EIntervalMinute, 60), KalventoException);
    EXPECT_THROW(MakeWrapper(EIntervalMinute, 0), KalventoException);
}

TEST(AggregatorWrapperTest, SettingsGiveBackIntervalAndTime)
{
    Settings settings;
    MakeWrapper(EIntervalMinute, 15).SerializeState(settings);
    const AggregatorWrapper read(Properties(), settings);
    EXPECT_EQ(EIntervalMinute, read.GetOutputInterval());
    EXPECT_EQ(15U, read.GetOutputMultiplicity());
    Settings again;
    read.SerializeState(again);
    const int storedTime = again[AggregatorWrapper::XML_AGGREGATION_TIME];
    EXPECT_EQ(EMetaStockWindowEnd, storedTime);
    settings[AggregatorWrapper::XML_MULTIPLICITY] = 65536U + 5U;
    EXPECT_EQ(5U, AggregatorWrapper(Properties(), settings).GetOutputMultiplicity());
}
