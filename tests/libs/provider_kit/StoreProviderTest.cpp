#include "provider_kit/StoreProvider.h"

#include "StoreTestTools.h"
#include "assets/AssetParams.h"
#include "assets/AssetsGroup.h"
#include "contract_kit/TestMediator.h"
#include "folding/FoldingTestTools.h"
#include "modules/RequestParams.h"
#include "modules/Subscribe.h"
#include "provider_kit/DamagedData.h"
#include "support/BlockTools.h"
#include "support/CandlesConsumer.h"
#include "support/Testing.h"

namespace {

constexpr const char* S_isin = "PLTEST000001";

/// All rows folded at once, those of candles longer than a day by way of days.
std::string FoldOfAll(IntervalAndMultiplicity a_interval, std::size_t a_rows)
{
    History all = TickMaker::Rows(0, a_rows);
    const auto fold = [&](IntervalAndMultiplicity a_candles) {
        AggregatorWrapper wrapper(TickMaker::Instrument(S_isin).series, ELastRecordTime,
                                  a_candles.GetInterval(),
                                  static_cast<unsigned short>(a_candles.GetMultiplicity()));
        EXPECT_TRUE(wrapper.AgregateHistory(all));
    };
    const IntervalAndMultiplicity asked = SubscriptionCandles::IntervalToAsk(a_interval);
    fold(asked);
    if (!asked.Equals(a_interval))
        fold(a_interval);
    return BytesOf(all);
}

RequestParams RequestOf(unsigned int a_kinds, IntervalAndMultiplicity a_interval = {EIntervalTick, 1},
                        bool a_operations = false)
{
    return {a_kinds,
            a_interval.GetInterval(),
            a_interval.GetMultiplicity(),
            NDateTime(1990, 1, 1),
            NDateTime(2099, 12, 31),
            a_operations};
}

/// A subscription of everything that makes candles, over rows that begin with a_there ones.
struct Subscribed {
    Subscribed(IntervalAndMultiplicity a_interval, std::size_t a_there)
        : consumer(TickMaker::Instrument(S_isin).series, a_interval),
          m_request(RequestOf(ParamsBase::S_kindDataHistory | ParamsBase::S_kindDataSynchro |
                                  ParamsBase::S_kindDataRecord | ParamsBase::S_kindDataCS,
                              SubscriptionCandles::IntervalToAsk(a_interval)))
    {
        quotes.AddTicks(S_isin, a_there);
        quotes.Connect();
        consumer.Open(1, m_request);
    }
    void Start()
    {
        EXPECT_TRUE(quotes.provider.StartSubscription(
            {&consumer, 1, *quotes.provider.GetAssetByIsin(S_isin), m_request}));
    }
    void ExpectFoldOf(const std::string& a_expected, std::size_t a_rows)
    {
        EXPECT_TRUE(consumer.WaitForTime(TickMaker::TimeOf(a_rows - 1)));
        quotes.provider.StopWork();
        EXPECT_EQ(consumer.Violations(), std::vector<std::string>());
        EXPECT_TRUE(consumer.AllFitted());
        EXPECT_TRUE(BytesOf(consumer.Candles()) == a_expected);
    }

    CandlesConsumer consumer; // before the provider
    StoreQuotes quotes;

private:
    const RequestParams m_request;
};

class StoreProviderTest : public testing::Test {
protected:
    Asset TheAsset() { return *m_quotes.provider.GetAssetByIsin(S_isin); }
    bool Start(CheckingConsumer& a_consumer, unsigned int a_number, const RequestParams& a_request)
    {
        a_consumer.Open(a_number, a_request);
        return m_quotes.provider.StartSubscription({&a_consumer, a_number, TheAsset(), a_request});
    }

    TestMediator m_mediator;
    CheckingConsumer m_consumer; // before the provider
    StoreQuotes m_quotes;
};

} // namespace

// Whatever is there at the start, whatever comes when, whatever breaks: the candles are those of all rows folded at
// once.
TEST(StoreProviderLawTest, WhatAConsumerBuildsIsOneFoldOfAllRows)
{
    const TestMediator mediator;
    constexpr std::size_t rows = 12 * TickMaker::S_rowsPerDay - 3;
    std::mt19937 random(11);
    for (const IntervalAndMultiplicity interval :
         {IntervalAndMultiplicity(EIntervalTick, 1), IntervalAndMultiplicity(EIntervalTick, 3),
          IntervalAndMultiplicity(EIntervalMinute, 1), IntervalAndMultiplicity(EIntervalHour, 1),
          IntervalAndMultiplicity(EIntervalDay, 1), IntervalAndMultiplicity(EIntervalWeek, 1)}) {
        const std::string expected = FoldOfAll(interval, rows);
        for (unsigned int round = 0; round < 25; ++round) {
            SCOPED_TRACE(testing::Message() << interval.GetInterval() << ' ' << interval.GetMultiplicity()
                                            << " round " << round);
            std::size_t there = round == 0 ? 0 : random() % rows;
            Subscribed subscribed(interval, there);
            StoreQuotes& quotes = subscribed.quotes;
            subscribed.Start();
            while (there < rows) {
                const std::size_t count = std::min<std::size_t>(rows - there, 1 + random() % 60);
                quotes.AddTicks(S_isin, count);
                there += count;
                switch (random() % 6) {
                case 0:
                    quotes.store.Break(static_cast<unsigned int>(random() % 12));
                    break;
                case 1:
                    quotes.store.Restore();
                    break;
                case 2:
                    quotes.provider.SwitchConnection(false);
                    quotes.provider.SwitchConnection(true);
                    break;
                default:
                    std::this_thread::yield();
                }
            }
            quotes.store.Restore();
            subscribed.ExpectFoldOf(expected, rows);
        }
    }
}

// A store that fails without a word is asked again by itself, and nothing of what it gave meanwhile is passed on.
TEST(StoreProviderLawTest, AStoreThatStumblesIsAskedAgain)
{
    const TestMediator mediator;
    const std::pair<const char*, void (*)(History&)> faults[] = {
        {"raises", [](History&) { throw std::runtime_error("stumbled"); }},
        {"raises what is no exception", [](History&) { throw 7; }},
        {"nothing",
         [](History& a_rows) {
             a_rows = History(std::set<ESeriesId>{Price, Volume}, EIntervalTick, 1);
         }},
        {"a short column", [](History& a_rows) { a_rows.begin()->second.pop_back(); }},
        {"a column less",
         [](History& a_rows) {
             a_rows =
                 History(EIntervalTick, 1, std::vector<NDateTime>(a_rows.TimeSeries()), {*a_rows.begin()});
         }},
        {"a row too many",
         [](History& a_rows) {
             Record more = a_rows.GetLastRecord();
             more.SetTime(NDateTime(2030, 1, 1));
             a_rows.AddData(more);
         }},
        {"times that fall", [](History& a_rows) {
             std::vector<NDateTime> times(a_rows.TimeSeries());
             times.back() = NDateTime(1999, 1, 1);
             if (times.size() == 1)
                 times.back() = NDateTime(1999, 13, 1);
             a_rows = History(EIntervalTick, 1, std::move(times), {a_rows.begin(), a_rows.end()});
         }}};
    constexpr std::size_t rows = 3 * TickMaker::S_rowsPerDay;
    constexpr IntervalAndMultiplicity interval(EIntervalHour, 1);
    const std::string expected = FoldOfAll(interval, rows);
    for (const auto& [name, fault] : faults) {
        SCOPED_TRACE(name);
        Subscribed subscribed(interval, rows / 2);
        int reading = 0;
        subscribed.quotes.store.SetSpoiler([&, fault = fault](History& a_rows) {
            if (++reading % 5 == 1) // a step reads less often than that, so each comes to its end
                fault(a_rows);
        });
        subscribed.Start();
        ASSERT_TRUE(subscribed.consumer.WaitFor(1, CheckingConsumer::ESynchronization));
        subscribed.quotes.AddTicks(S_isin, rows - rows / 2);
        subscribed.ExpectFoldOf(expected, rows);
    }
}

TEST_F(StoreProviderTest, AHistoryOfManyPartsIsWholeAndLetsOthersIn)
{
    constexpr std::size_t rows = 50'000;
    m_quotes.AddTicks(S_isin, rows);
    m_quotes.AddTicks("PLTEST000002", 1);
    m_quotes.Connect();
    // A long history that waits in its first part doesn't hold up what is live for another.
    std::atomic<bool> held = true;
    CheckingConsumer holding;
    holding.SetReaction(
        [&](unsigned int /*a_number*/, CheckingConsumer::EEvent /*a_event*/) { held.wait(true); });
    ASSERT_TRUE(Start(m_consumer, 1, RequestOf(ParamsBase::S_kindDataRecord)));
    ASSERT_TRUE(Start(m_consumer, 2, RequestOf(ParamsBase::S_kindDataHistory)));
    ASSERT_TRUE(m_consumer.WaitForEnd(2));
    EXPECT_EQ(m_consumer.HistoryRows(2), rows);
    ASSERT_TRUE(Start(holding, 1, RequestOf(ParamsBase::S_kindDataHistory)));
    ASSERT_TRUE(holding.WaitForAny(1));
    m_quotes.AddTicks(S_isin, 1);
    EXPECT_TRUE(m_consumer.WaitFor(1, CheckingConsumer::ERecord));
    held = false;
    held.notify_all();
    EXPECT_TRUE(holding.WaitForEnd(1));
    EXPECT_EQ(m_consumer.Violations(), std::vector<std::string>());
    m_quotes.provider.StopWork();
}

// A server may hang: whoever starts a subscription, such as the main thread, doesn't wait for it.
TEST(StoreProviderThreadTest, AStartAsksTheStoreNothing)
{
    class WatchingStore : public MemoryStore {
    public:
        std::uint64_t GetRowCount(const std::string& a_isin) override
        {
            EXPECT_NE(std::this_thread::get_id(), m_caller);
            const std::uint64_t count = MemoryStore::GetRowCount(a_isin);
            counted = true;
            counted.notify_all();
            return count;
        }
        std::atomic<bool> counted = false;

    private:
        const std::thread::id m_caller = std::this_thread::get_id();
    };
    const TestMediator mediator;
    CheckingConsumer consumer;
    auto watching = std::make_unique<WatchingStore>();
    WatchingStore& store = *watching;
    StoreQuotes quotes(std::move(watching));
    quotes.AddTicks(S_isin, 5);
    quotes.Connect();
    const RequestParams request = RequestOf(ParamsBase::S_kindDataRecord);
    consumer.Open(1, request);
    ASSERT_TRUE(
        quotes.provider.StartSubscription({&consumer, 1, *quotes.provider.GetAssetByIsin(S_isin), request}));
    store.counted.wait(false);
    quotes.AddTicks(S_isin, 3);
    EXPECT_TRUE(consumer.WaitFor(1, CheckingConsumer::ERecord, 3))
        << "those behind the ones that were counted";
    quotes.provider.StopWork();
    EXPECT_EQ(consumer.Count(1, CheckingConsumer::ERecord), 3U);
    EXPECT_EQ(consumer.Violations(), std::vector<std::string>());
}

TEST_F(StoreProviderTest, DamagedDataEndWhoeverComesUponThem)
{
    m_quotes.AddTicks(S_isin, 5);
    m_quotes.Connect();
    m_quotes.store.SetSpoiler([](History& a_rows) {
        if (a_rows.TimeSeries().back() == TickMaker::TimeOf(5))
            throw DamagedData("wiersz 5");
    });
    ASSERT_TRUE(Start(m_consumer, 1, RequestOf(ParamsBase::S_kindDataRecord)));
    ASSERT_TRUE(Start(m_consumer, 2, RequestOf(ParamsBase::S_kindDataHistory)));
    ASSERT_TRUE(m_consumer.WaitForEnd(2));
    m_quotes.AddTicks(S_isin, 1);
    ASSERT_TRUE(m_consumer.WaitForEnd(1));
    EXPECT_EQ(m_consumer.Events(1), std::vector{CheckingConsumer::EEnded});
    ASSERT_TRUE(Start(m_consumer, 3, RequestOf(ParamsBase::S_kindDataHistory | ParamsBase::S_kindDataCS)));
    ASSERT_TRUE(m_consumer.WaitForEnd(3));
    EXPECT_EQ(m_consumer.Events(3), std::vector{CheckingConsumer::ERefused});
    EXPECT_EQ(m_consumer.HistoryRows(2), 5U);
    EXPECT_EQ(m_quotes.provider.GetStatusLevel(), EStatusLevelProblem);
    EXPECT_NE(m_quotes.provider.GetStatusToolTip().find(L"wiersz 5"), std::wstring::npos);
}

// Days of a request are whole, and none is too late.
TEST_F(StoreProviderTest, DaysOfARequest)
{
    constexpr std::size_t day = TickMaker::S_rowsPerDay;
    m_quotes.AddTicks(S_isin, 5 * day);
    m_quotes.Connect();
    unsigned int number = 0;
    for (const auto& [first, last, rows] :
         {std::tuple(TickMaker::TimeOf(day), TickMaker::TimeOf(2 * day), 2 * day),
          std::tuple(NDateTime(1990, 1, 1), NDateTime(9999, 12, 31), 5 * day)}) {
        ASSERT_TRUE(Start(m_consumer, ++number,
                          {ParamsBase::S_kindDataHistory, EIntervalTick, 1, first, last, false}));
        ASSERT_TRUE(m_consumer.WaitForEnd(number));
        EXPECT_EQ(m_consumer.HistoryRows(number), rows);
    }
}

TEST_F(StoreProviderTest, WhatCannotBeServedIsRefused)
{
    StoreInstrument daily = TickMaker::Instrument(S_isin);
    daily.interval.Set(EIntervalDay, 1);
    daily.series.insert({DSProp(IntervalOpen), DSProp(IntervalMax), DSProp(IntervalMin)});
    daily.live = false;
    m_quotes.store.AddInstrument(daily);
    StoreInstrument outside = TickMaker::Instrument("../outside");
    m_quotes.store.AddInstrument(outside);
    m_quotes.Connect();
    EXPECT_EQ(m_quotes.provider.GetAssets().size(), 1U) << "one isn't a name for a folder";
    EXPECT_NE(m_quotes.provider.GetStatusToolTip().find(L"../outside"), std::wstring::npos);
    EXPECT_EQ(m_quotes.provider.GetAssetSeries(TheAsset()).size(), 2U);
    EXPECT_EQ(m_quotes.provider.GetAssetSeriesAlternative(TheAsset()).size(), 5U);
    ASSERT_TRUE(Start(m_consumer, 1, RequestOf(ParamsBase::S_kindDataRecord)));
    ASSERT_TRUE(Start(m_consumer, 2, RequestOf(ParamsBase::S_kindDataHistory, {EIntervalMinute, 1})));
    for (const unsigned int number : {1U, 2U}) {
        ASSERT_TRUE(m_consumer.WaitForEnd(number));
        EXPECT_EQ(m_consumer.Events(number), std::vector{CheckingConsumer::ERefused});
    }
}

// What is saved of a group is its number.
TEST_F(StoreProviderTest, AGroupKeepsItsNumberWhateverOthersCome)
{
    m_quotes.AddTicks(S_isin, 1);
    StoreInstrument first = TickMaker::Instrument("PLTEST000002");
    first.groups = {L"Zagranica"};
    m_quotes.store.AddInstrument(first);
    m_quotes.Connect();
    const AssetsGroupId saved = m_quotes.provider.GetAssetsGroups().back().GetId();
    first.isin = "PLTEST000003";
    first.groups = {L"Akcje"};
    m_quotes.store.AddInstrument(first);
    while (m_quotes.provider.GetAssetsGroups().size() < 3)
        std::this_thread::yield();
    const auto found = m_quotes.provider.GetAssetsGroupForAssetsGroupId(saved);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->GetName(), L"Zagranica");
}

TEST_F(StoreProviderTest, ASymbolThatGoesEndsItsSubscriptions)
{
    m_quotes.AddTicks(S_isin, 10);
    m_quotes.Connect();
    ASSERT_TRUE(Start(m_consumer, 1, RequestOf(15)));
    ASSERT_TRUE(m_consumer.WaitFor(1, CheckingConsumer::ESynchronization));
    m_quotes.store.RemoveInstrument(S_isin);
    ASSERT_TRUE(m_consumer.WaitForEnd(1));
    EXPECT_EQ(m_consumer.Count(1, CheckingConsumer::EDeleted), 1U);
    EXPECT_EQ(m_consumer.Events(1).back(), CheckingConsumer::EEnded);
    EXPECT_EQ(m_quotes.provider.GetAssetByIsin(S_isin), nullptr);
}

// Also where nobody was there to be told the end.
TEST_F(StoreProviderTest, RowsThatBecameOthersLeaveNothingOfTheOldOnes)
{
    class StateConsumer : public CheckingConsumer {
    public:
        void ProcessCurrentState(unsigned int a_requestId, const CurrentState& a_state) override
        {
            lastMax = a_state.find(Max)->second.value;
            CheckingConsumer::ProcessCurrentState(a_requestId, a_state);
        }
        std::atomic<double> lastMax = 0.0;
    } consumer;
    m_quotes.AddTicks(S_isin, 10);
    m_quotes.AddTicks("PLTEST000002", 1);
    m_quotes.Connect();
    ASSERT_TRUE(Start(consumer, 1, RequestOf(ParamsBase::S_kindDataCS)));
    ASSERT_TRUE(consumer.WaitFor(1, CheckingConsumer::ECurrentState));
    m_quotes.AddTicks(S_isin, 1);
    ASSERT_TRUE(consumer.WaitFor(1, CheckingConsumer::ECurrentState, 2));
    m_quotes.provider.StopSubscription({&consumer, 1, TheAsset(), std::nullopt});
    consumer.Close(1);

    StoreInstrument other = TickMaker::Instrument(S_isin);
    other.generation = 1;
    m_quotes.store.AddInstrument(other);
    const auto waitForThePast = [&](unsigned int a_number) { // what was to be done before has been done then
        const RequestParams request = RequestOf(ParamsBase::S_kindDataHistory);
        m_consumer.Open(a_number, request);
        return m_quotes.provider.StartSubscription(
                   {&m_consumer, a_number, *m_quotes.provider.GetAssetByIsin("PLTEST000002"), request}) &&
               m_consumer.WaitForEnd(a_number);
    };
    ASSERT_TRUE(waitForThePast(1));
    EXPECT_FALSE(m_quotes.provider.GetAssetSessionDate(TheAsset()));
    ASSERT_TRUE(Start(consumer, 2, RequestOf(ParamsBase::S_kindDataCS)));
    ASSERT_TRUE(waitForThePast(2));
    m_quotes.store.AddRow(S_isin, TickMaker::TimeOf(0), {5.0, 1.0});
    ASSERT_TRUE(consumer.WaitFor(2, CheckingConsumer::ECurrentState));
    EXPECT_EQ(consumer.lastMax, 5.0);
    m_quotes.provider.StopWork();
}

TEST_F(StoreProviderTest, ChangedOperationsComeAgainAndEqualOnesDont)
{
    m_quotes.AddTicks(S_isin, 10);
    m_quotes.Connect();
    ASSERT_TRUE(Start(m_consumer, 1, RequestOf(15, {EIntervalTick, 1}, true)));
    ASSERT_TRUE(m_consumer.WaitFor(1, CheckingConsumer::ESynchronization));
    m_quotes.store.Restore(); // as after a break that nobody saw
    ASSERT_TRUE(m_consumer.WaitFor(1, CheckingConsumer::ESynchronization, 2));
    EXPECT_EQ(m_consumer.Count(1, CheckingConsumer::EOperations), 1U);
    HistoryOperations operations;
    ASSERT_TRUE(operations.Parse("3\n9,200102,7,0.9"));
    m_quotes.store.SetOperations(S_isin, operations);
    EXPECT_TRUE(m_consumer.WaitFor(1, CheckingConsumer::EOperations, 2));
}
