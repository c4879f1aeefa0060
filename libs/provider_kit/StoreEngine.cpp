#include "provider_kit/StoreEngine.h"

#include "modules/IConsumer.h"
#include "provider_kit/DamagedData.h"
#include "provider_kit/StoreProvider.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <set>
#include <utility>

namespace kalvento::internal {

namespace {

constexpr const wchar_t* S_damaged = L"Danych waloru nie można odczytać; przyczyna jest w dzienniku";

} // namespace

StoreEngine::StoreEngine(StoreProvider& a_provider, std::unique_ptr<IMarketStore> a_store)
    : m_provider(a_provider),
      m_store(std::move(a_store)),
      m_operations(*m_store),
      m_rows(*m_store, m_instruments),
      m_live(a_provider, *m_store, m_rows, m_instruments, m_book,
             {[this](std::chrono::milliseconds a_pause, std::function<void()> a_call) {
                  const std::lock_guard lock(m_mutex);
                  if (m_connected)
                      CallLater(a_pause, std::move(a_call));
                  return m_connected;
              },
              [this](const std::string& a_isin) { Queue([this, a_isin] { CutOffItem(a_isin); }); }}),
      m_steps(*m_store, m_rows, m_instruments, m_book, m_live,
              [this](const std::string& a_isin) { return ReadOperations(a_isin); }),
      m_past([this] { TellPast(); })
{}

StoreEngine::~StoreEngine()
{
    End();
    // First, while all the rest stands: a store that tells its listener to the last ends its threads here at the latest.
    m_store.reset();
}

void StoreEngine::End()
{
    {
        const std::lock_guard switching(m_switch);
        if (std::exchange(m_ended, true))
            return;
        bool isOpen = false;
        {
            const std::lock_guard lock(m_mutex);
            m_quit = true;
            isOpen = std::exchange(m_switchedOn, false);
            m_connected = false;
        }
        if (isOpen)
            CloseStore();
    }
    m_wakePast.notify_all();
    m_live.Quit();
    m_book.Close();
    m_past.join();
    m_live.Join();
}

void StoreEngine::SwitchConnection(bool a_connect)
{
    // Without the lock: a host may answer at once, by switching again.
    if (SwitchStore(a_connect))
        m_provider.NotifyChangeConnectionStatus();
}

// False where there is nothing to switch.
bool StoreEngine::SwitchStore(bool a_connect)
{
    const std::lock_guard switching(m_switch);
    if (m_ended)
        return false;
    {
        const std::lock_guard lock(m_mutex);
        if (m_switchedOn == a_connect)
            return false;
        m_switchedOn = a_connect;
        m_connected = false;
        m_breakReason.clear();
        ++m_connection;
    }
    if (!a_connect) {
        CloseStore();
        return true;
    }
    try {
        m_store->Open(*this);
    } catch (...) {
        LogStoreFailure(m_provider, "StoreEngine::SwitchStore", __LINE__, {});
        const std::lock_guard lock(m_mutex);
        m_breakReason = L"Nie udało się połączyć; przyczyna jest w dzienniku";
    }
    return true;
}

// Whatever the store raises: at the end the consumers are owed their silence, and the threads must be joined.
void StoreEngine::CloseStore()
{
    try {
        m_store->Close();
    } catch (...) {
        LogStoreFailure(m_provider, "StoreEngine::CloseStore", __LINE__, {});
    }
}

EConnectionStatus StoreEngine::GetStatus() const
{
    const std::lock_guard lock(m_mutex);
    if (!m_switchedOn)
        return EConnectionStatusDisconnected;
    return m_connected ? EConnectionStatusConnected : EConnectionStatusConnecting;
}

std::wstring StoreEngine::GetBreakReason() const
{
    const std::lock_guard lock(m_mutex);
    return m_breakReason;
}

HistoryOperations StoreEngine::ReadOperations(const std::string& a_isin)
{
    return m_operations.Read(a_isin,
                             m_keepsOperations ? m_provider.GetOperationFilePath(a_isin) : std::wstring());
}

bool StoreEngine::Start(const Subscribe::StartParams& a_params)
{
    const auto served = std::make_shared<Served>(a_params);
    switch (m_book.Book(m_provider, served)) {
    case SubscriptionBook::EBookingRefused:
        return false;
    case SubscriptionBook::EBookingAlreadyBooked:
        return true;
    case SubscriptionBook::EBookingDone:
        break;
    }
    {
        const std::lock_guard lock(m_mutex);
        m_queue.push_back(served);
    }
    m_wakePast.notify_one();
    return true;
}

void StoreEngine::RowsAdded(const std::string& a_isin)
{
    {
        const std::lock_guard lock(m_mutex);
        if (!m_waiting.empty())
            ReleaseWaiting(&a_isin);
    }
    m_live.Mark(a_isin);
}

void StoreEngine::Broken(const std::wstring& a_reason)
{
    {
        const std::lock_guard lock(m_mutex);
        m_connected = false;
        m_breakReason = a_reason;
        ++m_connection;
    }
    m_provider.NotifyChangeConnectionStatus();
}

void StoreEngine::Restored()
{
    std::uint64_t connection = 0;
    {
        const std::lock_guard lock(m_mutex);
        connection = ++m_connection;
    }
    Queue([this, connection] { Reconnect(connection); });
}

void StoreEngine::InstrumentsChanged()
{
    Queue([this] {
        ReadInstruments();
        Revisit(false);
    });
}

void StoreEngine::TellPast()
{
    for (;;) {
        std::optional<Task> task;
        ServedPtr served;
        {
            std::unique_lock lock(m_mutex);
            if (!WaitForPast(lock))
                return;
            if (!m_tasks.empty()) {
                task = std::move(m_tasks.front());
                m_tasks.pop_front();
            } else {
                served = std::move(m_queue.front());
                m_queue.pop_front();
            }
        }
        if (task)
            RunTask(*task);
        else
            RunStep(served);
    }
}

bool StoreEngine::WaitForPast(std::unique_lock<std::mutex>& a_lock)
{
    for (;;) {
        while (!m_later.empty() && m_later.begin()->first <= Clock::now())
            m_later.extract(m_later.begin()).mapped()();
        if (m_quit)
            return false;
        if (!m_tasks.empty() || !m_queue.empty())
            return true;
        if (m_later.empty())
            m_wakePast.wait(a_lock);
        else
            m_wakePast.wait_until(a_lock, m_later.begin()->first);
    }
}

void StoreEngine::RunTask(const Task& a_task)
{
    try {
        a_task.run();
        m_taskPause.Reset();
    } catch (...) {
        LogStoreFailure(m_provider, "StoreEngine::RunTask", __LINE__, {});
        const std::lock_guard lock(m_mutex);
        CallLater(m_taskPause.Take(), [this, a_task] {
            // With a new connection all is read anew.
            if (m_connection == a_task.connection && m_switchedOn)
                m_tasks.push_back(a_task);
        });
    }
}

void StoreEngine::RunStep(const ServedPtr& a_served)
{
    auto step = SubscriptionSteps::EStepWaits;
    bool hasFailed = false;
    try {
        step = m_steps.Step(*a_served);
        a_served->pause.Reset();
    } catch (const DamagedData&) {
        LogStoreFailure(m_provider, "StoreEngine::RunStep", __LINE__, a_served->GetIsin());
        return m_steps.CutOff(*a_served, S_damaged);
    } catch (...) {
        // Nothing is lost: the stage begins once more.
        LogStoreFailure(m_provider, "StoreEngine::RunStep", __LINE__, a_served->GetIsin());
        hasFailed = true;
    }
    if (step == SubscriptionSteps::EStepDone)
        return;
    {
        const std::lock_guard lock(m_mutex);
        if (step == SubscriptionSteps::EStepMore) {
            m_queue.push_back(a_served);
            return;
        }
        std::erase_if(m_waiting, [](const auto& a_waiting) { return a_waiting->IsOver(); });
        m_waiting.push_back(a_served);
        if (hasFailed)
            RetryStep(a_served);
    }
    if (step == SubscriptionSteps::EStepWaits)
        return;
    // The first row may have come since the step looked for one, and before this one was waiting.
    try {
        if (m_store->GetRowCount(a_served->GetIsin()) > 0)
            RowsAdded(a_served->GetIsin());
    } catch (const DamagedData&) {
        LogStoreFailure(m_provider, "StoreEngine::RunStep", __LINE__, a_served->GetIsin());
        m_steps.CutOff(*a_served, S_damaged);
    } catch (...) {
        LogStoreFailure(m_provider, "StoreEngine::RunStep", __LINE__, a_served->GetIsin());
        const std::lock_guard lock(m_mutex);
        RetryStep(a_served);
    }
}

void StoreEngine::RetryStep(const ServedPtr& a_served)
{
    if (!m_connected)
        return;
    a_served->isRetried = true;
    CallLater(a_served->pause.Take(), [this, a_served] {
        if (!std::exchange(a_served->isRetried, false))
            return; // released meanwhile
        if (const auto place = std::ranges::find(m_waiting, a_served); place != m_waiting.end()) {
            m_waiting.erase(place);
            m_queue.push_back(a_served);
        }
    });
}

void StoreEngine::CallLater(std::chrono::milliseconds a_pause, std::function<void()> a_call)
{
    m_later.emplace(Clock::now() + a_pause, std::move(a_call));
    m_wakePast.notify_one();
}

void StoreEngine::ReadInstruments()
{
    auto now = std::make_shared<const InstrumentList>(m_provider, m_store->ReadInstruments());
    const auto before = m_instruments.Replace(now);
    if (before) {
        // What was made of rows that are others now, whether somebody is served from it or not.
        m_live.DropOldSessions(*before, *now);
        TellConsumers();
        EndWhatIsGone(*before, *now);
    }
    m_provider.AssetsChanged();
}

// Each consumer once, under one of its numbers, so that it can't be destroyed meanwhile.
void StoreEngine::TellConsumers()
{
    std::set<IConsumer*> told;
    for (const auto& subscription : m_book.GetAll())
        if (!told.contains(subscription->GetParams().GetConsumer()) &&
            SubscriptionBook::Tell(*subscription, Served::S_allKinds,
                                   [this](IConsumer& a_consumer, unsigned int /*a_number*/) {
                                       a_consumer.UpdateAssets(&m_provider);
                                   }))
            told.insert(subscription->GetParams().GetConsumer());
}

void StoreEngine::EndWhatIsGone(const InstrumentList& a_before, const InstrumentList& a_now)
{
    for (const auto& subscription : m_book.GetAll()) {
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

// Those whom the live thread tells of the item. Others may never come upon the rows that are damaged.
void StoreEngine::CutOffItem(const std::string& a_isin)
{
    const auto subscriptions = m_book.SubscriptionsOf(a_isin); // the book lets go of those that end
    for (const auto& subscription : *subscriptions) {
        auto& served = static_cast<Served&>(*subscription);
        if (served.isLive || (served.stage > Served::ESession && served.Wants(ParamsBase::S_kindDataCS)))
            m_steps.CutOff(served, S_damaged);
    }
    m_live.DropSession(a_isin);
}

void StoreEngine::Reconnect(std::uint64_t a_connection)
{
    ReadInstruments();
    {
        const std::lock_guard lock(m_mutex);
        if (m_connection != a_connection || !m_switchedOn)
            return;
        m_connected = true;
        m_breakReason.clear();
    }
    m_provider.NotifyChangeConnectionStatus();
    Revisit(true);
}

// After a break (a_synchronize), or when operations may have changed: lets those that wait go on, and visits those that are
// live again.
void StoreEngine::Revisit(bool a_synchronize)
{
    const auto subscriptions = m_book.GetAll();
    std::vector<ServedPtr> revisited;
    for (const auto& subscription : subscriptions) {
        auto served = std::static_pointer_cast<Served>(subscription);
        served->mustCheckOperations = served->GetParams().GetRequestParams().NeedsDataOperationInfo();
        // From the catching up on, the first synchronization has been told.
        const bool synchronizes = a_synchronize && (served->isLive || served->stage == Served::ECatchUp) &&
                                  served->instrument->live && served->Wants(ParamsBase::S_kindDataSynchro);
        if (!served->isLive && !synchronizes)
            continue;
        const bool isQueued = served->stage != Served::ELive; // by an earlier visit
        if (synchronizes) {
            // What comes from now on comes behind the new synchronization.
            const auto lock = served->Lock();
            served->isLive = false;
            served->mustSynchronize = true;
        } else if (!served->isLive || !served->mustCheckOperations) {
            continue;
        }
        served->stage = Served::EOperations;
        if (!isQueued)
            revisited.push_back(std::move(served));
    }
    {
        const std::lock_guard lock(m_mutex);
        ReleaseWaiting(nullptr);
        m_queue.insert(m_queue.end(), revisited.begin(), revisited.end());
    }
    std::set<std::string> items;
    for (const auto& subscription : subscriptions)
        items.insert(subscription->GetIsin());
    m_live.Restart(items);
}

void StoreEngine::Queue(std::function<void()> a_run)
{
    {
        const std::lock_guard lock(m_mutex);
        m_tasks.push_back({std::move(a_run), m_connection});
    }
    m_wakePast.notify_one();
}

void StoreEngine::ReleaseWaiting(const std::string* a_isin)
{
    const auto released =
        std::stable_partition(m_waiting.begin(), m_waiting.end(), [&](const auto& a_served) {
            return a_isin != nullptr && (a_served->GetIsin() != *a_isin || a_served->isRetried);
        });
    for (auto served = released; served != m_waiting.end(); ++served)
        (*served)->isRetried = false;
    m_queue.insert(m_queue.end(), std::make_move_iterator(released),
                   std::make_move_iterator(m_waiting.end()));
    m_waiting.erase(released, m_waiting.end());
    m_wakePast.notify_one();
}

} // namespace kalvento::internal
