#include "provider_kit/StoreEngine.h"

#include "modules/IConsumer.h"
#include "provider_kit/DamagedData.h"

#include <chrono>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace kalvento::internal {

namespace {

constexpr const wchar_t* S_damaged = L"Danych waloru nie można odczytać; przyczyna jest w dzienniku";

} // namespace

StoreEngine::StoreEngine(ProviderBase& a_provider, std::unique_ptr<IMarketStore> a_store)
    : m_parts(a_provider, std::move(a_store)),
      m_live(m_parts, [this](const std::string& a_isin) { AddTask([this, a_isin] { CutOffItem(a_isin); }); }),
      m_steps(m_parts),
      m_past([this] { TellPast(); })
{}

StoreEngine::~StoreEngine()
{
    End();
    // First, while all the rest is still there: a store that calls its listener to the last ends its threads here at
    // the latest.
    m_parts.store.reset();
}

void StoreEngine::End()
{
    m_parts.past.Quit();
    m_parts.live.Quit();
    {
        const std::lock_guard switching(m_switch);
        if (std::exchange(m_hasEnded, true))
            return;
        if (m_parts.connection.Switch(false))
            CloseStore();
    }
    m_parts.book.Close();
    m_past.join();
    m_live.Join();
}

void StoreEngine::SwitchConnection(bool a_connect)
{
    // Without the lock: a host may answer at once, by switching again.
    if (SwitchStore(a_connect))
        m_parts.provider.NotifyChangeConnectionStatus();
}

// False where there is nothing to switch.
bool StoreEngine::SwitchStore(bool a_connect)
{
    const std::lock_guard switching(m_switch);
    if (m_hasEnded || !m_parts.connection.Switch(a_connect))
        return false;
    if (!a_connect) {
        CloseStore();
        return true;
    }
    try {
        m_parts.store->Open(*this);
    } catch (...) {
        LogStoreFailure(m_parts.provider, "StoreEngine::SwitchStore", __LINE__, {});
        m_parts.connection.Fail(L"Nie udało się połączyć: " + FailureText());
    }
    return true;
}

// Whatever the store raises: at the end the consumers are owed their silence, and the threads must be joined.
void StoreEngine::CloseStore()
{
    try {
        m_parts.store->Close();
    } catch (...) {
        LogStoreFailure(m_parts.provider, "StoreEngine::CloseStore", __LINE__, {});
    }
}

bool StoreEngine::Start(const Subscribe::StartParams& a_params)
{
    const auto served = std::make_shared<Served>(a_params);
    switch (m_parts.book.Book(m_parts.provider, served)) {
    case SubscriptionBook::EBookingRefused:
        return false;
    case SubscriptionBook::EBookingAlreadyBooked:
        return true;
    case SubscriptionBook::EBookingDone:
        break;
    }
    m_parts.past.Add(served);
    return true;
}

void StoreEngine::RowsAdded(const std::string& a_isin)
{
    m_parts.past.ReleaseItem(a_isin);
    m_parts.live.Mark(a_isin);
}

void StoreEngine::Broken(const std::wstring& a_reason)
{
    m_parts.connection.Break(a_reason);
    m_parts.provider.NotifyChangeConnectionStatus();
}

void StoreEngine::Restored()
{
    const std::uint64_t news = m_parts.connection.Restore();
    AddTask([this, news] { Reconnect(news); });
}

void StoreEngine::InstrumentsChanged()
{
    AddTask([this] {
        ReadInstruments();
        Revisit(false);
    });
}

void StoreEngine::LeftOut(std::vector<std::wstring> a_faults)
{
    m_parts.TellFaults("store", std::move(a_faults));
}

void StoreEngine::AddTask(std::function<void()> a_task)
{
    m_parts.past.AddTask(
        [this, task = std::move(a_task), news = m_parts.connection.GetNews()] { RunTask(task, news); });
}

void StoreEngine::TellPast()
{
    for (;;) {
        const PastQueue::Turn turn = m_parts.past.Take();
        if (turn.task)
            turn.task();
        else if (turn.served)
            RunStep(turn.served);
        else
            return;
    }
}

void StoreEngine::RunTask(const std::function<void()>& a_task, std::uint64_t a_news)
{
    try {
        a_task();
        m_taskPause.Reset();
        m_parts.NoteSuccess({});
    } catch (...) {
        m_parts.NoteFailure("StoreEngine::RunTask", __LINE__, {});
        m_parts.past.CallLater(m_taskPause.Take(), [this, a_task, a_news] {
            // After a new connection everything is read again.
            if (m_parts.connection.IsOnSince(a_news))
                m_parts.past.AddTask([this, a_task, a_news] { RunTask(a_task, a_news); });
        });
    }
}

void StoreEngine::RunStep(const ServedPtr& a_served)
{
    try {
        const SubscriptionSteps::EStep step = m_steps.Step(*a_served);
        a_served->pause.Reset();
        m_parts.NoteSuccess(a_served->GetIsin());
        if (step == SubscriptionSteps::EStepMore)
            m_parts.past.Add(a_served);
        if (step == SubscriptionSteps::EStepMore || step == SubscriptionSteps::EStepDone)
            return;
        m_parts.past.SetAside(a_served, std::nullopt);
        if (step == SubscriptionSteps::EStepWaitsForRows)
            LookForFirstRow(a_served);
    } catch (const DamagedData&) {
        CutOffDamaged(*a_served);
    } catch (...) {
        // Nothing is lost: the stage starts again.
        m_parts.NoteFailure("StoreEngine::RunStep", __LINE__, a_served->GetIsin());
        std::optional<std::chrono::milliseconds> pause;
        if (m_parts.connection.IsConnected())
            pause = a_served->pause.Take();
        m_parts.past.SetAside(a_served, pause);
    }
}

// It may have come since the step looked for it, and before the subscription was set aside.
void StoreEngine::LookForFirstRow(const ServedPtr& a_served)
{
    try {
        if (m_parts.store->GetRowCount(a_served->GetIsin()) > 0)
            RowsAdded(a_served->GetIsin());
    } catch (const DamagedData&) {
        CutOffDamaged(*a_served);
    } catch (...) {
        m_parts.NoteFailure("StoreEngine::LookForFirstRow", __LINE__, a_served->GetIsin());
        if (m_parts.connection.IsConnected())
            m_parts.past.RetryAfter(a_served->pause.Take(), a_served);
    }
}

// In a handler of DamagedData.
void StoreEngine::CutOffDamaged(Served& a_served)
{
    m_parts.NoteDamage("StoreEngine::CutOffDamaged", __LINE__, a_served.GetIsin());
    m_steps.CutOff(a_served, S_damaged);
}

void StoreEngine::ReadInstruments()
{
    auto now = std::make_shared<const InstrumentList>(m_parts.provider, m_parts.store->ReadInstruments());
    m_parts.ForgetFailures();
    m_parts.TellFaults("list", now->GetLeftOut());
    const auto before = m_parts.instruments.Replace(now);
    if (before) {
        // What was made from stale rows, whether or not a subscription uses it.
        m_parts.live.DropStaleSessions(*before, *now);
        TellConsumers();
        EndWhatIsGone(*before, *now);
    }
    m_parts.provider.AssetsChanged();
}

// Each consumer once, under one of its numbers, so that it can't be destroyed meanwhile.
void StoreEngine::TellConsumers()
{
    std::set<IConsumer*> told;
    for (const auto& subscription : m_parts.book.GetAll())
        if (!told.contains(subscription->GetParams().GetConsumer()) &&
            SubscriptionBook::Tell(*subscription, Served::S_allKinds,
                                   [this](IConsumer& a_consumer, unsigned int /*a_number*/) {
                                       a_consumer.UpdateAssets(&m_parts.provider);
                                   }))
            told.insert(subscription->GetParams().GetConsumer());
}

void StoreEngine::EndWhatIsGone(const InstrumentList& a_before, const InstrumentList& a_now)
{
    for (const auto& subscription : m_parts.book.GetAll()) {
        auto& served = static_cast<Served&>(*subscription);
        const std::string& isin = served.GetIsin();
        const StoreInstrument* const before = a_before.Find(isin);
        const StoreInstrument* const now = a_now.Find(isin);
        if (before == nullptr || served.stage == Served::EBegin ||
            !KnownInstruments::HasOtherRows(*before, now))
            continue;
        if (now == nullptr)
            SubscriptionBook::Tell(served, Served::S_allKinds,
                                   [&](IConsumer& a_consumer, unsigned int a_number) {
                                       a_consumer.SymbolDeleted(a_number, isin);
                                   });
        m_steps.CutOff(served, now == nullptr ? L"Walor przestał istnieć" : L"Dane waloru zmieniły się");
    }
}

// Those whom the live thread serves. Others may never reach the damaged rows.
void StoreEngine::CutOffItem(const std::string& a_isin)
{
    const auto subscriptions = m_parts.book.SubscriptionsOf(a_isin); // the book drops those that end
    for (const auto& subscription : *subscriptions) {
        auto& served = static_cast<Served&>(*subscription);
        const bool wantsSession = served.stage > Served::ESession && served.Wants(ParamsBase::S_kindDataCS);
        if (served.IsLive() || wantsSession)
            m_steps.CutOff(served, S_damaged);
    }
    m_parts.live.DropSession(a_isin);
}

void StoreEngine::Reconnect(std::uint64_t a_news)
{
    ReadInstruments();
    if (!m_parts.connection.Accept(a_news))
        return;
    m_parts.provider.NotifyChangeConnectionStatus();
    Revisit(true);
}

// After a break (a_synchronize), or when operations may have changed: lets waiting ones go on, and visits live ones
// again.
void StoreEngine::Revisit(bool a_synchronize)
{
    std::set<std::string> items;
    std::vector<ServedPtr> revisited;
    for (const auto& subscription : m_parts.book.GetAll()) {
        const auto served = std::static_pointer_cast<Served>(subscription);
        items.insert(served->GetIsin());
        const bool isQueued = served->stage != Served::ELive; // by an earlier visit
        if (MustGoBack(*served, a_synchronize) && !isQueued)
            revisited.push_back(served);
    }
    m_parts.past.ReleaseAll();
    m_parts.past.Add(revisited);
    m_parts.live.Restart(items);
}

// Whether the subscription was already live and starts again at its operations.
bool StoreEngine::MustGoBack(Served& a_served, bool a_synchronize)
{
    a_served.mustCheckOperations = a_served.GetParams().GetRequestParams().NeedsDataOperationInfo();
    // From the catching up on, the first synchronization has been delivered.
    const bool wasSynchronized = a_served.IsLive() || a_served.stage == Served::ECatchUp;
    if (a_synchronize && wasSynchronized && a_served.instrument->live &&
        a_served.Wants(ParamsBase::S_kindDataSynchro)) {
        // Further rows are delivered after the new synchronization.
        a_served.SetLive(false);
        a_served.mustSynchronize = true;
    } else if (!a_served.IsLive() || !a_served.mustCheckOperations) {
        return false;
    }
    a_served.stage = Served::EOperations;
    return true;
}

} // namespace kalvento::internal
