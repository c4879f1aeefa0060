#pragma once

#include "contract_kit/FeedProvider.h"
#include "contract_kit/TestMediator.h"
#include "folding/AggregatorWrapper.h"
#include "modules/RequestParams.h"
#include "modules/Subscribe.h"
#include "series/History.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <set>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

// What a consumer owes its providers, as tests that any consumer can be run against. A test program includes this
// header once and names its consumers by INSTANTIATE_TEST_SUITE_P(..., ConsumerContract, ...).

/// A consumer under test and what only its own tests can do with it. Its end destroys the consumer.
class ConsumerSubject {
public:
    virtual ~ConsumerSubject() = default;
    virtual IConsumer& Consumer() = 0;
    /// Lets the consumer show or use the asset, whose provider it must subscribe at, under at least one number.
    virtual void Show(const Asset& a_asset) = 0;
    /// Lets it end what it subscribed for the asset.
    virtual void Hide(const Asset& a_asset) = 0;
    /// Handles what callbacks have passed on to the main thread, if anything.
    virtual void HandleMessages() {}
    /// The candles that it shows of the asset, in their interval and with open, high and low; empty where it makes none.
    virtual std::optional<History> GetCandles(const Asset& /*a_asset*/) { return std::nullopt; }
};

struct ConsumerContractCase {
    const char* name;
    std::function<std::unique_ptr<ConsumerSubject>()> make;

    friend void PrintTo(const ConsumerContractCase& a_case, std::ostream* a_stream)
    {
        *a_stream << a_case.name;
    }
};

/// A feed that remembers what the consumer asked for.
class WatchedFeed : public FeedProvider {
public:
    using FeedProvider::FeedProvider;
    // The feed's thread calls virtual operations, so it must have ended before this part of the object goes.
    ~WatchedFeed() override { OnStopWork(); }

    bool StartSubscription(const Subscribe::StartParams& a_params) override
    {
        if (refuse)
            return false;
        started.push_back(a_params);
        return FeedProvider::StartSubscription(a_params);
    }
    void StopSubscription(const Subscribe::StopParams& a_params) override
    {
        stopped.push_back(a_params);
        FeedProvider::StopSubscription(a_params);
    }

    std::atomic<bool> refuse = false;
    std::vector<Subscribe::StartParams> started; // by the test's thread alone
    std::vector<Subscribe::StopParams> stopped;
};

/// Each test runs with data that comes inside StartSubscription and with data from a thread of the provider.
class ConsumerContract
    : public testing::TestWithParam<std::tuple<ConsumerContractCase, FeedProvider::EThread>> {
protected:
    ConsumerContract() : m_feed(std::get<1>(GetParam())), m_subject(std::get<0>(GetParam()).make()) {}

    const Asset& First() const { return *m_feed.GetAssets().front(); }
    const Asset& Second() const { return *m_feed.GetAssets().back(); }

    TestMediator m_mediator;
    WatchedFeed m_feed; // outlives the consumer
    std::unique_ptr<ConsumerSubject> m_subject;
};

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(ConsumerContract);

TEST_P(ConsumerContract, ItAsksUnderItsOwnNumbersAndValidly)
{
    m_subject->Show(First());
    m_subject->Show(Second());
    ASSERT_GE(m_feed.started.size(), 2U);
    std::set<unsigned int> numbers;
    for (const auto& start : m_feed.started) {
        EXPECT_EQ(start.GetConsumer(), &m_subject->Consumer());
        EXPECT_NE(start.GetRequestId(), 0U);
        EXPECT_TRUE(numbers.insert(start.GetRequestId()).second) << "twice: " << start.GetRequestId();
        EXPECT_TRUE(start.GetRequestParams().IsValid());
    }
    EXPECT_TRUE(m_feed.started.front().GetAsset() == First());
    EXPECT_TRUE(m_feed.started.back().GetAsset() == Second());
}

// An operation inside a week, one that is told later, and none: what is shown are candles of corrected rows.
TEST_P(ConsumerContract, RowsAreCorrectedAndThenFolded)
{
    m_subject->Show(First());
    if (!m_subject->GetCandles(First()))
        GTEST_SKIP() << "no candles";
    HistoryOperations operations;
    ASSERT_TRUE(operations.Parse(FeedProvider::S_operations));
    const auto expectCorrected = [&](unsigned int a_liveRows) {
        m_feed.WaitForDelivery();
        m_subject->HandleMessages();
        const History shown = *m_subject->GetCandles(First());
        History expected = FeedProvider::Rows(1, FeedProvider::S_days, a_liveRows);
        expected.ApplyDataOperations(operations);
        const IntervalAndMultiplicity interval = shown.GetIntervalData();
        AggregatorWrapper folder({DSProp(ESeriesId::Price)}, ELastRecordTime, interval.GetInterval(),
                                 static_cast<unsigned short>(interval.GetMultiplicity()));
        ASSERT_TRUE(folder.AgregateHistory(expected));
        ASSERT_EQ(shown.GetRecordsCount(), expected.GetRecordsCount());
        for (const auto& [series, values] : expected) {
            const auto column = shown.find(series);
            ASSERT_NE(column, shown.end()) << series;
            EXPECT_EQ(column->second, values) << series;
        }
    };
    expectCorrected(0);
    m_feed.MakeLiveData(First().GetIsin());
    expectCorrected(1);
    for (const char* text : {"2\n1,210302,2,0.25\n2,210306,2,4\n", "3\n"}) {
        operations = HistoryOperations();
        operations.Parse(text);
        m_feed.ChangeOperations(operations);
        expectCorrected(1);
    }
}

TEST_P(ConsumerContract, HidingEndsWhatShowingBegan)
{
    m_subject->Show(First());
    m_subject->Show(Second());
    m_feed.MakeLiveData(First().GetIsin());
    m_subject->Hide(First());
    for (const auto& start : m_feed.started) {
        const bool ended = std::any_of(m_feed.stopped.begin(), m_feed.stopped.end(),
                                       [&](const auto& a_stop) { return a_stop.Suit(start); });
        EXPECT_EQ(ended, start.GetAsset() == First()) << start.GetRequestId();
    }
    m_subject->Hide(Second());
    EXPECT_EQ(m_feed.BookedCount(), 0U);
    m_subject->HandleMessages();
}

TEST_P(ConsumerContract, ItsEndLeavesNothingBooked)
{
    m_subject->Show(First());
    m_subject->Show(Second());
    m_subject.reset();
    EXPECT_EQ(m_feed.BookedCount(), 0U);
    m_feed.MakeLiveData(First().GetIsin());
}

// Data flows all the while on another thread; a lock held across the stop would hang here, a late use show in a
// sanitizer.
TEST_P(ConsumerContract, ItMayStopWhileDataFlow)
{
    std::atomic<bool> quit = false;
    std::thread maker([&] {
        for (int made = 0; !quit && made < 2000; ++made)
            m_feed.MakeLiveData(First().GetIsin());
    });
    for (int round = 0; round < 20; ++round) {
        m_subject->Show(First());
        m_subject->HandleMessages();
        m_subject->Hide(First());
    }
    m_subject->Show(First());
    m_subject.reset();
    quit = true;
    maker.join();
    EXPECT_EQ(m_feed.BookedCount(), 0U);
}

TEST_P(ConsumerContract, UnknownNumbersAreIgnored)
{
    m_subject->Show(First());
    IConsumer& consumer = m_subject->Consumer();
    for (const unsigned int number : {0U, 4000000000U}) {
        EXPECT_NO_THROW(consumer.SymbolDeleted(number, "PLTEST000001"));
        EXPECT_NO_THROW(consumer.ProcessOperations(number, HistoryOperations()));
        EXPECT_NO_THROW(consumer.ProcessHistory(
            number, History(std::set<ESeriesId>{ESeriesId::Price}, EIntervalTick, 1)));
        EXPECT_NO_THROW(consumer.ProcessHistoryEnd(number));
        EXPECT_NO_THROW(consumer.ProcessSynchronization(
            number, Synchronization(EIntervalTick, 1, std::set<ESeriesId>{ESeriesId::Price})));
        EXPECT_NO_THROW(
            consumer.ProcessRecord(number, Record(NDateTime(2021, 3, 1), {{ESeriesId::Price, 1.0}})));
        EXPECT_NO_THROW(consumer.ProcessCurrentState(number, CurrentState(Offers::Series)));
        EXPECT_NO_THROW(consumer.ProcessOffers(number, Offers()));
        EXPECT_NO_THROW(consumer.ProcessLatestRecords(number, LatestRecords()));
        EXPECT_NO_THROW(consumer.RequestRefused(number, L"Nie"));
        EXPECT_NO_THROW(consumer.RequestEnded(number));
    }
    EXPECT_NO_THROW(consumer.UpdateAssets(&m_feed));
    m_subject->HandleMessages();
}

TEST_P(ConsumerContract, ARefusalIsNoFailure)
{
    const Asset unknown(&m_feed, "X", "X", "TEST", "NO SUCH ISIN");
    m_subject->Show(unknown); // refused by a callback
    m_subject->HandleMessages();
    m_subject->Hide(unknown);
    m_feed.refuse = true;
    m_subject->Show(First()); // refused at once
    m_subject->Hide(First());
    m_feed.refuse = false;
    m_subject->Show(First());
    m_subject->Hide(First());
    EXPECT_EQ(m_feed.BookedCount(), 0U);
    m_subject->HandleMessages();
}

TEST_P(ConsumerContract, AStoppedProviderIsNoFailure)
{
    m_subject->Show(First());
    m_feed.StopWork();
    m_subject->HandleMessages();
    m_subject->Show(Second());
    m_subject->Hide(First());
}
