#include "host/HostMediator.h"

#include "host/CallWatch.h"
#include "host/IHostView.h"
#include "host/MainThreadExecutor.h"
#include "host/ModuleDirectory.h"
#include "modules/ProviderBase.h"

#include <string>
#include <utility>

namespace kalvento::host {

HostMediator::HostMediator(IHostView& a_view, std::shared_ptr<MainThreadExecutor> a_executor,
                           std::shared_ptr<ModuleDirectory> a_directory)
    : m_view(a_view), m_executor(std::move(a_executor)), m_directory(std::move(a_directory))
{}

ProviderBase* HostMediator::GetProviderByName(std::wstring_view a_name)
{
    return m_directory->FindProvider(a_name);
}

IGenericModule* HostMediator::GetModuleByName(const std::wstring& a_name)
{
    return m_directory->FindModule(a_name);
}

int HostMediator::ShowMessage(std::wstring_view a_caption, std::wstring_view a_text, unsigned int a_flags)
{
    const auto ask = [&] {
        const CallWatch::Question question(m_watch.get());
        return m_view.Ask(a_caption, a_text, a_flags);
    };
    return m_executor->CallAndWait(ask).value_or(-1);
}

void HostMediator::ShowMessage(std::wstring_view a_text)
{
    CallOrPost([this, text = std::wstring(a_text)] { m_view.ShowText(text); });
}

void HostMediator::ShowNotificationMessage(std::wstring_view a_text)
{
    CallOrPost([this, text = std::wstring(a_text)] { m_view.ShowNotification(text); });
}

void HostMediator::CallOrPost(std::function<void()> a_function)
{
    if (!m_executor->IsMainThread())
        m_executor->Post(std::move(a_function));
    else if (!m_executor->IsClosed())
        a_function();
}

void HostMediator::AssetsChanged(ProviderBase* a_provider)
{
    m_executor->Post([this, a_provider] {
        // It may have been dropped on the way, or not be ready yet.
        if (m_directory->IsThere(a_provider))
            m_view.AssetsChanged(*a_provider);
    });
}

void HostMediator::NotifyChangeConnectionStatus()
{
    if (m_statusPosted.exchange(true))
        return;
    m_executor->Post([this] {
        m_statusPosted = false; // before the view asks: a change while it asks is announced again
        m_view.ConnectionStatusChanged();
    });
}

void HostMediator::AddOperationsToDoToProgress(unsigned int a_count)
{
    {
        const std::lock_guard lock(m_mutex);
        if (m_operationsDone >= m_operationsTotal)
            m_operationsDone = m_operationsTotal = 0;
        m_operationsTotal += a_count;
    }
    TellProgress();
}

void HostMediator::SetOperationsDidToProgress(unsigned int a_count)
{
    {
        const std::lock_guard lock(m_mutex);
        m_operationsDone = a_count;
    }
    TellProgress();
}

void HostMediator::TellProgress()
{
    if (m_progressPosted.exchange(true))
        return;
    m_executor->Post([this] {
        m_progressPosted = false; // before the numbers are read, as above
        std::unique_lock lock(m_mutex);
        const unsigned int done = m_operationsDone;
        const unsigned int total = m_operationsTotal;
        lock.unlock();
        m_view.Progress(done, total);
    });
}

void HostMediator::PostToMainThread(std::function<void()> a_function)
{
    m_executor->Post(std::move(a_function));
}

void HostMediator::RequestExit(int a_exitCode)
{
    {
        const std::lock_guard lock(m_mutex);
        if (m_exitCode)
            return;
        m_exitCode = a_exitCode;
    }
    m_executor->Post([this] { m_hasExited = true; });
}

std::optional<int> HostMediator::GetExitCode() const
{
    const std::lock_guard lock(m_mutex);
    return m_exitCode;
}

} // namespace kalvento::host
