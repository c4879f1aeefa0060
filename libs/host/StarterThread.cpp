#include "host/StarterThread.h"

#include "host/MainThreadExecutor.h"

#include <condition_variable>
#include <mutex>
#include <utility>

namespace kalvento::host {

struct StarterThread::Shared {
    explicit Shared(std::shared_ptr<MainThreadExecutor> a_executor) : executor(std::move(a_executor)) {}

    const std::shared_ptr<MainThreadExecutor> executor;
    std::mutex mutex; // of all below
    std::condition_variable changed;
    std::function<void()> step; // empty once the thread has taken it
    bool isDone = false;        // the step that was given last
    bool mustEnd = false;
};

StarterThread::StarterThread(std::shared_ptr<MainThreadExecutor> a_executor)
    : m_shared(std::make_shared<Shared>(std::move(a_executor))),
      m_thread([shared = m_shared] { Loop(shared); })
{}

StarterThread::~StarterThread()
{
    End();
}

void StarterThread::Loop(const std::shared_ptr<Shared>& a_shared)
{
    std::unique_lock lock(a_shared->mutex);
    for (;;) {
        a_shared->changed.wait(lock, [&] { return a_shared->step || a_shared->mustEnd; });
        if (!a_shared->step)
            return;
        std::function<void()> step = std::exchange(a_shared->step, nullptr);
        lock.unlock();
        step();
        step = nullptr; // what it owns dies before the main thread goes on
        lock.lock();
        a_shared->isDone = true;
        a_shared->executor->Post([] {}); // wakes the main thread, which then asks isDone
    }
}

bool StarterThread::Run(std::function<void()> a_step, std::chrono::steady_clock::time_point a_deadline)
{
    {
        const std::lock_guard lock(m_shared->mutex);
        m_shared->isDone = false;
        m_shared->step = std::move(a_step);
        m_shared->changed.notify_one();
    }
    const auto isDone = [this] {
        const std::lock_guard lock(m_shared->mutex);
        return m_shared->isDone;
    };
    if (m_shared->executor->RunUntil(isDone, a_deadline))
        return true;

    {
        const std::lock_guard lock(m_shared->mutex);
        if (m_shared->isDone)
            return true; // at the last moment
        m_shared->mustEnd = true;
    }
    m_thread.detach();
    return false;
}

void StarterThread::End()
{
    if (!m_thread.joinable())
        return;
    {
        const std::lock_guard lock(m_shared->mutex);
        m_shared->mustEnd = true;
        m_shared->changed.notify_one();
    }
    m_thread.join();
}

} // namespace kalvento::host
