#pragma once

#include "host/CallRecords.h"
#include "host/IPluginCalls.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <thread>

namespace kalvento::host {

/// Watches the calls into plug-ins, which run on the main thread and can't be ended from outside: names one that hasn't
/// returned in time, and ends the process where the user wants it to end meanwhile. It has a thread for that.
class CallWatch final : public IPluginCalls {
public:
    struct Behaviour {
        std::chrono::milliseconds deadline = std::chrono::seconds(10);
        /// Both on the watch's own thread. The first tells the user, the second doesn't return; by default standard
        /// error, and the end of the process without anything that the main thread may hold.
        std::function<void(std::wstring_view)> tell;
        std::function<void()> end;
    };

    /// a_records: where the calls are kept; null: nowhere.
    CallWatch(std::shared_ptr<const CallRecords> a_records, Behaviour a_behaviour);
    CallWatch(const CallWatch&) = delete;
    CallWatch& operator=(const CallWatch&) = delete;
    ~CallWatch() override;

    void Enter(const PluginCall& a_call) override;
    void Leave() override;

    /// A question is open to the user: its time doesn't count. May be nested. Main thread.
    class Question {
    public:
        /// a_watch may be null.
        explicit Question(CallWatch* a_watch);
        ~Question();
        Question(const Question&) = delete;
        Question& operator=(const Question&) = delete;

    private:
        CallWatch* const m_watch;
    };

    /// The user wants the program to end (Ctrl-C, SIGTERM): so it does at once where a call is overdue, or as soon as it
    /// is. Any thread.
    void RequestEnd();
    bool IsEndRequested();

private:
    using Clock = std::chrono::steady_clock;
    void Watch();
    void TellOverdue();

    const std::shared_ptr<const CallRecords> m_records;
    const Behaviour m_behaviour;
    std::mutex m_mutex; // of all below
    std::condition_variable m_changed;
    std::optional<PluginCall> m_call; // empty between calls
    Clock::time_point m_deadline;
    Clock::time_point m_asked; // since when a question is open
    int m_questions = 0;
    bool m_isTold = false;
    bool m_isEndRequested = false;
    bool m_isOver = false;
    std::thread m_thread; // last: the others outlive it
};

} // namespace kalvento::host
