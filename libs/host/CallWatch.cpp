#include "host/CallWatch.h"

#include "platform/CodePage.h"
#include "platform/StandardStreams.h"
#include "velo/Log.h"

#include <cstdlib>
#include <string>
#include <utility>

namespace kalvento::host {

namespace {

void TellUser(std::wstring_view a_text)
{
    kalvento::internal::StandardStreams::WriteErrorsNow(CodePage::WideToUtf8(a_text) + '\n');
}

CallWatch::Behaviour WithDefaults(CallWatch::Behaviour a_behaviour)
{
    if (!a_behaviour.tell)
        a_behaviour.tell = &TellUser;
    if (!a_behaviour.end)
        a_behaviour.end = [] { std::_Exit(EXIT_FAILURE); };
    return a_behaviour;
}

} // namespace

CallWatch::CallWatch(std::shared_ptr<const CallRecords> a_records, Behaviour a_behaviour)
    : m_records(std::move(a_records)),
      m_behaviour(WithDefaults(std::move(a_behaviour))),
      m_thread([this] { Watch(); })
{}

CallWatch::~CallWatch()
{
    {
        const std::lock_guard lock(m_mutex);
        m_isOver = true;
        m_changed.notify_all();
    }
    m_thread.join();
}

void CallWatch::Enter(const PluginCall& a_call)
{
    const std::lock_guard lock(m_mutex);
    if (m_records)
        m_records->Write(a_call, false);
    m_call = a_call;
    m_deadline = Clock::now() + m_behaviour.deadline;
    m_isTold = false;
    m_changed.notify_all();
}

void CallWatch::Leave()
{
    const std::lock_guard lock(m_mutex);
    if (!m_call)
        return;
    if (m_records)
        m_records->Clear();
    const PluginCall call = *std::exchange(m_call, std::nullopt);
    if (m_isTold)
        VeloTools::Log::Instance().Write("kalvento::host::CallWatch", __LINE__,
                                         CodePage::WideToCp1250(L"Wtyczka " + call.plugin + L", " +
                                                                call.phase + L": wróciła po terminie"));
}

CallWatch::Question::Question(CallWatch* a_watch) : m_watch(a_watch)
{
    if (m_watch == nullptr)
        return;
    const std::lock_guard lock(m_watch->m_mutex);
    if (m_watch->m_questions++ == 0)
        m_watch->m_asked = Clock::now();
}

CallWatch::Question::~Question()
{
    if (m_watch == nullptr)
        return;
    const std::lock_guard lock(m_watch->m_mutex);
    if (--m_watch->m_questions > 0)
        return;
    m_watch->m_deadline += Clock::now() - m_watch->m_asked;
    m_watch->m_changed.notify_all();
}

void CallWatch::RequestEnd()
{
    const std::lock_guard lock(m_mutex);
    m_isEndRequested = true;
    m_changed.notify_all();
}

bool CallWatch::IsEndRequested()
{
    const std::lock_guard lock(m_mutex);
    return m_isEndRequested;
}

void CallWatch::Watch()
{
    std::unique_lock lock(m_mutex);
    while (!m_isOver) {
        if (m_call && m_isTold && m_isEndRequested)
            m_behaviour.end();
        if (!m_call || m_isTold || m_questions > 0)
            m_changed.wait(lock);
        else if (Clock::now() < m_deadline)
            m_changed.wait_until(lock, m_deadline);
        else
            TellOverdue();
    }
}

void CallWatch::TellOverdue()
{
    m_isTold = true;
    if (m_records)
        m_records->Write(*m_call, true);
    const std::wstring text = L"Wtyczka " + m_call->plugin + L", " + m_call->phase + L": nie wraca od " +
                              std::to_wstring(m_behaviour.deadline.count()) +
                              L" ms; program czeka na nią, Ctrl-C go kończy";
    m_behaviour.tell(text); // and not the log, whose locks the call may hold
}

} // namespace kalvento::host
