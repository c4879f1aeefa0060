#pragma once

#include "assets/Asset.h"
#include "assets/AssetParams.h"
#include "contract_kit/TestProvider.h"
#include "folding/PieceFolder.h"
#include "history_operations/HistoryOperations.h"
#include "modules/IConsumer.h"
#include "modules/Subscribe.h"
#include "provider_kit/SubscriptionBook.h"
#include "series/CurrentState.h"
#include "series/History.h"
#include "series/LatestRecords.h"
#include "series/Offers.h"
#include "series/Record.h"
#include "series/Synchronization.h"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

/// A whole provider in memory, as small as it can be, with two assets, on the SubscriptionBook of the provider kit. Its
/// rows are trades of six days of one week, from Monday, 2021-03-01 on, with a corporate operation on the Wednesday. It
/// delivers on the thread that starts the subscription or makes the data, or on a thread of its own. A class derived
/// from it stops the work in its own destructor: the thread calls virtual operations.
class FeedProvider : public TestProvider {
public:
    enum EThread : std::uint32_t { ECallersThread, EOwnThread };

    static constexpr unsigned int S_allKinds = 15;
    static constexpr unsigned int S_liveKinds = ParamsBase::S_kindDataCS | ParamsBase::S_kindDataRecord;
    static constexpr unsigned int S_days = 6;
    static constexpr const char* S_operations = "1\n1,210303,2,0.5\n";

    explicit FeedProvider(EThread a_thread, std::wstring a_name = L"Próbny")
        : TestProvider(std::move(a_name)), m_ownThread(a_thread == EOwnThread)
    {
        for (const char* isin : {"PLTEST000001", "PLTEST000002"})
            m_assets.push_back(std::make_shared<Asset>(this, isin + 2, isin, "TEST", isin));
        m_operations.Parse(S_operations);
        if (m_ownThread)
            m_worker = std::thread([this] { Work(); });
    }
    ~FeedProvider() override { FeedProvider::OnStopWork(); }

    /// Makes one row and one new state of the asset; the row is the same each time. With a thread of its own it returns
    /// before that is delivered.
    void MakeLiveData(const std::string& a_isin)
    {
        Do([this, a_isin] {
            const auto subscriptions = m_book.SubscriptionsOf(a_isin);
            for (const auto& subscription : *subscriptions)
                DeliverLive(static_cast<const Subscription&>(*subscription));
        });
    }
    /// Both assets have these operations from now on; those who asked for operations are told.
    void ChangeOperations(const HistoryOperations& a_operations)
    {
        Do([this, a_operations] {
            m_operations = a_operations;
            for (const auto& subscription : m_book.GetAll())
                TellOperations(static_cast<const Subscription&>(*subscription));
        });
    }
    /// Returns when all of the above was delivered.
    void WaitForDelivery()
    {
        std::promise<void> done;
        Do([&done] { done.set_value(); });
        done.get_future().wait();
    }
    /// The trades of a day, and with the last day so many live rows.
    static History Rows(unsigned int a_firstDay, unsigned int a_lastDay, unsigned int a_liveRows = 0)
    {
        History rows(std::set<ESeriesId>{ESeriesId::Price}, EIntervalTick, 1);
        for (unsigned int day = a_firstDay; day <= a_lastDay; ++day)
            for (unsigned int trade = 0; trade < 3; ++trade)
                rows.AddData(Row(day, 9 + trade, 10.0 + day + (trade == 1 ? 3.0 : 0.0)));
        for (unsigned int row = 0; row < a_liveRows; ++row)
            rows.AddData(LiveRow());
        return rows;
    }
    /// How many subscriptions are booked.
    std::size_t BookedCount() const { return m_book.GetCount(); }

    bool StartSubscription(const Subscribe::StartParams& a_params) override
    {
        const auto subscription = std::make_shared<Subscription>(a_params);
        const SubscriptionBook::EBooking booking = m_book.Book(*this, subscription);
        if (booking == SubscriptionBook::EBookingDone)
            Do([this, subscription] { DeliverPast(*subscription); });
        return booking != SubscriptionBook::EBookingRefused;
    }
    void StopSubscription(const Subscribe::StopParams& a_params) override { m_book.Stop(a_params); }
    void OnStopWork() override
    {
        m_book.Close();
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
        return {
            S_allKinds, 1, {{EIntervalTick, RangeData(NDateTime(2021, 3, 1), NDateTime(2021, 3, S_days))}}};
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
    struct Subscription : SubscriptionBook::Subscription {
        using SubscriptionBook::Subscription::Subscription;
        bool begun = false; // under Lock; the past has been delivered, so live data may follow
    };

    void DeliverPast(Subscription& a_subscription)
    {
        const auto lock = a_subscription.Lock();
        const RequestParams& request = a_subscription.GetParams().GetRequestParams();
        if (!GetAssetByIsin(a_subscription.GetIsin())) {
            m_book.End(a_subscription, [](IConsumer& a_consumer, unsigned int a_number) {
                a_consumer.RequestRefused(a_number, L"Nieznany walor");
            });
            return;
        }
        const auto tell = [&](unsigned int a_kinds, auto&& a_callback) {
            SubscriptionBook::Tell(a_subscription, a_kinds, a_callback);
        };
        TellOperations(a_subscription);
        if (request.IsSetHistory())
            TellHistory(a_subscription);
        tell(ParamsBase::S_kindDataSynchro, [&](IConsumer& a_consumer, unsigned int a_number) {
            // From the row on that opened the last window.
            const bool isDayOrShorter = request.GetInterval() < EIntervalDay ||
                                        IntervalAndMultiplicity(EIntervalDay, 1)
                                            .Equals(request.GetInterval(), request.GetMultiplicity());
            History rows = Rows(isDayOrShorter ? S_days : 1, S_days);
            Synchronization::Columns columns;
            for (auto& [id, values] : rows)
                columns.emplace_back(id, std::move(values));
            a_consumer.ProcessSynchronization(
                a_number, {EIntervalTick, 1, std::move(rows).TimeSeries(), std::move(columns)});
        });
        a_subscription.begun = true;
        if (a_subscription.GetKinds() == ParamsBase::S_kindDataHistory)
            m_book.End(a_subscription, [](IConsumer& a_consumer, unsigned int a_number) {
                a_consumer.RequestEnded(a_number);
            });
    }
    void TellOperations(const Subscription& a_subscription)
    {
        if (a_subscription.GetParams().GetRequestParams().NeedsDataOperationInfo())
            SubscriptionBook::Tell(a_subscription, S_allKinds,
                                   [&](IConsumer& a_consumer, unsigned int a_number) {
                                       a_consumer.ProcessOperations(a_number, m_operations);
                                   });
    }
    static void TellHistory(const Subscription& a_subscription)
    {
        const RequestParams& request = a_subscription.GetParams().GetRequestParams();
        PieceFolder folder({DSProp(ESeriesId::Price)}, {EIntervalTick, 1},
                           {request.GetInterval(), request.GetMultiplicity()}, ELastRecordTime,
                           PieceFolder::EPassSame);
        const auto tell = [&](History&& a_part) {
            if (!a_part.IsEmpty())
                SubscriptionBook::Tell(a_subscription, ParamsBase::S_kindDataHistory,
                                       [&](IConsumer& a_consumer, unsigned int a_number) {
                                           a_consumer.ProcessHistory(a_number, std::move(a_part));
                                       });
        };
        for (unsigned int day = 1; day <= S_days; ++day)
            tell(folder.Add(Rows(day, day)));
        tell(folder.Finish());
        SubscriptionBook::Tell(
            a_subscription, ParamsBase::S_kindDataHistory,
            [](IConsumer& a_consumer, unsigned int a_number) { a_consumer.ProcessHistoryEnd(a_number); });
    }
    static void DeliverLive(const Subscription& a_subscription)
    {
        const auto lock = a_subscription.Lock();
        if (!a_subscription.begun)
            return;
        const auto tell = [&](unsigned int a_kinds, auto&& a_callback) {
            SubscriptionBook::Tell(a_subscription, a_kinds, a_callback);
        };
        tell(ParamsBase::S_kindDataCS, [](IConsumer& a_consumer, unsigned int a_number) {
            CurrentState state(std::set<ESeriesId>{ESeriesId::Price});
            state.SetData(ESeriesId::Price, 10.0);
            a_consumer.ProcessCurrentState(a_number, state);
        });
        tell(ParamsBase::S_kindDataCS, [](IConsumer& a_consumer, unsigned int a_number) {
            a_consumer.ProcessOffers(a_number, Offers());
        });
        tell(ParamsBase::S_kindDataCS, [](IConsumer& a_consumer, unsigned int a_number) {
            a_consumer.ProcessLatestRecords(a_number, LatestRecords());
        });
        tell(ParamsBase::S_kindDataRecord, [](IConsumer& a_consumer, unsigned int a_number) {
            a_consumer.ProcessRecord(a_number, LiveRow());
        });
    }
    static Record Row(unsigned int a_day, unsigned int a_hour, double a_price)
    {
        return {NDateTime(2021, 3, a_day, a_hour, 0, 0, 0), {{ESeriesId::Price, a_price}}};
    }
    static Record LiveRow() { return Row(S_days, 17, 30.0); }

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
    SubscriptionBook m_book;
    std::mutex m_mutex; // what follows is under it
    std::condition_variable m_wake;
    std::deque<std::function<void()>> m_tasks;
    bool m_quit = false;
    HistoryOperations m_operations; // of the thread that delivers
    std::thread m_worker;           // last: it uses all the others
};
