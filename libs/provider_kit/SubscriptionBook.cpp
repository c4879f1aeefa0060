#include "provider_kit/SubscriptionBook.h"

#include "modules/ProviderBase.h"
#include "platform/CodePage.h"
#include "velo/Log.h"

SubscriptionBook::Subscription::Subscription(const Subscribe::StartParams& a_params)
    : m_params(a_params), m_kinds(a_params.GetRequestParams().GetKindData())
{}

SubscriptionBook::EBooking SubscriptionBook::Book(const ProviderBase& a_provider,
                                                  const std::shared_ptr<Subscription>& a_subscription)
{
    const Subscribe::StartParams& params = a_subscription->GetParams();
    if (!ProvidersHelper::ValidateSubscribeParameters(&a_provider, params.GetConsumer(),
                                                      params.GetRequestId(), params.GetAsset(),
                                                      params.GetRequestParams()))
        return EBookingRefused;

    const std::lock_guard lock(m_mutex);
    if (m_closed) {
        VeloTools::Log::Instance().Write("SubscriptionBook::Book", __LINE__,
                                         "Dostawca zakończył pracę i nie przyjmuje subskrypcji"_cp1250);
        return EBookingRefused;
    }
    ForgetIdleNumbers();
    Number& number = m_numbers[{params.GetConsumer(), params.GetRequestId()}];
    if (number.booked)
        return EBookingAlreadyBooked;
    // A callback of the number's last life may still be running: those of the new one wait for it.
    a_subscription->m_lock = number.lock.lock();
    if (!a_subscription->m_lock)
        number.lock = a_subscription->m_lock = std::make_shared<NumberLock>();
    number.booked = a_subscription;
    ++m_count;

    Item& item = m_items[a_subscription->GetIsin()];
    ProvidersHelper::AddPairToContainer(params.GetRequestId(), params.GetConsumer(), item.pairs);
    auto grown = item.subscriptions ? *item.subscriptions : Subscriptions();
    grown.push_back(a_subscription);
    item.subscriptions = std::make_shared<const Subscriptions>(std::move(grown));
    return EBookingDone;
}

bool SubscriptionBook::Stop(const Subscribe::StopParams& a_params)
{
    std::shared_ptr<Subscription> subscription;
    std::shared_ptr<NumberLock> numberLock;
    {
        const std::lock_guard lock(m_mutex);
        if (const auto number = m_numbers.find({a_params.GetConsumer(), a_params.GetRequestId()});
            number != m_numbers.end()) {
            numberLock = number->second.lock.lock();
            if (number->second.booked && a_params.Suit(number->second.booked->m_params))
                subscription = number->second.booked;
        }
    }
    if (!numberLock)
        return false;
    // Before the wait: a long run of callbacks is cut short after the current one.
    bool over = false;
    if (subscription) {
        const unsigned int ending =
            a_params.GetRequestParams() ? a_params.GetRequestParams()->GetKindData() : ~0U;
        over = (subscription->m_kinds.fetch_and(~ending) & ~ending) == 0;
    }
    const std::lock_guard waiting(*numberLock);
    return over && Unbook(*subscription);
}

void SubscriptionBook::Close()
{
    {
        const std::lock_guard lock(m_mutex);
        m_closed = true;
    }
    for (const auto& subscription : GetAll())
        subscription->m_kinds = 0;
    for (const auto& subscription : GetAll()) {
        const auto waiting = subscription->Lock();
        Unbook(*subscription);
    }
    // The last callbacks of those that had ended by themselves.
    std::vector<std::shared_ptr<NumberLock>> running;
    {
        const std::lock_guard lock(m_mutex);
        for (const auto& [pair, number] : m_numbers)
            if (auto numberLock = number.lock.lock())
                running.push_back(std::move(numberLock));
    }
    for (const auto& numberLock : running)
        const std::lock_guard waiting(*numberLock);
}

std::shared_ptr<const SubscriptionBook::Subscriptions>
SubscriptionBook::SubscriptionsOf(const std::string& a_isin) const
{
    static const auto S_none = std::make_shared<const Subscriptions>();
    const std::lock_guard lock(m_mutex);
    const auto item = m_items.find(a_isin);
    return item != m_items.end() ? item->second.subscriptions : S_none;
}

SubscriptionBook::Subscriptions SubscriptionBook::GetAll() const
{
    const std::lock_guard lock(m_mutex);
    Subscriptions all;
    all.reserve(m_count);
    for (const auto& [isin, item] : m_items)
        all.insert(all.end(), item.subscriptions->begin(), item.subscriptions->end());
    return all;
}

std::size_t SubscriptionBook::GetCount() const
{
    const std::lock_guard lock(m_mutex);
    return m_count;
}

// True where the item has nobody left. Several may unbook one subscription; the first one does it.
bool SubscriptionBook::Unbook(Subscription& a_subscription)
{
    const Subscribe::StartParams& params = a_subscription.GetParams();
    const std::lock_guard lock(m_mutex);
    const auto number = m_numbers.find({params.GetConsumer(), params.GetRequestId()});
    if (number == m_numbers.end() || number->second.booked.get() != &a_subscription)
        return false;

    // Kept to the end of this function: the caller's object may be held by the book alone.
    const auto unbooked = std::exchange(number->second.booked, nullptr);
    --m_count;
    const auto item = m_items.find(a_subscription.GetIsin());
    if (ProvidersHelper::RemovePairToContainer(params.GetRequestId(), params.GetConsumer(),
                                               item->second.pairs)) {
        m_items.erase(item);
        return true;
    }
    auto shrunk = *item->second.subscriptions;
    std::erase(shrunk, unbooked);
    item->second.subscriptions = std::make_shared<const Subscriptions>(std::move(shrunk));
    return false;
}

// Numbers whose lock nobody holds any more; looked for only when they outweigh those in use.
void SubscriptionBook::ForgetIdleNumbers()
{
    constexpr std::size_t fewNumbers = 64;
    if (m_numbers.size() < 2 * m_count + fewNumbers)
        return;
    std::erase_if(m_numbers, [](const auto& a_number) { return a_number.second.lock.expired(); });
}
