#pragma once

#include "assets/Asset.h"
#include "assets/AssetParams.h"
#include "history_operations/HistoryOperations.h"
#include "modules/IConsumer.h"
#include "modules/ProvidersHelper.h"
#include "modules/Subscribe.h"
#include "series/CurrentState.h"
#include "series/History.h"
#include "series/LatestRecords.h"
#include "series/Offers.h"
#include "series/Record.h"
#include "series/Synchronization.h"
#include "support/TestProvider.h"
#include "velo/LogAllExceptions.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

/// A whole provider in memory, as small as it can be, with two assets: the reading of IConsumer's promises in code. It
/// delivers on the thread that starts the subscription or makes the data, or on a thread of its own. A class derived from
/// it stops the work in its own destructor: the thread calls virtual operations.
class FeedProvider : public TestProvider {
public:
    enum EThread : std::uint32_t { ECallersThread, EOwnThread };

    static constexpr unsigned int S_allKinds = 15;
    static constexpr unsigned int S_liveKinds = ParamsBase::S_kindDataCS | ParamsBase::S_kindDataRecord;
    static constexpr unsigned int S_historyDays = 6; // in parts of S_partDays, from 2021-03-01 on
    static constexpr unsigned int S_partDays = 4;

    explicit FeedProvider(EThread a_thread, std::wstring a_name = L"Próbny")
        : TestProvider(std::move(a_name)), m_ownThread(a_thread == EOwnThread)
    {
        for (const char* isin : {"PLTEST000001", "PLTEST000002"})
            m_assets.push_back(std::make_shared<Asset>(this, isin + 2, isin, "TEST", isin));
        if (m_ownThread)
            m_worker = std::thread([this] { Work(); });
    }
    ~FeedProvider() override { FeedProvider::OnStopWork(); }

    /// Makes one row and one new state of the asset. With a thread of its own it returns before that is delivered.
    void MakeLiveData(const std::string& a_isin)
    {
        Do([this, a_isin] {
            for (const auto& subscription : SubscriptionsOf(a_isin))
                Call(*subscription, [&] { DeliverLive(*subscription); });
        });
    }
    /// How many subscriptions are booked.
    std::size_t BookedCount() const
    {
        const std::lock_guard lock(m_mutex);
        return m_subscriptions.size();
    }

    bool StartSubscription(const Subscribe::StartParams& a_params) override
    {
        if (!ProvidersHelper::ValidateSubscribeParameters(this, a_params.GetConsumer(),
                                                          a_params.GetRequestId(), a_params.GetAsset(),
                                                          a_params.GetRequestParams()))
            return false;
        auto subscription = std::make_shared<Subscription>(a_params);
        {
            const std::lock_guard lock(m_mutex);
            if (!IsRunning())
                return false;
            if (Find(a_params) != m_subscriptions.end())
                return true;
            ProvidersHelper::AddPairToContainer(a_params.GetRequestId(), a_params.GetConsumer(),
                                                m_subscribers[a_params.GetAsset().GetIsin()]);
            m_subscriptions.push_back(subscription);
        }
        Do([this, subscription] { Call(*subscription, [&] { DeliverPast(subscription); }); });
        return true;
    }
    void StopSubscription(const Subscribe::StopParams& a_params) override
    {
        std::shared_ptr<Subscription> subscription;
        Subscriptions ending;
        {
            const std::lock_guard lock(m_mutex);
            if (const auto found = Find(a_params); found != m_subscriptions.end())
                subscription = *found;
            std::copy_if(m_ending.begin(), m_ending.end(), std::back_inserter(ending),
                         [&](const auto& a_other) { return a_params.Suit(a_other->params); });
        }
        // Here and below: waits for a running callback, unless it is the one that called us.
        for (const auto& other : ending)
            const std::lock_guard calling(other->calling);
        if (!subscription)
            return;
        const std::lock_guard calling(subscription->calling);
        if (const auto& part = a_params.GetRequestParams())
            subscription->kinds &= ~part->GetKindData();
        else
            subscription->kinds = 0;
        if (subscription->kinds == 0)
            Unbook(*subscription);
    }
    void OnStopWork() override
    {
        std::vector<std::shared_ptr<Subscription>> subscriptions;
        {
            const std::lock_guard lock(m_mutex);
            subscriptions = m_subscriptions;
        }
        for (const auto& subscription : subscriptions) {
            const std::lock_guard calling(subscription->calling);
            Unbook(*subscription);
        }
        if (!m_worker.joinable())
            return;
        {
            const std::lock_guard lock(m_mutex);
            m_quit = true;
        }
        m_wake.notify_all();
        m_worker.join();
    }
    void SwitchConnection(bool a_connect) override
    {
        m_status = a_connect ? EConnectionStatusConnected : EConnectionStatusDisconnected;
        NotifyChangeConnectionStatus();
    }
    EConnectionStatus GetConnectionStatus() const override { return m_status; }
    std::vector<std::shared_ptr<Asset>> GetAssets() const override { return m_assets; }
    std::shared_ptr<Asset> GetAssetByIsin(const std::string& a_isin) override
    {
        for (const auto& asset : m_assets)
            if (asset->GetIsin() == a_isin)
                return asset;
        return nullptr;
    }
    AssetParams GetAssetParams(const std::string& a_isin) override
    {
        if (!GetAssetByIsin(a_isin))
            return {};
        return {S_allKinds,
                1,
                {{EIntervalDay, RangeData(NDateTime(2021, 3, 1), NDateTime(2021, 3, S_historyDays))}}};
    }
    std::set<DSProp> GetAssetSeries(const Asset& a_asset) override
    {
        return GetAssetByIsin(a_asset.GetIsin()) ? std::set<DSProp>{DSProp(ESeriesId::Price)}
                                                 : std::set<DSProp>();
    }
    std::set<DSProp> GetAssetSeriesAlternative(const Asset& a_asset) override
    {
        return GetAssetSeries(a_asset);
    }

private:
    struct Subscription {
        explicit Subscription(const Subscribe::StartParams& a_params)
            : params(a_params), kinds(a_params.GetRequestParams().GetKindData())
        {}
        const Subscribe::StartParams params;
        std::recursive_mutex calling; // held while a callback runs; what follows is under it
        unsigned int kinds;           // still asked for; 0 once it is over
        bool begun = false;           // the past has been delivered, so live data may follow
    };
    using Subscriptions = std::vector<std::shared_ptr<Subscription>>;

    Subscriptions::iterator Find(const Subscribe::Params& a_params) // under m_mutex
    {
        return std::find_if(m_subscriptions.begin(), m_subscriptions.end(),
                            [&](const auto& a_other) { return a_other->params == a_params; });
    }
    Subscriptions SubscriptionsOf(const std::string& a_isin)
    {
        const std::lock_guard lock(m_mutex);
        Subscriptions found;
        for (const auto& subscription : m_subscriptions)
            if (subscription->params.GetAsset().GetIsin() == a_isin)
                found.push_back(subscription);
        return found;
    }
    void Unbook(Subscription& a_subscription) // its `calling` is held
    {
        a_subscription.kinds = 0;
        const std::lock_guard lock(m_mutex);
        const Subscribe::StartParams& booked = a_subscription.params;
        const std::string& isin = booked.GetAsset().GetIsin();
        if (ProvidersHelper::RemovePairToContainer(booked.GetRequestId(), booked.GetConsumer(),
                                                   m_subscribers[isin]))
            m_subscribers.erase(isin);
        std::erase_if(m_subscriptions, [&](const auto& a_other) { return a_other.get() == &a_subscription; });
    }
    // The last callback of a subscription. Its number is free already, but a stop waits for the callback all the same:
    // the consumer may be destroyed after the stop.
    void End(const std::shared_ptr<Subscription>& a_subscription,
             const std::function<void(IConsumer&, unsigned int)>& a_callback)
    {
        {
            const std::lock_guard lock(m_mutex);
            m_ending.push_back(a_subscription);
        }
        Tell(*a_subscription, S_allKinds, [&](IConsumer& a_consumer, unsigned int a_number) {
            Unbook(*a_subscription);
            a_callback(a_consumer, a_number);
        });
        const std::lock_guard lock(m_mutex);
        std::erase(m_ending, a_subscription);
    }

    // One or more callbacks of a subscription, never two at once.
    static void Call(Subscription& a_subscription, const std::function<void()>& a_callbacks)
    {
        const std::lock_guard calling(a_subscription.calling);
        a_callbacks();
    }
    // One callback, if it is still wanted: any before may have stopped the subscription.
    template<class Callback>
    static void Tell(const Subscription& a_subscription, unsigned int a_kinds, Callback&& a_callback)
    {
        if ((a_subscription.kinds & a_kinds) == 0)
            return;
        try {
            a_callback(*a_subscription.params.GetConsumer(), a_subscription.params.GetRequestId());
        } catch (...) {
            LogAllExceptions("FeedProvider::Tell", __LINE__);
        }
    }

    void DeliverPast(const std::shared_ptr<Subscription>& a_subscription)
    {
        Subscription& subscription = *a_subscription;
        const RequestParams& request = subscription.params.GetRequestParams();
        const auto asset = GetAssetByIsin(subscription.params.GetAsset().GetIsin());
        if (!asset) {
            End(a_subscription, [](IConsumer& a_consumer, unsigned int a_number) {
                a_consumer.RequestRefused(a_number, L"Nieznany walor");
            });
            return;
        }
        if (request.NeedsDataOperationInfo())
            Tell(subscription, S_allKinds, [](IConsumer& a_consumer, unsigned int a_number) {
                a_consumer.ProcessOperations(a_number, HistoryOperations());
            });
        for (unsigned int day = 1; day <= S_historyDays; day += S_partDays) {
            History part(std::set<ESeriesId>{ESeriesId::Price}, request.GetInterval(),
                         request.GetMultiplicity());
            for (unsigned int last = day; last < day + S_partDays && last <= S_historyDays; ++last)
                part.AddData(Row(last));
            Tell(subscription, ParamsBase::S_kindDataHistory,
                 [&](IConsumer& a_consumer, unsigned int a_number) {
                     a_consumer.ProcessHistory(a_number, std::move(part));
                 });
        }
        Tell(subscription, ParamsBase::S_kindDataHistory,
             [](IConsumer& a_consumer, unsigned int a_number) { a_consumer.ProcessHistoryEnd(a_number); });
        Tell(subscription, ParamsBase::S_kindDataSynchro, [&](IConsumer& a_consumer, unsigned int a_number) {
            Synchronization block(request.GetInterval(), request.GetMultiplicity(),
                                  std::set<ESeriesId>{ESeriesId::Price});
            block.AddData(Row(S_historyDays));
            a_consumer.ProcessSynchronization(a_number, std::move(block));
        });
        subscription.begun = true;
        if (subscription.kinds == ParamsBase::S_kindDataHistory)
            End(a_subscription,
                [](IConsumer& a_consumer, unsigned int a_number) { a_consumer.RequestEnded(a_number); });
    }
    static void DeliverLive(Subscription& a_subscription)
    {
        if (!a_subscription.begun)
            return;
        Tell(a_subscription, ParamsBase::S_kindDataCS, [](IConsumer& a_consumer, unsigned int a_number) {
            CurrentState state(std::set<ESeriesId>{ESeriesId::Price});
            state.SetData(ESeriesId::Price, 10.0);
            a_consumer.ProcessCurrentState(a_number, state);
        });
        Tell(a_subscription, ParamsBase::S_kindDataCS, [](IConsumer& a_consumer, unsigned int a_number) {
            a_consumer.ProcessOffers(a_number, Offers());
        });
        Tell(a_subscription, ParamsBase::S_kindDataCS, [](IConsumer& a_consumer, unsigned int a_number) {
            a_consumer.ProcessLatestRecords(a_number, LatestRecords());
        });
        Tell(a_subscription, ParamsBase::S_kindDataRecord, [](IConsumer& a_consumer, unsigned int a_number) {
            a_consumer.ProcessRecord(a_number, Row(S_historyDays));
        });
    }
    static Record Row(unsigned int a_day)
    {
        return {NDateTime(2021, 3, a_day), {{ESeriesId::Price, 10.0 + a_day}}};
    }

    // Here, or on the own thread after all that was asked for before.
    void Do(std::function<void()> a_task)
    {
        if (!m_ownThread)
            return a_task();
        {
            const std::lock_guard lock(m_mutex);
            m_tasks.push_back(std::move(a_task));
        }
        m_wake.notify_all();
    }
    void Work()
    {
        for (;;) {
            std::function<void()> task;
            {
                std::unique_lock lock(m_mutex);
                m_wake.wait(lock, [this] { return m_quit || !m_tasks.empty(); });
                if (m_quit)
                    return;
                task = std::move(m_tasks.front());
                m_tasks.pop_front();
            }
            task();
        }
    }

    const bool m_ownThread;
    std::vector<std::shared_ptr<Asset>> m_assets; // never changed
    std::atomic<EConnectionStatus> m_status = EConnectionStatusDisconnected;
    mutable std::mutex m_mutex; // never held while a callback runs; what follows is under it
    std::condition_variable m_wake;
    Subscriptions m_subscriptions;
    Subscriptions m_ending; // while their last callback runs
    std::map<std::string, ProvidersHelper::SubscribersContainer> m_subscribers; // by ISIN
    std::deque<std::function<void()>> m_tasks;
    bool m_quit = false;
    std::thread m_worker; // last: it uses all the others
};
