#pragma once

#include "console_consumer/CursesScreen.h"
#include "console_consumer/Watch.h"
#include "host/IScreenModule.h"
#include "host/ScreenOptions.h"
#include "modules/ConsumerBase.h"
#include "modules/RequestIdGenerator.h"
#include "platform/WakeUp.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <iosfwd>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

/// Shows instruments in a terminal: on a screen that follows the data and obeys keys, or as lines of text.
///
/// What providers deliver goes into the watch of its number on their thread; the main thread looks at the watches, at
/// most twenty times a second. A thread of its own waits for keys, for time, and for data to be shown; it touches
/// nothing but the executor.
class ConsoleConsumer : public ConsumerBase, public kalvento::host::IScreenModule {
public:
    /// a_out: where lines go; outlives the consumer.
    ConsoleConsumer(const kalvento::host::ScreenOptions& a_options, std::ostream& a_out);
    ~ConsoleConsumer() override;

    HICON GetTitleBarIconHandle() override { return nullptr; }
    /// Ends the subscriptions, prints what is left, and gives the terminal back.
    void OnStopWork() override;
    /// Subscribes; the first one opens the screen. 0 where the provider refuses. Main thread.
    unsigned int AddInstrument(HWND a_window, const Asset& a_asset) override;
    /// Ends what was started for the asset. Main thread.
    void RemoveInstrument(const Asset& a_asset);
    void ShowMessageLine(std::wstring_view a_text) override;
    void ShowStandingLine(std::wstring_view a_text) override;
    /// Shows what has come; otherwise that happens when it is time. Main thread.
    void Refresh();

    void SymbolDeleted(unsigned int a_requestId, const std::string& a_isin) override;
    void ProcessOperations(unsigned int a_requestId, const HistoryOperations& a_operations) override;
    void ProcessHistory(unsigned int a_requestId, History&& a_history) override;
    void ProcessHistoryEnd(unsigned int a_requestId) override;
    void ProcessSynchronization(unsigned int a_requestId, Synchronization&& a_synchronization) override;
    void ProcessRecord(unsigned int a_requestId, const Record& a_record) override;
    void ProcessCurrentState(unsigned int a_requestId, const CurrentState& a_state) override;
    void ProcessOffers(unsigned int a_requestId, const Offers& a_offers) override;
    void ProcessLatestRecords(unsigned int a_requestId, const LatestRecords& a_records) override;
    void RequestRefused(unsigned int a_requestId, std::wstring_view a_reason) override;
    void RequestEnded(unsigned int a_requestId) override;

private:
    using WatchPtr = std::shared_ptr<Watch>;

    void Deliver(unsigned int a_requestId, const std::function<void(Watch&)>& a_deliver);
    WatchPtr MakeWatch(const Asset& a_asset) const;
    unsigned int Start(const WatchPtr& a_watch);
    void Stop(unsigned int a_requestId);
    void StopAll();
    void ChangeInterval(int a_step);
    void SubscribeAnew();
    void StartThread();
    void Work();
    void Wake();
    void PostRefresh();
    void PostToMainThread(void (ConsoleConsumer::*a_call)());
    void RequestExit();
    void ReadKeys();
    void Obey(EScreenKey a_key);
    void Print();
    void Paint();
    WatchPtr Find(unsigned int a_requestId) const;

    const kalvento::host::ScreenOptions m_options;
    std::ostream& m_out;
    RequestIdGenerator m_requestIds;
    const std::shared_ptr<bool> m_alive = std::make_shared<bool>(true); // posted functions check that it is

    mutable std::mutex m_mutex; // of m_watches; never held while a provider is called
    std::map<unsigned int, WatchPtr> m_watches;

    // Main thread.
    std::unique_ptr<CursesScreen> m_screen;
    std::vector<unsigned int> m_shown; // numbers in the order of the instruments
    std::size_t m_place = 0;
    IntervalAndMultiplicity m_interval;
    bool m_frozen = false;
    bool m_asTable = false;
    bool m_exitRequested = false;
    std::wstring m_message;
    std::wstring m_standing;
    std::chrono::steady_clock::time_point m_messageUntil; // then the keys are shown again
    std::optional<ScreenModel> m_painted;                 // what a frozen screen goes on showing

    kalvento::internal::WakeUp m_event; // wakes the thread
    std::thread m_thread;
    std::atomic<bool> m_quit = false;
    std::atomic<bool> m_dirty = false;         // data came since the last refresh was posted
    std::atomic<bool> m_refreshPosted = false; // and that refresh hasn't run yet
    std::atomic<bool> m_keysPosted =
        false; // as long as keys wait to be read, the thread doesn't look for them
    std::atomic<bool> m_hasScreen = false;
    std::atomic<std::uint64_t> m_delivered = 0; // callbacks, for IdleExit
};
