#pragma once

#include "assets/Asset.h"
#include "assets/AssetParams.h"
#include "assets/AssetsGroup.h"
#include "contract_kit/CheckingConsumer.h"
#include "contract_kit/TestMediator.h"
#include "contract_kit/TestProvider.h"
#include "modules/ProviderBase.h"
#include "modules/RequestParams.h"
#include "modules/Subscribe.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

// What ProviderBase and IConsumer promise, as tests that any provider can be run against. A test program includes this
// header once and names its providers by INSTANTIATE_TEST_SUITE_P(..., ProviderContract, ...).

/// A provider under test and what only its own tests can do with it.
class ProviderSubject {
public:
    virtual ~ProviderSubject() = default;
    /// Made and initialised, with at least one asset that offers history; it outlives the consumers of a test.
    virtual ProviderBase& Provider() = 0;
    /// Lets at least one live callback come to each subscription of live data of the asset, at once or soon, once what
    /// is past has been delivered. False where the provider has nothing live: those tests are then skipped.
    virtual bool MakeLiveData(const Asset& a_asset) = 0;
};

struct ProviderContractCase {
    const char* name;
    std::function<std::unique_ptr<ProviderSubject>()> make;

    friend void PrintTo(const ProviderContractCase& a_case, std::ostream* a_stream)
    {
        *a_stream << a_case.name;
    }
};

class ProviderContract : public testing::TestWithParam<ProviderContractCase> {
protected:
    static constexpr unsigned int S_liveKinds = ParamsBase::S_kindDataCS | ParamsBase::S_kindDataRecord;

    void SetUp() override
    {
        m_subject = GetParam().make();
        const auto assets = Provider().GetAssets();
        ASSERT_FALSE(assets.empty());
        m_asset.emplace(*assets.front());
    }
    void TearDown() override
    {
        EXPECT_EQ(m_consumer.Violations(), std::vector<std::string>());
        if (m_subject)
            Provider().StopWork();
    }

    ProviderBase& Provider() { return m_subject->Provider(); }
    const Asset& TheAsset() { return *m_asset; }
    /// History of the first interval on hand, if it is asked for, and these kinds as far as they are offered.
    RequestParams RequestOf(unsigned int a_kinds, bool a_operations = false)
    {
        const AssetParams offered = TheAsset().GetParams();
        RequestParams params(a_kinds & offered.GetKindData(), a_operations);
        if (offered.begin() != offered.end()) {
            params.SetIntervalAndMultiplicity(offered.begin()->first, offered.GetMultiplicity());
            params.SetDates(offered.begin()->second.GetDates());
        }
        return params;
    }
    bool Start(CheckingConsumer& a_consumer, unsigned int a_number, const RequestParams& a_params)
    {
        a_consumer.Open(a_number, a_params);
        return Provider().StartSubscription({&a_consumer, a_number, TheAsset(), a_params});
    }
    void Stop(CheckingConsumer& a_consumer, unsigned int a_number)
    {
        Provider().StopSubscription({&a_consumer, a_number, TheAsset(), std::nullopt});
        a_consumer.Close(a_number);
    }
    bool HasLiveData()
    {
        return (TheAsset().GetParams().GetKindData() & S_liveKinds) != 0 &&
               m_subject->MakeLiveData(TheAsset());
    }

    TestMediator m_mediator;
    CheckingConsumer m_consumer; // before the provider: it may be called until the provider's end
    std::unique_ptr<ProviderSubject> m_subject;
    std::optional<Asset> m_asset;
};

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(ProviderContract);

TEST_P(ProviderContract, AssetsStandInOrderAndAreKnown)
{
    const auto assets = Provider().GetAssets();
    for (std::size_t place = 0; place < assets.size(); ++place) {
        SCOPED_TRACE(assets[place]->GetIsin());
        if (place > 0) {
            EXPECT_TRUE(*assets[place - 1] < *assets[place]);
        }
        EXPECT_EQ(assets[place]->GetProvider(), &Provider());
        EXPECT_NE(Provider().GetAssetByIsin(assets[place]->GetIsin()), nullptr);
        EXPECT_TRUE(assets[place]->GetParams().IsValid());
        EXPECT_FALSE(Provider().GetAssetSeries(*assets[place]).empty());
    }
    for (const AssetsGroup& group : Provider().GetAssetsGroups()) {
        const auto found = Provider().GetAssetsGroupForAssetsGroupId(group.GetId());
        ASSERT_TRUE(found);
        EXPECT_EQ(found->GetName(), group.GetName());
        EXPECT_EQ(found->GetAssetsCount(), group.GetAssetsCount());
    }
}

TEST_P(ProviderContract, AnUnknownAssetHasNothing)
{
    const Asset unknown(&Provider(), "X", "X", "X", "NO SUCH ISIN");
    EXPECT_EQ(Provider().GetAssetByIsin("NO SUCH ISIN"), nullptr);
    EXPECT_EQ(Provider().GetAssetParams("NO SUCH ISIN").GetKindData(), 0U);
    EXPECT_TRUE(Provider().GetAssetSeries(unknown).empty());
    EXPECT_FALSE(Provider().GetAssetAdditProp(unknown));
    EXPECT_FALSE(Provider().GetAssetSessionDate(unknown));

    // Refused at once and silently, or accepted and refused by a callback.
    const RequestParams params = RequestOf(ParamsBase::S_kindDataHistory);
    m_consumer.Open(1, params);
    if (Provider().StartSubscription({&m_consumer, 1, unknown, params})) {
        EXPECT_TRUE(m_consumer.WaitForEnd(1));
        EXPECT_EQ(m_consumer.Events(1), std::vector{CheckingConsumer::ERefused});
    } else {
        EXPECT_TRUE(m_consumer.Events(1).empty());
    }
}

TEST_P(ProviderContract, WhatIsNotValidIsRefusedAndSilent)
{
    TestProvider stranger(L"Ktoś inny");
    const Asset foreign(&stranger, "X", "X", "X", TheAsset().GetIsin());
    const RequestParams params = RequestOf(ParamsBase::S_kindDataHistory);
    for (unsigned int number = 1; number <= 2; ++number)
        m_consumer.Open(number, params);
    EXPECT_FALSE(Provider().StartSubscription({nullptr, 1, TheAsset(), params}));
    EXPECT_FALSE(Provider().StartSubscription({&m_consumer, 1, TheAsset(), RequestParams()}));
    EXPECT_FALSE(Provider().StartSubscription({&m_consumer, 2, foreign, params}));
    // The answer to a good one comes after whatever the others had set going.
    ASSERT_TRUE(Start(m_consumer, 3, params));
    EXPECT_TRUE(m_consumer.WaitForEnd(3));
    EXPECT_TRUE(m_consumer.Events(1).empty());
    EXPECT_TRUE(m_consumer.Events(2).empty());
}

TEST_P(ProviderContract, HistoryAloneComesWholeAndEnds)
{
    const RequestParams params = RequestOf(ParamsBase::S_kindDataHistory, true);
    ASSERT_TRUE(params.IsValid());
    ASSERT_TRUE(Start(m_consumer, 1, params));
    ASSERT_TRUE(m_consumer.WaitForEnd(1));
    EXPECT_EQ(m_consumer.Count(1, CheckingConsumer::EOperations), 1U);
    EXPECT_EQ(m_consumer.Count(1, CheckingConsumer::EHistoryEnd), 1U);
    EXPECT_EQ(m_consumer.Events(1).back(), CheckingConsumer::EEnded);
    const std::size_t rows = m_consumer.HistoryRows(1);
    EXPECT_GT(rows, 0U);

    // Its number is free again, and the same question has the same answer.
    Stop(m_consumer, 1);
    ASSERT_TRUE(Start(m_consumer, 1, params));
    ASSERT_TRUE(m_consumer.WaitForEnd(1));
    EXPECT_EQ(m_consumer.HistoryRows(1), rows);
}

TEST_P(ProviderContract, ANumberIsServedOnceHoweverOftenItIsStarted)
{
    if (!HasLiveData())
        GTEST_SKIP() << "nothing live";
    const RequestParams params = RequestOf(ParamsBase::S_kindDataHistory | S_liveKinds);
    ASSERT_TRUE(Start(m_consumer, 1, params));
    ASSERT_TRUE(m_consumer.WaitFor(1, CheckingConsumer::EHistoryEnd));
    EXPECT_TRUE(Provider().StartSubscription({&m_consumer, 1, TheAsset(), params}));
    // What a second service would bring would come before what is live for a later number.
    ASSERT_TRUE(Start(m_consumer, 2, params));
    ASSERT_TRUE(m_consumer.WaitFor(2, CheckingConsumer::EHistoryEnd));
    ASSERT_TRUE(m_subject->MakeLiveData(TheAsset()));
    ASSERT_TRUE(m_consumer.WaitForLive(2));
    EXPECT_EQ(m_consumer.Count(1, CheckingConsumer::EHistoryEnd), 1U);
    Stop(m_consumer, 1);
    Stop(m_consumer, 2);
}

TEST_P(ProviderContract, LiveDataFollowThePast)
{
    if (!HasLiveData())
        GTEST_SKIP() << "nothing live";
    const RequestParams params = RequestOf(15, true);
    ASSERT_TRUE(Start(m_consumer, 1, params));
    ASSERT_TRUE(m_consumer.WaitFor(1, CheckingConsumer::EHistoryEnd));
    if (params.IsSetSynchro()) {
        ASSERT_TRUE(m_consumer.WaitFor(1, CheckingConsumer::ESynchronization));
    }
    ASSERT_TRUE(m_subject->MakeLiveData(TheAsset()));
    ASSERT_TRUE(m_consumer.WaitForLive(1));
    Stop(m_consumer, 1);
}

TEST_P(ProviderContract, ConsumersWithOneNumberAreApart)
{
    if (!HasLiveData())
        GTEST_SKIP() << "nothing live";
    CheckingConsumer other;
    const RequestParams params = RequestOf(S_liveKinds);
    ASSERT_TRUE(Start(m_consumer, 1, params));
    ASSERT_TRUE(Start(other, 1, params));
    Stop(m_consumer, 1);
    ASSERT_TRUE(m_subject->MakeLiveData(TheAsset()));
    EXPECT_TRUE(other.WaitForLive(1));
    Stop(other, 1);
    EXPECT_EQ(other.Violations(), std::vector<std::string>());
}

TEST_P(ProviderContract, SomeKindsCanStopAlone)
{
    const RequestParams params = RequestOf(ParamsBase::S_kindDataHistory | S_liveKinds);
    if ((params.GetKindData() & S_liveKinds) != S_liveKinds || !HasLiveData())
        GTEST_SKIP() << "not both of the live kinds";
    ASSERT_TRUE(Start(m_consumer, 1, params));
    // The provider decides when records start to come, up to the end of the past.
    ASSERT_TRUE(m_consumer.WaitFor(1, CheckingConsumer::EHistoryEnd));
    ASSERT_TRUE(m_subject->MakeLiveData(TheAsset()));
    ASSERT_TRUE(m_consumer.WaitFor(1, CheckingConsumer::ERecord));
    Provider().StopSubscription({&m_consumer, 1, TheAsset(), RequestParams(ParamsBase::S_kindDataRecord)});
    m_consumer.CloseKinds(1, ParamsBase::S_kindDataRecord);
    const std::size_t before = m_consumer.Count(1, CheckingConsumer::ECurrentState);
    ASSERT_TRUE(m_subject->MakeLiveData(TheAsset()));
    EXPECT_TRUE(m_consumer.WaitFor(1, CheckingConsumer::ECurrentState, before + 1));
    Stop(m_consumer, 1);
}

// Live data is made all the while on another thread; each stop must be the end for its number.
TEST_P(ProviderContract, NothingComesAfterTheStop)
{
    const bool live = HasLiveData();
    CheckingConsumer pace; // a provider with a queue gets no more than it can deliver
    if (live) {
        ASSERT_TRUE(Start(pace, 1, RequestOf(S_liveKinds)));
    }
    std::atomic<bool> quit = false;
    std::thread maker([&] {
        while (live && !quit) {
            const std::size_t seen = pace.LiveCount(1);
            m_subject->MakeLiveData(TheAsset());
            pace.WaitForLive(1, seen);
        }
    });
    const RequestParams params = RequestOf(15, true);
    for (unsigned int number = 1; number <= 60; ++number) {
        if (!Start(m_consumer, number, params)) {
            ADD_FAILURE() << "not started: " << number;
            break;
        }
        // A third is stopped in the middle of its past, a third when that is over, a third while data is live.
        if (number % 3 != 0) {
            EXPECT_TRUE(m_consumer.WaitFor(number, CheckingConsumer::EHistoryEnd));
        }
        if (live && number % 3 == 2) {
            EXPECT_TRUE(m_consumer.WaitForLive(number));
        }
        Stop(m_consumer, number);
    }
    quit = true;
    maker.join();
    if (live)
        Stop(pace, 1);
    EXPECT_EQ(pace.Violations(), std::vector<std::string>());
}

TEST_P(ProviderContract, ASubscriptionMayStopItselfInsideOfACallback)
{
    const RequestParams params = RequestOf(15);
    m_consumer.SetReaction([&](unsigned int a_number, CheckingConsumer::EEvent /*a_event*/) {
        if (a_number == 1)
            Stop(m_consumer, 1);
    });
    ASSERT_TRUE(Start(m_consumer, 1, params));
    // The first callback of any kind ends it; a later number shows that there was time for more.
    ASSERT_TRUE(m_consumer.WaitForAny(1));
    ASSERT_TRUE(Start(m_consumer, 2, RequestOf(ParamsBase::S_kindDataHistory)));
    ASSERT_TRUE(m_consumer.WaitForEnd(2));
    EXPECT_EQ(m_consumer.Events(1).size(), 1U);
}

TEST_P(ProviderContract, ACallbackThatThrowsEndsNothing)
{
    m_consumer.SetReaction([](unsigned int /*a_number*/, CheckingConsumer::EEvent /*a_event*/) {
        throw std::runtime_error("test");
    });
    ASSERT_TRUE(Start(m_consumer, 1, RequestOf(ParamsBase::S_kindDataHistory)));
    EXPECT_TRUE(m_consumer.WaitForEnd(1));
    EXPECT_EQ(m_consumer.Count(1, CheckingConsumer::EEnded), 1U);
}

TEST_P(ProviderContract, StopsWithoutAStartAreIgnored)
{
    Provider().StopSubscription({&m_consumer, 77, TheAsset(), std::nullopt});
    ASSERT_TRUE(Start(m_consumer, 1, RequestOf(ParamsBase::S_kindDataHistory)));
    ASSERT_TRUE(m_consumer.WaitForEnd(1));
    Stop(m_consumer, 1);
    Stop(m_consumer, 1);
}

TEST_P(ProviderContract, AStoppedProviderIsSilent)
{
    const bool live = HasLiveData();
    const RequestParams params = RequestOf(15);
    ASSERT_TRUE(Start(m_consumer, 1, params));
    ASSERT_TRUE(m_consumer.WaitFor(1, CheckingConsumer::EHistoryEnd));
    Provider().StopWork();
    m_consumer.Close(1);
    if (live)
        m_subject->MakeLiveData(TheAsset());
    EXPECT_FALSE(Start(m_consumer, 2, params));
    EXPECT_TRUE(m_consumer.Events(2).empty());
    const std::size_t told = m_mediator.Calls().size();
    Provider().StopSubscription({&m_consumer, 1, TheAsset(), std::nullopt});
    EXPECT_EQ(m_mediator.Calls().size(), told);
}
