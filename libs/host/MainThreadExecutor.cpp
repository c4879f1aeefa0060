#include "host/MainThreadExecutor.h"

#include "platform/Descriptors.h"
#include "velo/LogAllExceptions.h"

#include <cstddef>
#include <memory>
#include <utility>

namespace kalvento::host {

namespace {

void CallLogged(const std::function<void()>& a_function)
{
    try {
        a_function();
    } catch (...) {
        LogAllExceptions("kalvento::host::MainThreadExecutor", __LINE__);
    }
}

} // namespace

MainThreadExecutor::MainThreadExecutor() = default;

MainThreadExecutor::~MainThreadExecutor()
{
    Close();
}

void MainThreadExecutor::Post(std::function<void()> a_function)
{
    const std::lock_guard lock(m_mutex);
    if (m_closed)
        return;
    if (m_waiting.empty())
        m_event.Raise();
    m_waiting.push_back(std::move(a_function));
}

bool MainThreadExecutor::IsClosed()
{
    const std::lock_guard lock(m_mutex);
    return m_closed;
}

void MainThreadExecutor::RunAndWait(const std::function<void()>& a_function)
{
    if (IsMainThread()) {
        if (!IsClosed())
            CallLogged(a_function);
        return;
    }

    struct Call {
        bool isStarted = false;
        bool isOver = false;
    };
    const auto call =
        std::make_shared<Call>(); // outlives the caller's wait in a function that is never called
    Post([this, call, &a_function] {
        {
            const std::lock_guard lock(m_mutex);
            if (m_waitingEnded)
                return; // the caller is gone, and a_function with it
            call->isStarted = true;
        }
        CallLogged(a_function);
        const std::lock_guard lock(m_mutex);
        call->isOver = true;
        m_answered.notify_all();
    });
    std::unique_lock lock(m_mutex);
    m_answered.wait(lock, [&] { return call->isOver || (m_waitingEnded && !call->isStarted); });
}

bool MainThreadExecutor::RunOne()
{
    std::function<void()> function;
    {
        const std::lock_guard lock(m_mutex);
        if (m_waiting.empty())
            return false;
        function = std::move(m_waiting.front());
        m_waiting.pop_front();
        if (m_waiting.empty())
            m_event.Lower();
    }
    CallLogged(function);
    return true;
}

void MainThreadExecutor::RunPending()
{
    std::size_t count = 0;
    {
        const std::lock_guard lock(m_mutex);
        count = m_waiting.size();
    }
    while (count-- > 0 && RunOne()) {
    }
}

bool MainThreadExecutor::RunUntil(const std::function<bool()>& a_done,
                                  std::optional<std::chrono::steady_clock::time_point> a_deadline)
{
    for (;;) {
        if (a_done())
            return true;
        if (IsClosed() || (a_deadline && std::chrono::steady_clock::now() >= *a_deadline))
            return false;
        if (RunOne())
            continue;
        kalvento::internal::Descriptors::Awaited event{m_event.GetFd()};
        kalvento::internal::Descriptors::WaitForAny({&event, 1}, a_deadline);
    }
}

void MainThreadExecutor::EndWaiting()
{
    const std::lock_guard lock(m_mutex);
    m_waitingEnded = true;
    m_answered.notify_all();
}

void MainThreadExecutor::Close()
{
    EndWaiting();
    std::deque<std::function<void()>>
        dropped; // destroyed without the lock: what they hold may post when it dies
    const std::lock_guard lock(m_mutex);
    m_closed = true;
    dropped.swap(m_waiting);
    if (!dropped.empty())
        m_event.Lower();
}

} // namespace kalvento::host
