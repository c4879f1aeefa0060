#include "console_consumer/ConsoleConsumer.h"

#include "modules/IAppMediator.h"
#include "modules/ProviderBase.h"
#include "modules/Subscribe.h"
#include "platform/CodePage.h"
#include "platform/Descriptors.h"
#include "platform/StandardStreams.h"
#include "series/CurrentState.h"
#include "series/Synchronization.h"
#include "velo/Log.h"
#include "velo/LogAllExceptions.h"

#include <algorithm>
#include <array>
#include <ostream>
#include <utility>

namespace {

using Clock = std::chrono::steady_clock;
using namespace kalvento::internal;
using std::chrono::milliseconds;

constexpr milliseconds S_refreshInterval(50);
constexpr milliseconds S_sizeInterval(250); // a changed size of the terminal shows at the latest then
constexpr std::chrono::seconds S_messageTime(15);
constexpr std::size_t S_screenCandles = 400;

constexpr std::array<IntervalAndMultiplicity, 8> S_intervals = {{{EIntervalTick, 1},
                                                                 {EIntervalSecond, 10},
                                                                 {EIntervalMinute, 1},
                                                                 {EIntervalMinute, 5},
                                                                 {EIntervalMinute, 15},
                                                                 {EIntervalHour, 1},
                                                                 {EIntervalDay, 1},
                                                                 {EIntervalWeek, 1}}};

// A provider that raises, or hands over what can't be shown, must cost its own instrument only: not the thread that is
// joined at the end, nor the other subscriptions, nor the terminal.
bool CallGuarded(const char* a_place, const Asset& a_asset, const std::function<void()>& a_call)
{
    try {
        a_call();
        return true;
    } catch (...) {
        const std::wstring provider = a_asset.IsProviderSet() ? a_asset.GetProvider()->GetName() : L"?";
        VeloTools::Log::Instance().Write(a_place, __LINE__,
                                         "Dostawca "_cp1250 + CodePage::WideToCp1250(provider) +
                                             ", walor "_cp1250 + a_asset.GetIsin());
        LogAllExceptions(a_place, __LINE__);
        return false;
    }
}

// An unexpected end comes as a message too: lines have no place for it, and a screen may show another instrument.
void EndAndTell(Watch& a_watch, std::wstring_view a_reason)
{
    if (a_watch.End(a_reason))
        PluginBase::ShowNotificationMessage(CodePage::Cp1250ToWide(a_watch.GetAsset().GetShortName()) +
                                            L": " + std::wstring(a_reason));
}

} // namespace

ConsoleConsumer::ConsoleConsumer(const kalvento::host::ScreenOptions& a_options, std::ostream& a_out)
    : ConsumerBase(EGenericModuleNone, L"Konsola", L""),
      m_options(a_options),
      m_out(a_out),
      m_interval(a_options.interval)
{}

ConsoleConsumer::~ConsoleConsumer()
{
    ConsoleConsumer::OnStopWork();
}

void ConsoleConsumer::OnStopWork()
{
    StopAll();
    m_quit = true;
    m_event.Raise();
    if (m_thread.joinable())
        m_thread.join();
    m_screen.reset();
}

unsigned int ConsoleConsumer::AddInstrument(HWND /*a_window*/, const Asset& a_asset)
{
    if (!IsRunning())
        return 0;
    WatchPtr watch = MakeWatch(a_asset);
    if (!watch)
        return 0;
    if (!m_options.plain && !m_screen) {
        m_screen = std::make_unique<CursesScreen>();
        m_hasScreen = true;
    }
    StartThread();
    const unsigned int requestId = Start(watch);
    if (requestId != 0)
        m_shown.push_back(requestId);
    Wake();
    return requestId;
}

void ConsoleConsumer::RemoveInstrument(const Asset& a_asset)
{
    std::erase_if(m_shown, [&](unsigned int a_requestId) {
        const WatchPtr watch = Find(a_requestId);
        if (!watch || watch->GetAsset() != a_asset)
            return false;
        Stop(a_requestId);
        return true;
    });
    m_place = 0;
}

ConsoleConsumer::WatchPtr ConsoleConsumer::MakeWatch(const Asset& a_asset) const
{
    WatchPtr watch;
    CallGuarded("ConsoleConsumer::MakeWatch", a_asset,
                [&] { watch = Watch::Make(a_asset, m_interval, m_options); });
    return watch;
}

unsigned int ConsoleConsumer::Start(const WatchPtr& a_watch)
{
    const unsigned int requestId = m_requestIds.GetNextRequestId();
    {
        // Before the start: the first callback may come from within it.
        const std::lock_guard lock(m_mutex);
        m_watches[requestId] = a_watch;
    }
    const Subscribe::StartParams params(this, requestId, a_watch->GetAsset(), a_watch->GetRequestParams());
    bool started = false;
    if (CallGuarded("ConsoleConsumer::Start", a_watch->GetAsset(),
                    [&] { started = a_watch->GetAsset().GetProvider()->StartSubscription(params); }) &&
        started)
        return requestId;
    const std::lock_guard lock(m_mutex);
    m_watches.erase(requestId);
    return 0;
}

void ConsoleConsumer::Stop(unsigned int a_requestId)
{
    const WatchPtr watch = Find(a_requestId);
    if (!watch)
        return;
    CallGuarded("ConsoleConsumer::Stop", watch->GetAsset(), [&] {
        watch->GetAsset().GetProvider()->StopSubscription(
            Subscribe::StopParams(this, a_requestId, watch->GetAsset(), std::nullopt));
    });
    const std::lock_guard lock(m_mutex);
    m_watches.erase(a_requestId);
}

void ConsoleConsumer::StopAll()
{
    std::map<unsigned int, WatchPtr> watches;
    {
        const std::lock_guard lock(m_mutex);
        watches = m_watches;
    }
    for (const auto& [number, watch] : watches)
        Stop(number);
    if (m_options.plain) {
        for (const auto& [number, watch] : watches)
            m_out << watch->TakeLines();
        m_out.flush();
    }
    m_shown.clear();
}

// Goes to the next interval of the list in that direction, for all instruments.
void ConsoleConsumer::ChangeInterval(int a_step)
{
    const auto isShorter = [](IntervalAndMultiplicity a_left, IntervalAndMultiplicity a_right) {
        return std::pair(a_left.GetInterval(), a_left.GetMultiplicity()) <
               std::pair(a_right.GetInterval(), a_right.GetMultiplicity());
    };
    std::optional<IntervalAndMultiplicity> chosen;
    for (const IntervalAndMultiplicity interval : S_intervals) {
        if (a_step > 0 && isShorter(m_interval, interval) && !chosen)
            chosen = interval;
        if (a_step < 0 && isShorter(interval, m_interval))
            chosen = interval;
    }
    if (!chosen)
        return;
    m_interval = *chosen;
    SubscribeAnew();
}

void ConsoleConsumer::SubscribeAnew()
{
    for (unsigned int& number : m_shown) {
        const WatchPtr watch = Find(number);
        if (!watch)
            continue;
        // What the provider has withdrawn stays as it is.
        WatchPtr next = MakeWatch(watch->GetAsset());
        if (!next)
            continue;
        Stop(number);
        if (const unsigned int started = Start(next); started != 0) {
            number = started;
            continue;
        }
        next->End(L"Dostawca odmówił danych");
        const std::lock_guard lock(m_mutex);
        m_watches[number] = std::move(next);
    }
}

ConsoleConsumer::WatchPtr ConsoleConsumer::Find(unsigned int a_requestId) const
{
    const std::lock_guard lock(m_mutex);
    const auto found = m_watches.find(a_requestId);
    return found == m_watches.end() ? nullptr : found->second;
}

void ConsoleConsumer::Deliver(unsigned int a_requestId, const std::function<void(Watch&)>& a_deliver)
{
    const WatchPtr watch = Find(a_requestId);
    if (!watch)
        return;
    CallGuarded("ConsoleConsumer::Deliver", watch->GetAsset(), [&] { a_deliver(*watch); });
    ++m_delivered;
    Wake();
}

void ConsoleConsumer::SymbolDeleted(unsigned int a_requestId, const std::string& /*a_isin*/)
{
    Deliver(a_requestId, [](Watch& a_watch) { EndAndTell(a_watch, L"Instrument wycofany z notowań"); });
}

void ConsoleConsumer::ProcessOperations(unsigned int a_requestId, const HistoryOperations& a_operations)
{
    Deliver(a_requestId, [&](Watch& a_watch) { a_watch.SetOperations(a_operations); });
}

void ConsoleConsumer::ProcessHistory(unsigned int a_requestId, History&& a_history)
{
    Deliver(a_requestId, [&](Watch& a_watch) { a_watch.AddHistory(std::move(a_history)); });
}

void ConsoleConsumer::ProcessHistoryEnd(unsigned int a_requestId)
{
    Deliver(a_requestId, [](Watch& a_watch) { a_watch.HistoryEnd(); });
}

void ConsoleConsumer::ProcessSynchronization(unsigned int a_requestId, Synchronization&& a_synchronization)
{
    Deliver(a_requestId, [&](Watch& a_watch) { a_watch.SetSynchronization(std::move(a_synchronization)); });
}

void ConsoleConsumer::ProcessRecord(unsigned int a_requestId, const Record& a_record)
{
    Deliver(a_requestId, [&](Watch& a_watch) { a_watch.AddRecord(a_record); });
}

void ConsoleConsumer::ProcessCurrentState(unsigned int a_requestId, const CurrentState& a_state)
{
    Deliver(a_requestId, [&](Watch& a_watch) { a_watch.SetState(a_state); });
}

void ConsoleConsumer::ProcessOffers(unsigned int a_requestId, const Offers& a_offers)
{
    Deliver(a_requestId, [&](Watch& a_watch) { a_watch.SetOffers(a_offers); });
}

void ConsoleConsumer::ProcessLatestRecords(unsigned int a_requestId, const LatestRecords& a_records)
{
    Deliver(a_requestId, [&](Watch& a_watch) { a_watch.SetTrades(a_records); });
}

void ConsoleConsumer::RequestRefused(unsigned int a_requestId, std::wstring_view a_reason)
{
    Deliver(a_requestId, [&](Watch& a_watch) { EndAndTell(a_watch, a_reason); });
}

void ConsoleConsumer::RequestEnded(unsigned int a_requestId)
{
    Deliver(a_requestId, [](Watch& a_watch) {
        const std::wstring_view reason = L"Koniec danych";
        if (a_watch.GetRequestParams().IsSetOnlyHistory())
            a_watch.End(reason);
        else
            EndAndTell(a_watch, reason);
    });
}

void ConsoleConsumer::ShowMessageLine(std::wstring_view a_text)
{
    m_message = a_text;
    m_messageUntil = Clock::now() + S_messageTime;
    Wake();
}

void ConsoleConsumer::ShowStandingLine(std::wstring_view a_text)
{
    m_standing = a_text;
    Wake();
}

void ConsoleConsumer::StartThread()
{
    if (!m_thread.joinable())
        m_thread = std::thread([this] { Work(); });
}

void ConsoleConsumer::Wake()
{
    if (!m_dirty.exchange(true))
        m_event.Raise();
}

void ConsoleConsumer::PostRefresh()
{
    if (GetAppMediator() == nullptr || m_refreshPosted.exchange(true))
        return;
    m_dirty = false;
    PostToMainThread(&ConsoleConsumer::Refresh);
}

void ConsoleConsumer::PostToMainThread(void (ConsoleConsumer::*a_call)())
{
    if (IAppMediator* const mediator = GetAppMediator())
        mediator->PostToMainThread([this, a_call, alive = std::weak_ptr(m_alive)] {
            if (!alive.expired())
                (this->*a_call)();
        });
}

void ConsoleConsumer::RequestExit()
{
    if (IAppMediator* const mediator = GetAppMediator())
        mediator->RequestExit(0);
}

void ConsoleConsumer::Work()
{
    Clock::time_point lastRefresh = Clock::now() - S_refreshInterval;
    Clock::time_point lastData = Clock::now();
    std::uint64_t delivered = m_delivered;
    while (!m_quit) {
        const Clock::time_point now = Clock::now();
        const auto sinceRefresh = std::chrono::duration_cast<milliseconds>(now - lastRefresh);
        if ((m_dirty && sinceRefresh >= S_refreshInterval && !m_refreshPosted) ||
            (m_hasScreen && sinceRefresh >= S_sizeInterval)) {
            PostRefresh();
            lastRefresh = now;
        }
        if (m_delivered != delivered) {
            delivered = m_delivered;
            lastData = now;
        } else if (m_options.idleExit > 0 && now - lastData >= std::chrono::seconds(m_options.idleExit)) {
            RequestExit();
            lastData = now;
        }
        const bool isWaiting = m_dirty || m_hasScreen || m_options.idleExit > 0;
        std::array<Descriptors::Awaited, 2> awaited = {
            {{m_event.GetFd()}, {m_hasScreen && !m_keysPosted ? StandardStreams::EInput : -1}}};
        Descriptors::WaitForAny(awaited,
                                isWaiting ? std::optional(Clock::now() + S_refreshInterval) : std::nullopt);
        m_event.Lower();
        if (awaited[1].isReady && !m_quit) {
            m_keysPosted = true;
            PostToMainThread(&ConsoleConsumer::ReadKeys);
        }
    }
}

void ConsoleConsumer::ReadKeys()
{
    if (m_screen) {
        const bool hasGone = CursesScreen::HasGone();
        bool any = false;
        while (const std::optional<EScreenKey> key = m_screen->ReadKey()) {
            any = true;
            Obey(*key);
        }
        if (!any && hasGone)
            Obey(EKeyQuit);
        Paint();
    }
    m_keysPosted = false;
    m_event.Raise();
}

void ConsoleConsumer::Obey(EScreenKey a_key)
{
    const std::size_t count = std::max<std::size_t>(m_shown.size(), 1);
    m_message.clear();
    if (a_key <= EKeyAgain)
        m_frozen = false; // the picture held is that of another instrument or interval
    switch (a_key) {
    case EKeyNextInstrument:
        m_place = (m_place + 1) % count;
        break;
    case EKeyPreviousInstrument:
        m_place = (m_place + count - 1) % count;
        break;
    case EKeyLongerInterval:
        ChangeInterval(1);
        break;
    case EKeyShorterInterval:
        ChangeInterval(-1);
        break;
    case EKeyAgain:
        SubscribeAnew();
        break;
    case EKeyFreeze:
        m_frozen = !m_frozen;
        break;
    case EKeyChart:
        m_asTable = false;
        break;
    case EKeyTable:
        m_asTable = true;
        break;
    case EKeyQuit:
        RequestExit();
        break;
    case EKeyOther:
        break;
    }
}

void ConsoleConsumer::Refresh()
{
    m_refreshPosted = false;
    if (!IsRunning())
        return;
    if (m_options.plain)
        Print();
    else if (m_screen)
        Paint();
    if (!m_options.exitAtEnd || m_exitRequested || m_shown.empty())
        return;
    m_exitRequested = std::all_of(m_shown.begin(), m_shown.end(), [this](unsigned int a_requestId) {
        const WatchPtr watch = Find(a_requestId);
        return !watch || watch->HasEnded();
    });
    if (m_exitRequested)
        RequestExit();
}

void ConsoleConsumer::Print()
{
    bool any = false;
    for (const unsigned int number : m_shown) {
        const WatchPtr watch = Find(number);
        if (!watch)
            continue;
        const std::string lines = watch->TakeLines();
        any = any || !lines.empty();
        m_out << lines;
    }
    if (any)
        m_out.flush();
    // The reader has gone: there is nobody to print for.
    if (!m_out)
        RequestExit();
}

void ConsoleConsumer::Paint()
{
    const auto [width, height] = m_screen->FollowSize();
    if (Clock::now() >= m_messageUntil)
        m_message.clear();
    if (!m_frozen || !m_painted) {
        const WatchPtr watch = m_place < m_shown.size() ? Find(m_shown[m_place]) : nullptr;
        if (!watch)
            return;
        const Asset& asset = watch->GetAsset();
        ScreenModel model;
        model.symbol = CodePage::Cp1250ToWide(asset.GetShortName());
        model.name = CodePage::Cp1250ToWide(asset.GetLongName());
        model.provider = asset.GetProvider()->GetName();
        model.status = asset.GetProvider()->GetConnectionStatus();
        model.place = m_place;
        model.count = m_shown.size();
        model.inColour = m_screen->HasColours();
        model.data = watch->Look(S_screenCandles);
        m_painted = std::move(model);
    }
    m_painted->frozen = m_frozen;
    m_painted->asTable = m_asTable;
    m_painted->message = m_message.empty() ? m_standing : m_message;
    m_screen->Paint(RenderScreen(*m_painted, width, height));
}
