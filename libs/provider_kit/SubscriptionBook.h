#pragma once

#include "modules/ProvidersHelper.h"
#include "modules/Subscribe.h"
#include "velo/LogAllExceptions.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

/// The subscriptions of one provider, and what IConsumer and ProviderBase promise about their callbacks: those of one
/// request number come one at a time, none comes after the stop, a stop waits for the one that runs (unless it is
/// called from inside it), and what a callback throws is logged and ends nothing. The order of callbacks is the
/// provider's.
///
/// Any thread, for all operations. No lock of the book is held while a callback runs but that of its request number, so
/// a callback may start and stop subscriptions, its own number included. A provider holds no lock of its own around
/// Tell, End, Stop and Close that a callback might take.
class SubscriptionBook {
public:
    using NumberLock = std::recursive_mutex;

    /// One booked subscription. A provider that keeps more about each derives from it; what it adds is guarded by Lock.
    class Subscription {
    public:
        explicit Subscription(const Subscribe::StartParams& a_params);
        virtual ~Subscription() = default;
        Subscription(const Subscription&) = delete;
        Subscription& operator=(const Subscription&) = delete;

        const Subscribe::StartParams& GetParams() const { return m_params; }
        const std::string& GetIsin() const { return m_params.GetAsset().GetIsin(); }
        /// The kinds of data that are still wanted (ParamsBase); 0 once the subscription is over, for good.
        unsigned int GetKinds() const { return m_kinds; }
        bool Wants(unsigned int a_kinds) const { return (m_kinds & a_kinds) != 0; }
        bool IsOver() const { return m_kinds == 0; }
        /// Keeps all others from calling the consumer under this number, so that what is done meanwhile and several
        /// callbacks form one step. Only for a subscription that was booked.
        std::unique_lock<NumberLock> Lock() const { return std::unique_lock(*m_lock); }

    private:
        friend class SubscriptionBook;

        const Subscribe::StartParams m_params;
        std::atomic<unsigned int> m_kinds;
        // Of the request number, set when it is booked; held while a callback runs.
        std::shared_ptr<NumberLock> m_lock;
    };
    using Subscriptions = std::vector<std::shared_ptr<Subscription>>;

    enum EBooking : std::uint32_t {
        EBookingRefused,       ///< StartSubscription answers false. The log says why.
        EBookingAlreadyBooked, ///< The pair is already served: StartSubscription answers true and does nothing.
        EBookingDone
    };

    /// Checks what is asked for (ProvidersHelper::ValidateSubscribeParameters) and books it. All is refused after
    /// Close.
    EBooking Book(const ProviderBase& a_provider, const std::shared_ptr<Subscription>& a_subscription);
    /// All of ProviderBase::StopSubscription. True where nobody is left on the item.
    bool Stop(const Subscribe::StopParams& a_params);
    /// Ends all, waits for the callbacks that run, and refuses what comes after: what OnStopWork owes the consumers.
    void Close();

    /// One callback, a_callback(IConsumer&, unsigned int a_requestId), if one of these kinds is still wanted. False
    /// where it isn't. Waits while another callback of the number runs.
    template<class Callback>
    static bool Tell(const Subscription& a_subscription, unsigned int a_kinds, Callback&& a_callback)
    {
        const auto lock = a_subscription.Lock();
        if (!a_subscription.Wants(a_kinds))
            return false;
        Call(a_subscription, std::forward<Callback>(a_callback));
        return true;
    }
    /// The last callback of a subscription, RequestEnded or RequestRefused, if it isn't over yet. The number is free
    /// before it runs, so that the callback can book it again; a stop waits for it all the same, since the consumer may
    /// be destroyed after the stop.
    template<class Callback>
    void End(Subscription& a_subscription, Callback&& a_callback)
    {
        const auto lock = a_subscription.Lock();
        if (a_subscription.m_kinds.exchange(0) == 0)
            return;
        Unbook(a_subscription);
        Call(a_subscription, std::forward<Callback>(a_callback));
    }

    /// Those of one item, in the order of booking, as of now; never null. Costs one look-up: the list is rebuilt only
    /// when it changes. What ends afterwards stays in it and is skipped by Tell.
    std::shared_ptr<const Subscriptions> SubscriptionsOf(const std::string& a_isin) const;
    /// All of them.
    Subscriptions GetAll() const;
    std::size_t GetCount() const;

private:
    using Pair = std::pair<IConsumer*, unsigned int>;
    struct Number {
        std::weak_ptr<NumberLock> lock; // lives as long as somebody may still call under the number
        std::shared_ptr<Subscription> booked;
    };
    struct Item {
        ProvidersHelper::SubscribersContainer pairs;
        std::shared_ptr<const Subscriptions> subscriptions;
    };

    template<class Callback>
    static void Call(const Subscription& a_subscription, Callback&& a_callback) noexcept
    {
        try {
            a_callback(*a_subscription.m_params.GetConsumer(), a_subscription.m_params.GetRequestId());
        } catch (...) {
            LogAllExceptions("SubscriptionBook::Call", __LINE__);
        }
    }
    bool Unbook(Subscription& a_subscription);
    void ForgetIdleNumbers();

    mutable std::mutex m_mutex; // never held while a callback runs; what follows is under it
    bool m_closed = false;
    std::map<Pair, Number> m_numbers;
    std::map<std::string, Item> m_items; // by ISIN, none empty
    std::size_t m_count = 0;             // of booked subscriptions
};
