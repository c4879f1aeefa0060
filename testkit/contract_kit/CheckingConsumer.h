#pragma once

#include "history_operations/HistoryOperations.h"
#include "modules/IConsumer.h"
#include "modules/RequestParams.h"
#include "series/CurrentState.h"
#include "series/History.h"
#include "series/LatestRecords.h"
#include "series/Offers.h"
#include "series/Record.h"
#include "series/Synchronization.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

/// A consumer that notes down what it gets, and every breach of the order that IConsumer promises. Safe from any
/// thread. A test says by Open and Close what it asked for, and then checks Violations.
class CheckingConsumer : public IConsumer {
public:
    enum EEvent : std::uint32_t {
        EOperations,
        EHistory,
        EHistoryEnd,
        ESynchronization,
        ERecord,
        ECurrentState,
        EOffers,
        ELatestRecords,
        ERefused,
        EEnded,
        EDeleted
    };
    static constexpr std::chrono::seconds S_patience{30};

    /// To be called before the start of the subscription: its first callback may come at once.
    void Open(unsigned int a_requestId, const RequestParams& a_params)
    {
        const std::lock_guard lock(m_mutex);
        m_requests[a_requestId] = Request();
        m_requests[a_requestId].params = a_params;
    }
    /// To be called when the stop has returned: nothing may come any more.
    void Close(unsigned int a_requestId)
    {
        const std::lock_guard lock(m_mutex);
        Request& request = m_requests[a_requestId];
        request.closed = true;
        if (request.inside != 0 && request.thread != std::this_thread::get_id())
            m_violations.push_back(std::to_string(a_requestId) + ": a callback that runs on after the stop");
    }
    /// After the stop of these kinds has returned.
    void CloseKinds(unsigned int a_requestId, unsigned int a_kinds)
    {
        const std::lock_guard lock(m_mutex);
        auto& params = m_requests[a_requestId].params;
        params.SetKindData(params.GetKindData() & ~a_kinds);
    }
    /// Runs inside each callback, after it has been noted down: to stop from there, or to throw.
    void SetReaction(std::function<void(unsigned int a_requestId, EEvent a_event)> a_reaction)
    {
        const std::lock_guard lock(m_mutex);
        m_reaction = std::move(a_reaction);
    }

    /// False if that many events of the kind don't come in time.
    bool WaitFor(unsigned int a_requestId, EEvent a_event, std::size_t a_count = 1)
    {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, S_patience, [&] { return CountOf(a_requestId, a_event) >= a_count; });
    }
    bool WaitForAny(unsigned int a_requestId)
    {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, S_patience, [&] { return !m_requests[a_requestId].events.empty(); });
    }
    /// Waits for the end of the request, by a refusal or because all was delivered.
    bool WaitForEnd(unsigned int a_requestId)
    {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, S_patience, [&] { return m_requests[a_requestId].over; });
    }
    /// Waits for anything live that comes after a_seen events.
    bool WaitForLive(unsigned int a_requestId, std::size_t a_seen = 0)
    {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, S_patience, [&] { return LiveCountOf(a_requestId) > a_seen; });
    }
    std::size_t Count(unsigned int a_requestId, EEvent a_event)
    {
        const std::lock_guard lock(m_mutex);
        return CountOf(a_requestId, a_event);
    }
    std::size_t LiveCount(unsigned int a_requestId)
    {
        const std::lock_guard lock(m_mutex);
        return LiveCountOf(a_requestId);
    }
    std::vector<EEvent> Events(unsigned int a_requestId)
    {
        const std::lock_guard lock(m_mutex);
        return m_requests[a_requestId].events;
    }
    std::size_t HistoryRows(unsigned int a_requestId)
    {
        const std::lock_guard lock(m_mutex);
        return m_requests[a_requestId].historyRows;
    }
    /// What was not as promised, each with its request number; empty where all is well.
    std::vector<std::string> Violations()
    {
        const std::lock_guard lock(m_mutex);
        return m_violations;
    }

    void SymbolDeleted(unsigned int a_requestId, const std::string& /*a_isin*/) override
    {
        const Inside inside(*this, a_requestId, EDeleted);
    }
    void ProcessOperations(unsigned int a_requestId, const HistoryOperations& /*a_operations*/) override
    {
        const Inside inside(*this, a_requestId, EOperations);
        inside.Expect(inside.request->params.NeedsDataOperationInfo(), "operations that nobody asked for");
    }
    void ProcessHistory(unsigned int a_requestId, History&& a_history) override
    {
        const History history = std::move(a_history);
        const Inside inside(*this, a_requestId, EHistory);
        Request& request = *inside.request;
        inside.Expect(request.params.IsSetHistory(), "a history that nobody asked for");
        inside.Expect(!request.Had(EHistoryEnd), "a history after its end");
        inside.Expect(!request.params.NeedsDataOperationInfo() || request.Had(EOperations),
                      "a history before its operations");
        inside.Expect(
            history.GetIntervalData().Equals(request.params.GetInterval(), request.params.GetMultiplicity()),
            "a history of another interval");
        inside.Expect(!history.IsEmpty(), "an empty part of a history");
        for (const NDateTime& time : history.TimeSeries()) {
            inside.Expect(!request.lastHistoryTime || *request.lastHistoryTime <= time,
                          "history that goes back in time");
            request.lastHistoryTime = time;
        }
        request.historyRows += history.GetRecordsCount();
    }
    void ProcessHistoryEnd(unsigned int a_requestId) override
    {
        const Inside inside(*this, a_requestId, EHistoryEnd);
        inside.Expect(inside.request->params.IsSetHistory(), "the end of a history that nobody asked for");
        inside.Expect(!inside.request->Had(EHistoryEnd), "a second end of the history");
    }
    void ProcessSynchronization(unsigned int a_requestId, Synchronization&& a_synchronization) override
    {
        const Synchronization synchronization = std::move(a_synchronization);
        const Inside inside(*this, a_requestId, ESynchronization);
        inside.Expect(inside.request->params.IsSetSynchro(), "a synchronization that nobody asked for");
        inside.ExpectHistoryDone("a synchronization before the end of the history");
    }
    void ProcessRecord(unsigned int a_requestId, const Record& /*a_record*/) override
    {
        const Inside inside(*this, a_requestId, ERecord);
        const RequestParams& params = inside.request->params;
        inside.Expect((params.GetKindData() & ParamsBase::S_kindDataRecord) != 0,
                      "a record that nobody asked for");
        inside.ExpectHistoryDone("a record before the end of the history");
        inside.Expect(!params.IsSetSynchro() || inside.request->Had(ESynchronization),
                      "a record before the synchronization");
    }
    void ProcessCurrentState(unsigned int a_requestId, const CurrentState& /*a_state*/) override
    {
        const Inside inside(*this, a_requestId, ECurrentState);
        inside.ExpectStateAskedFor();
    }
    void ProcessOffers(unsigned int a_requestId, const Offers& /*a_offers*/) override
    {
        const Inside inside(*this, a_requestId, EOffers);
        inside.ExpectStateAskedFor();
    }
    void ProcessLatestRecords(unsigned int a_requestId, const LatestRecords& /*a_records*/) override
    {
        const Inside inside(*this, a_requestId, ELatestRecords);
        inside.ExpectStateAskedFor();
    }
    void RequestRefused(unsigned int a_requestId, std::wstring_view a_reason) override
    {
        const Inside inside(*this, a_requestId, ERefused);
        inside.Expect(!a_reason.empty(), "a refusal without a reason");
        inside.request->over = true;
    }
    void RequestEnded(unsigned int a_requestId) override
    {
        const Inside inside(*this, a_requestId, EEnded);
        inside.ExpectHistoryDone("an end before the end of the history");
        inside.request->over = true;
    }

private:
    struct Request {
        RequestParams params;
        std::vector<EEvent> events;
        std::optional<NDateTime> lastHistoryTime;
        std::size_t historyRows = 0;
        int inside = 0; // callbacks that run now
        std::thread::id thread;
        bool over = false;   // refused or ended
        bool closed = false; // stopped

        bool Had(EEvent a_event) const
        {
            return std::find(events.begin(), events.end(), a_event) != events.end();
        }
    };

    // One callback: checks on entering, notes down and reacts on leaving. The checks in between hold the lock.
    class Inside {
    public:
        Inside(CheckingConsumer& a_consumer, unsigned int a_requestId, EEvent a_event)
            : request(nullptr),
              m_consumer(a_consumer),
              m_requestId(a_requestId),
              m_event(a_event),
              m_lock(a_consumer.m_mutex)
        {
            const auto known = m_consumer.m_requests.find(a_requestId);
            const bool opened = known != m_consumer.m_requests.end();
            request = opened ? &known->second : &m_consumer.m_requests[a_requestId];
            Expect(opened, "a callback for a number that nobody uses");
            Expect(!request->closed, "a callback after the stop");
            Expect(!request->over, "a callback after the end");
            Expect(request->inside++ == 0, "two callbacks at once");
            request->thread = std::this_thread::get_id();
        }
        ~Inside() noexcept(false)
        {
            request->events.push_back(m_event);
            const auto reaction = m_consumer.m_reaction;
            m_lock.unlock();
            m_consumer.m_changed.notify_all();
            const auto leave = [&] {
                m_lock.lock();
                --request->inside;
            };
            if (reaction) {
                try {
                    reaction(m_requestId, m_event);
                } catch (...) {
                    leave();
                    throw;
                }
            }
            leave();
        }
        Inside(const Inside&) = delete;
        Inside& operator=(const Inside&) = delete;

        void Expect(bool a_kept, const char* a_breach) const
        {
            if (!a_kept)
                m_consumer.m_violations.push_back(std::to_string(m_requestId) + ": " + a_breach);
        }
        void ExpectHistoryDone(const char* a_breach) const
        {
            Expect(!request->params.IsSetHistory() || request->Had(EHistoryEnd), a_breach);
        }
        void ExpectStateAskedFor() const
        {
            Expect((request->params.GetKindData() & ParamsBase::S_kindDataCS) != 0,
                   "a state that nobody asked for");
            Expect(m_event == ECurrentState || request->Had(ECurrentState),
                   "no current state before its companions");
        }

        Request* request;

    private:
        CheckingConsumer& m_consumer;
        unsigned int m_requestId;
        EEvent m_event;
        std::unique_lock<std::mutex> m_lock;
    };

    std::size_t CountOf(unsigned int a_requestId, EEvent a_event)
    {
        const auto& events = m_requests[a_requestId].events;
        return static_cast<std::size_t>(std::count(events.begin(), events.end(), a_event));
    }
    std::size_t LiveCountOf(unsigned int a_requestId)
    {
        const auto& events = m_requests[a_requestId].events;
        return static_cast<std::size_t>(std::count_if(events.begin(), events.end(), [](EEvent a_event) {
            return a_event >= ERecord && a_event <= ELatestRecords;
        }));
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::map<unsigned int, Request> m_requests; // its nodes stay in their places
    std::vector<std::string> m_violations;
    std::function<void(unsigned int, EEvent)> m_reaction;
};
