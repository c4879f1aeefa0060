#include "provider_kit/LiveThread.h"

#include "modules/IConsumer.h"
#include "provider_kit/CheckedRows.h"
#include "provider_kit/DamagedData.h"
#include "provider_kit/InstrumentList.h"
#include "provider_kit/KnownInstruments.h"
#include "provider_kit/Served.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace kalvento::internal {

LiveThread::LiveThread(const ProviderBase& a_provider, IMarketStore& a_store, const CheckedRows& a_rows,
                       KnownInstruments& a_instruments, const SubscriptionBook& a_book, Engine a_engine)
    : m_provider(a_provider),
      m_store(a_store),
      m_rows(a_rows),
      m_instruments(a_instruments),
      m_book(a_book),
      m_engine(std::move(a_engine)),
      m_thread([this] { Run(); })
{}

void LiveThread::Quit()
{
    {
        const std::lock_guard lock(m_mutex);
        m_quit = true;
    }
    m_wake.notify_all();
}

void LiveThread::Mark(const std::string& a_isin)
{
    {
        const std::lock_guard lock(m_mutex);
        m_marked.insert(a_isin);
    }
    m_wake.notify_one();
}

void LiveThread::Restart(const std::set<std::string>& a_items)
{
    {
        const std::lock_guard lock(m_mutex);
        m_failed.clear();
        m_marked.insert(a_items.begin(), a_items.end());
    }
    m_wake.notify_one();
}

bool LiveThread::HasSession(const std::string& a_isin) const
{
    const std::lock_guard lock(m_mutex);
    return m_sessions.contains(a_isin);
}

void LiveThread::SetSession(const std::string& a_isin, std::shared_ptr<SessionState> a_session)
{
    {
        const std::lock_guard lock(m_mutex);
        m_sessions[a_isin] = std::move(a_session);
    }
    Mark(a_isin);
}

void LiveThread::DropSession(const std::string& a_isin)
{
    const std::lock_guard lock(m_mutex);
    m_sessions.erase(a_isin);
}

void LiveThread::DropOldSessions(const InstrumentList& a_before, const InstrumentList& a_now)
{
    const std::lock_guard lock(m_mutex);
    std::erase_if(m_sessions, [&](const auto& a_session) {
        const StoreInstrument* const known = a_before.Find(a_session.first);
        return known != nullptr && KnownInstruments::HasOtherRows(*known, a_now.Find(a_session.first));
    });
}

void LiveThread::Run()
{
    for (;;) {
        std::set<std::string> items;
        {
            std::unique_lock lock(m_mutex);
            m_wake.wait(lock, [this] { return m_quit || !m_marked.empty(); });
            if (m_quit)
                return;
            items.swap(m_marked);
            for (const auto& [isin, failure] : m_failed)
                if (failure.isPending)
                    items.erase(isin);
        }
        for (const std::string& isin : items) {
            try {
                TellItem(isin);
            } catch (const DamagedData&) {
                LogStoreFailure(m_provider, "LiveThread::Run", __LINE__, isin);
                RetryItem(isin); // the pause keeps this thread quiet until the end was told
                m_engine.cutOff(isin);
                continue;
            } catch (...) {
                // The positions stay where they are: the retry, or the new connection, goes on from there.
                LogStoreFailure(m_provider, "LiveThread::Run", __LINE__, isin);
                RetryItem(isin);
                continue;
            }
            const std::lock_guard lock(m_mutex);
            m_failed.erase(isin);
        }
    }
}

void LiveThread::RetryItem(const std::string& a_isin)
{
    std::chrono::milliseconds pause{};
    {
        const std::lock_guard lock(m_mutex);
        Failure& failure = m_failed[a_isin];
        failure.isPending = true;
        pause = failure.pause.Take();
    }
    const bool isComing = m_engine.callLater(pause, [this, a_isin] {
        {
            const std::lock_guard lock(m_mutex);
            const auto failed = m_failed.find(a_isin);
            if (failed == m_failed.end())
                return;
            failed->second.isPending = false;
            m_marked.insert(a_isin);
        }
        m_wake.notify_one();
    });
    if (isComing)
        return;
    const std::lock_guard lock(m_mutex);
    m_failed.erase(a_isin);
}

void LiveThread::TellItem(const std::string& a_isin)
{
    const auto subscriptions = m_book.SubscriptionsOf(a_isin);
    const auto wantsSession = [](const auto& a_subscription) {
        return a_subscription->Wants(ParamsBase::S_kindDataCS);
    };
    std::shared_ptr<SessionState> session;
    {
        // Asked anew under the lock: whoever booked since finds no session, and has one made.
        const std::lock_guard lock(m_mutex);
        if (const auto known = m_sessions.find(a_isin); known != m_sessions.end()) {
            if (std::ranges::any_of(*m_book.SubscriptionsOf(a_isin), wantsSession))
                session = known->second;
            else
                m_sessions.erase(known);
        }
    }

    std::vector<Served*> listeners;
    std::uint64_t next = session ? session->GetNextRow() : UINT64_MAX;
    for (const auto& subscription : *subscriptions) {
        auto& served = static_cast<Served&>(*subscription);
        if (!served.isLive || !served.Wants(ParamsBase::S_kindDataRecord))
            continue;
        const auto lock = served.Lock();
        if (!served.isLive)
            continue;
        listeners.push_back(&served);
        next = std::min(next, served.nextRow);
    }
    if (!session && listeners.empty())
        return;

    const std::uint64_t count = m_store.GetRowCount(a_isin);
    while (next < count) {
        const History rows = m_rows.Read(a_isin, next, std::min(count, next + CheckedRows::S_atOnce));
        for (Served* const listener : listeners)
            listener->TellRows(true, rows, next);
        const std::uint64_t end = next + rows.GetRecordsCount();
        if (session && session->GetNextRow() < end)
            session->Add(rows, static_cast<std::size_t>(session->GetNextRow() - next));
        next = end;
        m_instruments.NoteLastDay(a_isin, rows.TimeSeries().back());
    }
    if (session) {
        session->SetOffers(m_store.ReadOffers(a_isin));
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
