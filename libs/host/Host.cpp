#include "host/Host.h"

#include "host/CallRecords.h"
#include "host/CallWatch.h"
#include "host/HostMediator.h"
#include "host/MainThreadExecutor.h"
#include "host/ModuleDirectory.h"
#include "host/ModuleStates.h"
#include "host/PluginLoader.h"
#include "host/PluginTrial.h"
#include "host/WindowlessMediator.h"
#include "modules/PluginBase.h"
#include "platform/WidePath.h"
#include "settings/KalventoPaths.h"

#include <utility>

namespace kalvento::host {

namespace {

std::filesystem::path InMemory(const HostOptions& a_options, const char* a_name)
{
    const std::wstring& folder = a_options.memoryFolder;
    return WidePath::ToPath(folder.empty() ? KalventoPaths::Instance().GetNativeUserSettingsPath() : folder) /
           a_name;
}

} // namespace

Host::Host(IHostView& a_view, HostOptions a_options)
    : Host(a_view, std::move(a_options),
           [](IHostView& view, std::shared_ptr<MainThreadExecutor> executor,
              std::shared_ptr<ModuleDirectory> directory) {
               return std::make_shared<WindowlessMediator>(view, std::move(executor), std::move(directory));
           })
{}

Host::Host(IHostView& a_view, HostOptions a_options, const MakeMediator& a_makeMediator)
    : m_executor(std::make_shared<MainThreadExecutor>()),
      m_directory(std::make_shared<ModuleDirectory>()),
      m_options(std::make_shared<const HostOptions>(std::move(a_options))),
      m_records(std::make_shared<const CallRecords>(InMemory(*m_options, "PluginCalls"))),
      m_watch(std::make_shared<CallWatch>(m_records, CallWatch::Behaviour{m_options->callDeadline, {}, {}})),
      m_mediator(a_makeMediator(a_view, m_executor, m_directory)),
      m_loader(std::make_unique<PluginLoader>(m_options, m_directory, m_watch))
{
    m_mediator->SetCallWatch(m_watch);
    PluginBase::Init(m_mediator.get());
}

Host::~Host()
{
    Stop();
}

void Host::Start()
{
    if (m_states)
        return;
    m_states = std::make_unique<ModuleStates>(InMemory(*m_options, "ModuleStates.xml"));
    if (!m_states->GetNotice().empty())
        m_mediator->ShowMessage(m_states->GetNotice());
    PluginTrial trial(m_options, InMemory(*m_options, "PluginTrials.xml"),
                      [this] { return !m_watch->IsEndRequested(); });
    m_loader->Start(trial, *m_states, m_records->FindLeft());
}

const std::vector<PluginReport>& Host::GetReports() const
{
    return m_loader->GetReports();
}

std::vector<ProviderBase*> Host::GetProviders() const
{
    return m_directory->GetProviders();
}

std::vector<ConsumerBase*> Host::GetConsumers() const
{
    return m_directory->GetConsumers();
}

int Host::Run()
{
    m_executor->RunUntil([this] { return m_mediator->HasExited(); });
    return m_mediator->GetExitCode().value_or(0);
}

void Host::Stop()
{
    if (std::exchange(m_stopped, true))
        return;
    // A module joins its threads in StopWork; one of these may be waiting for an answer that we can't give meanwhile.
    m_executor->EndWaiting();
    if (m_states) {
        m_loader->TakeStates(*m_states);
        m_states->Save();
    }
    m_loader->StopModules();
    m_mediator->StopWork();
    m_executor->Close();
    m_loader->DestroyModules();
    PluginBase::Init(nullptr);
    m_loader->Unload();
}

void Host::RequestEnd(int a_exitCode)
{
    m_mediator->RequestExit(a_exitCode);
    m_watch->RequestEnd();
}

} // namespace kalvento::host
