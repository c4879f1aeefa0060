#include "host/Host.h"

#include "host/HostMediator.h"
#include "host/MainThreadExecutor.h"
#include "host/ModuleDirectory.h"
#include "host/PluginLoader.h"
#include "host/WindowlessMediator.h"
#include "modules/PluginBase.h"

#include <utility>

namespace kalvento::host {

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
      m_mediator(a_makeMediator(a_view, m_executor, m_directory)),
      m_loader(std::make_unique<PluginLoader>(std::move(a_options), m_executor, m_directory))
{
    PluginBase::Init(m_mediator.get());
}

Host::~Host()
{
    Stop();
}

void Host::Start()
{
    m_loader->Start();
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
    m_loader->StopModules();
    m_mediator->StopWork();
    m_executor->Close();
    m_loader->DestroyModules();
    if (m_loader->HasAbandoned())
        PluginLoader::KeepForEver(m_mediator);
    else
        PluginBase::Init(nullptr);
    m_loader->Unload();
}

bool Host::IsLoaderBlocked() const
{
    return m_loader->IsLoaderBlocked();
}

} // namespace kalvento::host
