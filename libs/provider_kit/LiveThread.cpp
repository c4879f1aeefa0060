#include "provider_kit/LiveThread.h"

#include "modules/IConsumer.h"
#include "provider_kit/DamagedData.h"
#include "provider_kit/SessionState.h"
#include "provider_kit/StoreParts.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace kalvento::internal {

LiveThread::LiveThread(StoreParts& a_parts, std::function<void(const std::string& a_isin)> a_cutOff)
    : m_parts(a_parts), m_cutOff(std::move(a_cutOff)), m_thread([this] { Run(); })
{}

void LiveThread::Run()
{
    for (auto items = m_parts.live.Take(); !items.empty(); items = m_parts.live.Take())
        for (const std::string& isin : items)
            TryItem(isin);
}

void LiveThread::TryItem(const std::string& a_isin)
{
    try {
        TellItem(a_isin);
        m_parts.live.ForgetFailure(a_isin);
        m_parts.NoteSuccess(a_isin);
    } catch (const DamagedData&) {
        m_parts.NoteDamage("LiveThread::TryItem", __LINE__, a_isin);
        RetryItem(a_isin); // the pause keeps this thread quiet until the end was announced
        m_cutOff(a_isin);
    } catch (...) {
        // The positions stay where they are: the retry, or the new connection, goes on from there.
        m_parts.NoteFailure("LiveThread::TryItem", __LINE__, a_isin);
        RetryItem(a_isin);
    }
}

void LiveThread::RetryItem(const std::string& a_isin)
{
    const auto pause = m_parts.live.NoteFailure(a_isin);
    // Without a connection there is nothing to try: everything starts again with the next one.
    if (m_parts.connection.IsConnected())
        m_parts.past.CallLater(pause, [this, a_isin] { m_parts.live.Retry(a_isin); });
    else
        m_parts.live.ForgetFailure(a_isin);
}

void LiveThread::TellItem(const std::string& a_isin)
{
    const auto subscriptions = m_parts.book.SubscriptionsOf(a_isin);
    const std::shared_ptr<SessionState> session = m_parts.live.UseSession(a_isin, [&] {
        return std::ranges::any_of(*m_parts.book.SubscriptionsOf(a_isin), [](const auto& a_subscription) {
            return a_subscription->Wants(ParamsBase::S_kindDataCS);
        });
    });

    std::vector<Served*> listeners;
    std::uint64_t next = session ? session->GetNextRow() : UINT64_MAX;
    for (const auto& subscription : *subscriptions) {
        auto& served = static_cast<Served&>(*subscription);
        if (!served.Wants(ParamsBase::S_kindDataRecord))
            continue;
        if (const auto position = served.GetLivePosition()) {
            listeners.push_back(&served);
            next = std::min(next, *position);
        }
    }
    if (!session && listeners.empty())
        return;

    const std::uint64_t count = m_parts.store->GetRowCount(a_isin);
    while (next < count) {
        const History rows = m_parts.rows.Read(a_isin, next, std::min(count, next + CheckedRows::S_atOnce));
        for (Served* const listener : listeners)
            listener->TellRows(true, rows, next);
        const std::uint64_t end = next + rows.GetRecordsCount();
        if (session && session->GetNextRow() < end)
            session->Add(rows, static_cast<std::size_t>(session->GetNextRow() - next));
        next = end;
        m_parts.instruments.NoteLastDay(a_isin, rows.TimeSeries().back());
    }
    if (session) {
        session->SetOffers(m_parts.store->ReadOffers(a_isin));
        TellSession(*session, *subscriptions);
    }
}

void LiveThread::TellSession(SessionState& a_session, const SubscriptionBook::Subscriptions& a_subscriptions)
{
    if (!a_session.IsKnown())
        return;
    constexpr unsigned int kind = ParamsBase::S_kindDataCS;
    for (const auto& subscription : a_subscriptions) {
        auto& served = static_cast<Served&>(*subscription);
        if (!served.Wants(kind))
            continue;
        const bool whole = !std::exchange(served.knowsSession, true);
        if (whole || a_session.StateChanged())
            SubscriptionBook::Tell(served, kind, [&](IConsumer& a_consumer, unsigned int a_number) {
                a_consumer.ProcessCurrentState(a_number,
                                               whole ? a_session.GetWholeState() : a_session.GetState());
            });
        const bool hasOffers = a_session.GetOffers().IsAnyDataSeriesSetOrChanged();
        if ((whole && hasOffers) || a_session.OffersChanged())
            SubscriptionBook::Tell(served, kind, [&](IConsumer& a_consumer, unsigned int a_number) {
                a_consumer.ProcessOffers(a_number,
                                         whole ? a_session.GetWholeOffers() : a_session.GetOffers());
            });
        if ((whole && a_session.HasTransactions()) || a_session.LatestChanged())
            SubscriptionBook::Tell(served, kind, [&](IConsumer& a_consumer, unsigned int a_number) {
                a_consumer.ProcessLatestRecords(a_number, a_session.GetLatestRecords());
            });
    }
    a_session.MarkTold();
}

} // namespace kalvento::internal
