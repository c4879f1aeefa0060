#include "provider_kit/StoreEngine.h"

#include "aggregation/AggrWindowsFactory.h"
#include "aggregation/Aggregator.h"
#include "modules/IConsumer.h"
#include "platform/CodePage.h"
#include "provider_kit/DamagedData.h"
#include "provider_kit/StoreProvider.h"
#include "provider_kit/TickShape.h"
#include "series/Record.h"
#include "series/Synchronization.h"
#include "velo/Log.h"
#include "velo/LogAllExceptions.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace kalvento::internal {

namespace {

// Rows that are read, folded and told at once. So much memory a reading takes, and so long another subscription waits.
constexpr std::uint64_t S_partRows = 20'000;

constexpr unsigned int S_allKinds = ~0U;

constexpr const wchar_t* S_damaged = L"Danych waloru nie można odczytać; przyczyna jest w dzienniku";

// Short enough for a store that stumbled once, long enough for one that never gets up.
constexpr std::chrono::milliseconds S_firstPause(250);
constexpr std::chrono::milliseconds S_longestPause = std::chrono::seconds(8);

// The length of the pause that begins now; the next one is longer.
std::chrono::milliseconds TakePause(std::chrono::milliseconds& a_pause)
{
    return std::exchange(a_pause, std::min(2 * a_pause, S_longestPause));
}

unsigned int OfferedKinds(const StoreInstrument& a_instrument)
{
    constexpr unsigned int always = ParamsBase::S_kindDataHistory | ParamsBase::S_kindDataCS;
    return a_instrument.live ? always | ParamsBase::S_kindDataSynchro | ParamsBase::S_kindDataRecord : always;
}

// Whether somebody who was served from the one can't go on with the other.
bool HasOtherRows(const StoreInstrument& a_before, const StoreInstrument* a_now)
{
    return a_now == nullptr || !a_now->interval.Equals(a_before.interval) ||
           a_now->series != a_before.series || a_now->live != a_before.live ||
           a_now->generation != a_before.generation;
}

NDateTime MidnightOf(const NDateTime& a_time)
{
    // The beginning of all time has no calendar date.
    return a_time.GetMonth() == 0 ? a_time : NDateTime(a_time.GetYear(), a_time.GetMonth(), a_time.GetDay());
}

// Empty behind the last day of the calendar. By the number of the day: the field of the year has no place for 9999.
std::optional<NDateTime> DayAfter(const NDateTime& a_time)
{
    const NDateTime day = NDateTime::FromDouble(a_time.GetAbsoluteDay() + 1.0);
    return day.IsValid() ? std::optional(day) : std::nullopt;
}

// A store whose rows go back in time from one reading to the next is told from no more.
void CheckOrder(const std::optional<NDateTime>& a_last, const NDateTime& a_next)
{
    if (a_last && !(*a_last < a_next))
        throw std::runtime_error("Wiersze z magazynu cofają się w czasie"_cp1250);
}

Synchronization SynchronizationOf(History&& a_rows)
{
    Synchronization::Columns columns;
    for (auto& [series, values] : a_rows)
        columns.emplace_back(series, std::move(values));
    return {EIntervalTick, 1, std::move(a_rows).TimeSeries(), std::move(columns)};
}

} // namespace

// A subscription and how far it has been served.
struct StoreEngine::Served : SubscriptionBook::Subscription {
    enum EStage : std::uint32_t {
        EBegin,
        ESession,
        EOperations,
        EPlaces,
        EHistory,
        ESynchronize,
        ECatchUp,
        ELive
    };

    using Subscription::Subscription;

    // The thread of the past alone.
    EStage stage = EBegin;
    std::optional<StoreInstrument> instrument;
    IntervalAndMultiplicity interval;
    std::optional<HistoryOperations> operations; // as told
    std::uint64_t nextHistory = 0;               // row that the history goes on with
    std::uint64_t endHistory = 0;
    std::uint64_t firstSynchronized = 0;
    std::optional<NDateTime> lastHistory; // time of the last row of the history that was read
    std::uint64_t endSynchronized = 0;    // also where records go on without a synchronization
    std::unique_ptr<HistoryFold> fold;
    bool mustSynchronize = false;     // once more, after a break
    bool mustCheckOperations = false; // they may have changed since they were told
    bool historyDone = false;
    std::chrono::milliseconds pause = S_firstPause; // after the next failure
    // Under the engine's mutex.
    bool isRetried = false; // waits for the end of its pause
    // Under Lock; the flag is looked at without it too, so that nobody waits for a past that is being told.
    std::atomic<bool> isLive = false;
    std::uint64_t nextRow = 0;         // to be told as a record
    std::optional<NDateTime> lastTime; // of the row before it, where that was told
    // The live thread alone.
    bool knowsSession = false;
};

StoreEngine::StoreEngine(StoreProvider& a_provider, std::unique_ptr<IMarketStore> a_store)
    : m_provider(a_provider), m_store(std::move(a_store)), m_operations(*m_store), m_taskPause(S_firstPause)
{
    m_past = std::thread([this] { TellPast(); });
    m_live = std::thread([this] { TellLive(); });
}

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
    m_wakeLive.notify_all();
    m_book.Close();
    m_past.join();
    m_live.join();
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
        LogFailure("StoreEngine::SwitchStore", __LINE__, {});
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
        LogFailure("StoreEngine::CloseStore", __LINE__, {});
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

std::shared_ptr<const InstrumentList> StoreEngine::GetInstruments() const
{
    const std::lock_guard lock(m_mutex);
    return m_instruments;
}

std::optional<RangeData> StoreEngine::GetDays(const std::string& a_isin) const
{
    const std::lock_guard lock(m_mutex);
    const StoreInstrument* const instrument = m_instruments->Find(a_isin);
    if (instrument == nullptr)
        return std::nullopt;
    RangeData days(instrument->firstDay, instrument->lastDay);
    const auto seen = m_lastDays.find(a_isin);
    if (seen == m_lastDays.end())
        return days.Validate() ? std::optional(days) : std::nullopt;
    if (!days.Validate())
        return RangeData(seen->second, seen->second);
    if (days.GetDates().to < seen->second)
        days.SetDateTo(seen->second);
    return days;
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
        m_steps.push_back(served);
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
        m_marked.insert(a_isin);
    }
    m_wakeLive.notify_one();
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
                served = std::move(m_steps.front());
                m_steps.pop_front();
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
        if (!m_tasks.empty() || !m_steps.empty())
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
        m_taskPause = S_firstPause;
    } catch (...) {
        LogFailure("StoreEngine::RunTask", __LINE__, {});
        const std::lock_guard lock(m_mutex);
        CallLater(TakePause(m_taskPause), [this, a_task] {
            // With a new connection all is read anew.
            if (m_connection == a_task.connection && m_switchedOn)
                m_tasks.push_back(a_task);
        });
    }
}

void StoreEngine::RunStep(const ServedPtr& a_served)
{
    EStep step = EStepWaits;
    bool hasFailed = false;
    try {
        step = Step(*a_served);
        a_served->pause = S_firstPause;
    } catch (const DamagedData&) {
        LogFailure("StoreEngine::RunStep", __LINE__, a_served->GetIsin());
        return CutOff(*a_served, S_damaged);
    } catch (...) {
        // Nothing is lost: the stage begins once more.
        LogFailure("StoreEngine::RunStep", __LINE__, a_served->GetIsin());
        hasFailed = true;
    }
    if (step == EStepDone)
        return;
    {
        const std::lock_guard lock(m_mutex);
        if (step == EStepMore) {
            m_steps.push_back(a_served);
            return;
        }
        std::erase_if(m_waiting, [](const auto& a_waiting) { return a_waiting->IsOver(); });
        m_waiting.push_back(a_served);
        if (hasFailed)
            RetryStep(a_served);
    }
    if (step == EStepWaits)
        return;
    // The first row may have come since the step looked for one, and before this one was waiting.
    try {
        if (m_store->GetRowCount(a_served->GetIsin()) > 0)
            RowsAdded(a_served->GetIsin());
    } catch (const DamagedData&) {
        LogFailure("StoreEngine::RunStep", __LINE__, a_served->GetIsin());
        CutOff(*a_served, S_damaged);
    } catch (...) {
        LogFailure("StoreEngine::RunStep", __LINE__, a_served->GetIsin());
        const std::lock_guard lock(m_mutex);
        RetryStep(a_served);
    }
}

void StoreEngine::RetryStep(const ServedPtr& a_served)
{
    if (!m_connected)
        return;
    a_served->isRetried = true;
    CallLater(TakePause(a_served->pause), [this, a_served] {
        if (!std::exchange(a_served->isRetried, false))
            return; // released meanwhile
        if (const auto place = std::ranges::find(m_waiting, a_served); place != m_waiting.end()) {
            m_waiting.erase(place);
            m_steps.push_back(a_served);
        }
    });
}

void StoreEngine::CallLater(std::chrono::milliseconds a_pause, std::function<void()> a_call)
{
    m_later.emplace(Clock::now() + a_pause, std::move(a_call));
    m_wakePast.notify_one();
}

// In a handler; a_isin is empty where no item is concerned.
void StoreEngine::LogFailure(const char* a_place, int a_line, const std::string& a_isin) const
{
    std::string text = "Dostawca "_cp1250 + CodePage::WideToCp1250(m_provider.GetName());
    if (!a_isin.empty())
        text += ", walor "_cp1250 + a_isin;
    VeloTools::Log::Instance().Write(a_place, a_line, text + ": magazyn zawiódł"_cp1250);
    LogAllExceptions(a_place, a_line);
}

StoreEngine::EStep StoreEngine::Step(Served& a_served)
{
    if (a_served.IsOver())
        return EStepDone;
    switch (a_served.stage) {
    case Served::EBegin:
        return Begin(a_served);
    case Served::ESession:
        return MakeSession(a_served);
    case Served::EOperations:
        return TellOperations(a_served);
    case Served::EPlaces:
        return FindPlaces(a_served);
    case Served::EHistory:
        return TellHistory(a_served);
    case Served::ESynchronize:
        return Synchronize(a_served);
    case Served::ECatchUp:
        return CatchUp(a_served);
    case Served::ELive:
        break;
    }
    return EStepDone;
}

StoreEngine::EStep StoreEngine::Begin(Served& a_served)
{
    std::shared_ptr<const InstrumentList> list;
    {
        const std::lock_guard lock(m_mutex);
        if (!m_listed)
            return EStepWaits;
        list = m_instruments;
    }
    const StoreInstrument* const instrument = list->Find(a_served.GetIsin());
    const RequestParams& request = a_served.GetParams().GetRequestParams();
    if (instrument == nullptr) {
        Refuse(a_served, L"Nieznany walor");
        return EStepDone;
    }
    if (!a_served.Wants(OfferedKinds(*instrument))) {
        Refuse(a_served, L"Walor nie ma notowań na żywo");
        return EStepDone;
    }
    const IntervalAndMultiplicity interval(request.GetInterval(), request.GetMultiplicity());
    if (request.IsSetHistory() && !HistoryFold::Reaches(*instrument, interval)) {
        Refuse(a_served, L"Waloru nie można pokazać w tym interwale");
        return EStepDone;
    }
    // Where history ends and what is live begins, whatever is added while the past is told. Before all else that takes
    // time: records that no past is asked for with begin with the first row that comes from here on.
    a_served.endSynchronized = m_store->GetRowCount(a_served.GetIsin());
    a_served.instrument = *instrument;
    // Without a history the interval of a request is free, and may be nonsense.
    a_served.interval =
        HistoryFold::Reaches(*instrument, interval) ? interval : IntervalAndMultiplicity(EIntervalTick, 1);
    a_served.stage = Served::ESession;
    return EStepMore;
}

StoreEngine::EStep StoreEngine::MakeSession(Served& a_served)
{
    if (a_served.Wants(ParamsBase::S_kindDataCS))
        EnsureSession(*a_served.instrument);
    a_served.stage = Served::EOperations;
    return EStepMore;
}

void StoreEngine::Refuse(Served& a_served, std::wstring_view a_reason)
{
    m_book.End(a_served, [&](IConsumer& a_consumer, unsigned int a_number) {
        a_consumer.RequestRefused(a_number, a_reason);
    });
}

// Ends what can't go on. A request whose history is cut short can't have been served.
void StoreEngine::CutOff(Served& a_served, std::wstring_view a_reason)
{
    if (a_served.historyDone || !a_served.Wants(ParamsBase::S_kindDataHistory))
        m_book.End(a_served,
                   [](IConsumer& a_consumer, unsigned int a_number) { a_consumer.RequestEnded(a_number); });
    else
        Refuse(a_served, a_reason);
}

StoreEngine::EStep StoreEngine::TellOperations(Served& a_served)
{
    a_served.mustCheckOperations = false;
    if (a_served.GetParams().GetRequestParams().NeedsDataOperationInfo()) {
        HistoryOperations operations = ReadOperations(a_served.GetIsin());
        if (!a_served.operations || !OperationsKeeper::AreEqual(*a_served.operations, operations)) {
            SubscriptionBook::Tell(a_served, S_allKinds, [&](IConsumer& a_consumer, unsigned int a_number) {
                a_consumer.ProcessOperations(a_number, operations);
            });
            a_served.operations = std::move(operations);
        }
    }
    if (!a_served.historyDone) {
        a_served.stage = Served::EPlaces;
        return EStepMore;
    }
    if (!a_served.mustSynchronize) {
        a_served.stage = Served::ELive;
        return EStepDone;
    }
    // From the window of the last row that was told: windows may have passed during the break.
    std::uint64_t told = 0;
    {
        const auto lock = a_served.Lock();
        told = a_served.nextRow;
    }
    a_served.firstSynchronized = FindWindow(a_served, told);
    a_served.endSynchronized = m_store->GetRowCount(a_served.GetIsin());
    a_served.mustSynchronize = false;
    a_served.stage = Served::ESynchronize;
    return EStepMore;
}

StoreEngine::EStep StoreEngine::FindPlaces(Served& a_served)
{
    const std::string& isin = a_served.GetIsin();
    const std::uint64_t count = a_served.endSynchronized;
    const bool synchronizes = a_served.instrument->live && a_served.Wants(ParamsBase::S_kindDataSynchro);
    a_served.firstSynchronized = synchronizes ? FindWindow(a_served, count) : count;
    if (a_served.Wants(ParamsBase::S_kindDataHistory)) {
        const RangeData::Dates dates = a_served.GetParams().GetRequestParams().GetDates();
        a_served.nextHistory = m_store->FindRow(isin, MidnightOf(dates.from));
        a_served.endHistory = a_served.firstSynchronized;
        if (const auto afterLastDay = DayAfter(dates.to))
            a_served.endHistory = std::min(a_served.endHistory, m_store->FindRow(isin, *afterLastDay));
        a_served.fold = std::make_unique<HistoryFold>(*a_served.instrument, a_served.interval);
    }
    a_served.stage = Served::EHistory;
    return EStepMore;
}

StoreEngine::EStep StoreEngine::TellHistory(Served& a_served)
{
    constexpr unsigned int kind = ParamsBase::S_kindDataHistory;
    const auto tell = [&](History&& a_part) {
        if (!a_part.IsEmpty())
            SubscriptionBook::Tell(a_served, kind, [&](IConsumer& a_consumer, unsigned int a_number) {
                a_consumer.ProcessHistory(a_number, std::move(a_part));
            });
    };
    if (a_served.Wants(kind) && a_served.nextHistory < a_served.endHistory) {
        History rows = ReadPart(a_served.GetIsin(), a_served.nextHistory,
                                std::min(a_served.endHistory, a_served.nextHistory + S_partRows));
        const std::size_t count = rows.GetRecordsCount();
        CheckOrder(a_served.lastHistory, rows.TimeSeries().front());
        a_served.lastHistory = rows.TimeSeries().back();
        History part = a_served.fold->Add(std::move(rows));
        a_served.nextHistory += count;
        tell(std::move(part));
        return EStepMore;
    }
    if (a_served.fold) {
        tell(a_served.fold->Finish());
        a_served.fold.reset();
        SubscriptionBook::Tell(a_served, kind, [](IConsumer& a_consumer, unsigned int a_number) {
            a_consumer.ProcessHistoryEnd(a_number);
        });
    }
    a_served.historyDone = true;
    const unsigned int lasting = OfferedKinds(*a_served.instrument) & ~ParamsBase::S_kindDataHistory;
    if (!a_served.Wants(lasting)) {
        m_book.End(a_served,
                   [](IConsumer& a_consumer, unsigned int a_number) { a_consumer.RequestEnded(a_number); });
        return EStepDone;
    }
    a_served.stage = Served::ESynchronize;
    return EStepMore;
}

StoreEngine::EStep StoreEngine::Synchronize(Served& a_served)
{
    std::optional<NDateTime> last;
    if (a_served.instrument->live && a_served.Wants(ParamsBase::S_kindDataSynchro)) {
        // Without a row there is nothing to tie to; the first one makes the synchronization.
        if (a_served.endSynchronized == 0) {
            const std::uint64_t count = m_store->GetRowCount(a_served.GetIsin());
            if (count == 0)
                return EStepWaitsForRows;
            a_served.firstSynchronized = 0;
            a_served.endSynchronized = count;
        }
        Synchronization block = SynchronizationOf(
            ReadPart(a_served.GetIsin(), a_served.firstSynchronized, a_served.endSynchronized));
        a_served.endSynchronized = a_served.firstSynchronized + block.GetRecordsCount();
        last = block.TimeSeries().back();
        SubscriptionBook::Tell(a_served, ParamsBase::S_kindDataSynchro,
                               [&](IConsumer& a_consumer, unsigned int a_number) {
                                   a_consumer.ProcessSynchronization(a_number, std::move(block));
                               });
    }
    {
        const auto lock = a_served.Lock();
        a_served.nextRow = a_served.endSynchronized;
        a_served.lastTime = last;
    }
    a_served.stage = Served::ECatchUp;
    return EStepMore;
}

StoreEngine::EStep StoreEngine::CatchUp(Served& a_served)
{
    const std::string& isin = a_served.GetIsin();
    if (a_served.instrument->live && a_served.Wants(ParamsBase::S_kindDataRecord)) {
        const std::uint64_t first = a_served.nextRow;
        const std::uint64_t count = m_store->GetRowCount(isin);
        // So many rows would hold up the live thread.
        if (count > first + S_partRows) {
            TellRows(a_served, false, ReadPart(isin, first, first + S_partRows), first);
            return EStepMore;
        }
    }
    a_served.isLive = true;
    MarkItem(isin);
    if (a_served.mustCheckOperations) {
        a_served.stage = Served::EOperations;
        return EStepMore;
    }
    a_served.stage = Served::ELive;
    return EStepDone;
}

// The first row of the window that holds the last of a_count rows.
std::uint64_t StoreEngine::FindWindow(const Served& a_served, std::uint64_t a_count)
{
    if (a_count == 0)
        return 0;
    const std::string& isin = a_served.GetIsin();
    const IntervalAndMultiplicity interval = a_served.interval;
    if (interval.IsSingleTick())
        return a_count - 1;
    const NDateTime last = ReadPart(isin, a_count - 1, a_count).TimeSeries().back();
    if (interval.IsTick()) {
        const std::uint64_t firstOfDay = m_store->FindRow(isin, MidnightOf(last));
        return a_count - 1 - (a_count - 1 - firstOfDay) % interval.GetMultiplicity();
    }
    NDateTime begin;
    AggrWindowsFactory::GetAggrWindowClass(
        interval.GetInterval(), static_cast<unsigned short>(interval.GetMultiplicity()), ELastRecordTime)
        ->GetWindowLimits(last, &begin, nullptr);
    return m_store->FindRow(isin, begin);
}

// The live thread goes on with what is made here.
void StoreEngine::EnsureSession(const StoreInstrument& a_instrument)
{
    if (SessionOf(a_instrument.isin))
        return MarkItem(a_instrument.isin);

    const std::string& isin = a_instrument.isin;
    auto session = std::make_shared<SessionState>(a_instrument);
    const std::uint64_t count = m_store->GetRowCount(isin);
    if (count > 0) {
        const NDateTime last = ReadPart(isin, count - 1, count).TimeSeries().back();
        const std::uint64_t first = m_store->FindRow(isin, MidnightOf(last));
        std::optional<double> reference;
        if (first > 0) {
            const History before = ReadPart(isin, first - 1, first);
            if (const auto prices = before.find(Price); prices != before.end() && !prices->second.empty())
                reference = prices->second.back();
        }
        session->BeginAt(first, reference);
        while (session->GetNextRow() < count)
            session->Add(
                ReadPart(isin, session->GetNextRow(), std::min(count, session->GetNextRow() + S_partRows)),
                0);
    }
    session->SetOffers(m_store->ReadOffers(isin));
    {
        const std::lock_guard lock(m_mutex);
        m_sessions[isin] = std::move(session);
    }
    MarkItem(isin);
}

std::shared_ptr<SessionState> StoreEngine::SessionOf(const std::string& a_isin)
{
    const std::lock_guard lock(m_mutex);
    const auto session = m_sessions.find(a_isin);
    return session != m_sessions.end() ? session->second : nullptr;
}

void StoreEngine::ReadInstruments()
{
    auto now = std::make_shared<const InstrumentList>(m_provider, m_store->ReadInstruments());
    std::shared_ptr<const InstrumentList> before;
    bool first = false;
    {
        const std::lock_guard lock(m_mutex);
        before = std::exchange(m_instruments, now);
        first = !std::exchange(m_listed, true);
        // What was made of rows that are others now, whether somebody is served from it or not.
        const auto isOld = [&](const auto& a_known) {
            const StoreInstrument* const known = before->Find(a_known.first);
            return known != nullptr && HasOtherRows(*known, now->Find(a_known.first));
        };
        std::erase_if(m_sessions, isOld);
        std::erase_if(m_lastDays, isOld);
    }
    if (!first) {
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
            SubscriptionBook::Tell(*subscription, S_allKinds,
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
        if (before == nullptr || served.stage == Served::EBegin || !HasOtherRows(*before, now))
            continue;
        if (now == nullptr)
            SubscriptionBook::Tell(served, S_allKinds, [&](IConsumer& a_consumer, unsigned int a_number) {
                a_consumer.SymbolDeleted(a_number, isin);
            });
        CutOff(served, now == nullptr ? L"Walor przestał istnieć" : L"Dane waloru zmieniły się");
    }
}

// Those whom the live thread tells of the item. Others may never come upon the rows that are damaged.
void StoreEngine::CutOffItem(const std::string& a_isin)
{
    for (const auto& subscription : *m_book.SubscriptionsOf(a_isin)) {
        auto& served = static_cast<Served&>(*subscription);
        if (served.isLive || (served.stage > Served::ESession && served.Wants(ParamsBase::S_kindDataCS)))
            CutOff(served, S_damaged);
    }
    const std::lock_guard lock(m_mutex);
    m_sessions.erase(a_isin);
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
        m_failed.clear();
        m_steps.insert(m_steps.end(), revisited.begin(), revisited.end());
        for (const auto& subscription : subscriptions)
            m_marked.insert(subscription->GetIsin());
    }
    m_wakeLive.notify_one();
}

void StoreEngine::TellLive()
{
    for (;;) {
        std::set<std::string> items;
        {
            std::unique_lock lock(m_mutex);
            m_wakeLive.wait(lock, [this] { return m_quit || !m_marked.empty(); });
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
                LogFailure("StoreEngine::TellLive", __LINE__, isin);
                GiveUpItem(isin);
                continue;
            } catch (...) {
                // The positions stay where they are: the retry, or the new connection, goes on from there.
                LogFailure("StoreEngine::TellLive", __LINE__, isin);
                RetryItem(isin);
                continue;
            }
            const std::lock_guard lock(m_mutex);
            m_failed.erase(isin);
        }
    }
}

void StoreEngine::RetryItem(const std::string& a_isin)
{
    const std::lock_guard lock(m_mutex);
    if (!m_connected)
        return;
    Failure& failure = m_failed.try_emplace(a_isin, Failure{S_firstPause, false}).first->second;
    failure.isPending = true;
    CallLater(TakePause(failure.pause), [this, a_isin] {
        const auto failed = m_failed.find(a_isin);
        if (failed == m_failed.end())
            return;
        failed->second.isPending = false;
        m_marked.insert(a_isin);
        m_wakeLive.notify_one();
    });
}

// The end is the other thread's: it alone knows how far each has been served. The pause keeps this one quiet until then.
void StoreEngine::GiveUpItem(const std::string& a_isin)
{
    RetryItem(a_isin);
    Queue([this, a_isin] { CutOffItem(a_isin); });
}

void StoreEngine::TellItem(const std::string& a_isin)
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

    const std::uint64_t count = m_store->GetRowCount(a_isin);
    while (next < count) {
        const History rows = ReadPart(a_isin, next, std::min(count, next + S_partRows));
        for (Served* const listener : listeners)
            TellRows(*listener, true, rows, next);
        const std::uint64_t end = next + rows.GetRecordsCount();
        if (session && session->GetNextRow() < end)
            session->Add(rows, static_cast<std::size_t>(session->GetNextRow() - next));
        next = end;
        NoteLastDay(a_isin, rows.TimeSeries().back());
    }
    if (session) {
        session->SetOffers(m_store->ReadOffers(a_isin));
        TellSession(*session, *subscriptions);
    }
}

void StoreEngine::TellSession(SessionState& a_session, const SubscriptionBook::Subscriptions& a_subscriptions)
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

void StoreEngine::NoteLastDay(const std::string& a_isin, const NDateTime& a_time)
{
    const NDateTime day = MidnightOf(a_time);
    const std::lock_guard lock(m_mutex);
    if (const auto [known, isNew] = m_lastDays.try_emplace(a_isin, day); !isNew && known->second < day)
        known->second = day;
}

// Those of the rows that the subscription is owed, each under its number's lock together with the position. The first of the
// rows has the number a_first. a_isLive: which thread it is, and hence whose turn it must be.
void StoreEngine::TellRows(Served& a_served, bool a_isLive, const History& a_rows, std::uint64_t a_first)
{
    const std::uint64_t end = a_first + a_rows.GetRecordsCount();
    std::optional<Record> record;
    for (;;) {
        const auto lock = a_served.Lock();
        const std::uint64_t row = a_served.nextRow;
        if (a_served.isLive != a_isLive || row < a_first || row >= end ||
            !a_served.Wants(ParamsBase::S_kindDataRecord))
            return;
        const auto place = static_cast<std::size_t>(row - a_first);
        const NDateTime& time = a_rows.TimeSeries()[place];
        CheckOrder(a_served.lastTime, time);
        if (!record)
            record.emplace(a_rows.GetEmptyRecord());
        auto value = record->begin();
        for (const auto& [series, values] : a_rows)
            (value++)->second = values[place];
        record->SetTime(time);
        a_served.nextRow = row + 1;
        a_served.lastTime = time;
        SubscriptionBook::Tell(a_served, ParamsBase::S_kindDataRecord,
                               [&](IConsumer& a_consumer, unsigned int a_number) {
                                   a_consumer.ProcessRecord(a_number, *record);
                               });
    }
}

// Never empty, and as IMarketStore promises: rows that were counted can be read, or the store raises. What is handed on is
// indexed without further looking.
History StoreEngine::ReadPart(const std::string& a_isin, std::uint64_t a_first, std::uint64_t a_last)
{
    const auto refuse = [&](const char* a_message) {
        throw std::runtime_error(std::string(a_message) + ": "_cp1250 + a_isin);
    };
    History rows = m_store->ReadRows(a_isin, a_first, a_last);
    const std::vector<NDateTime>& times = rows.TimeSeries();
    if (times.empty())
        refuse("Magazyn nie oddał wierszy, które policzył"_cp1250);
    if (times.size() > a_last - a_first)
        refuse("Magazyn oddał więcej wierszy, niż miał przeczytać"_cp1250);
    if (!times.front().IsValid() ||
        std::ranges::adjacent_find(times, [](const auto& earlier, const auto& later) {
            return !later.IsValid() || !(earlier < later);
        }) != times.end())
        refuse("Czasy wierszy z magazynu nie rosną"_cp1250);
    if (std::ranges::any_of(rows, [&](const auto& column) { return column.second.size() != times.size(); }))
        refuse("Kolumny wierszy z magazynu nie są równej długości"_cp1250);
    const auto instruments = GetInstruments();
    const StoreInstrument* const instrument = instruments->Find(a_isin);
    // Of one that isn't listed any more the subscriptions are being ended.
    if (instrument != nullptr &&
        !std::ranges::equal(rows, instrument->series, {}, &History::Column::first, &DSProp::GetSeriesID))
        refuse("Serie wierszy z magazynu nie są tymi, które walor ma w spisie"_cp1250);
    return rows;
}

void StoreEngine::Queue(std::function<void()> a_run)
{
    {
        const std::lock_guard lock(m_mutex);
        m_tasks.push_back({std::move(a_run), m_connection});
    }
    m_wakePast.notify_one();
}

void StoreEngine::MarkItem(const std::string& a_isin)
{
    {
        const std::lock_guard lock(m_mutex);
        m_marked.insert(a_isin);
    }
    m_wakeLive.notify_one();
}

void StoreEngine::ReleaseWaiting(const std::string* a_isin)
{
    const auto released =
        std::stable_partition(m_waiting.begin(), m_waiting.end(), [&](const auto& a_served) {
            return a_isin != nullptr && (a_served->GetIsin() != *a_isin || a_served->isRetried);
        });
    for (auto served = released; served != m_waiting.end(); ++served)
        (*served)->isRetried = false;
    m_steps.insert(m_steps.end(), std::make_move_iterator(released),
                   std::make_move_iterator(m_waiting.end()));
    m_waiting.erase(released, m_waiting.end());
    m_wakePast.notify_one();
}

} // namespace kalvento::internal
