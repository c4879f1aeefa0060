#include "host/ModuleDirectory.h"

#include "modules/ConsumerBase.h"
#include "modules/ProviderBase.h"

#include <algorithm>

namespace kalvento::host {

namespace {

template<typename Module>
Module* Find(const std::vector<Module*>& a_modules, std::wstring_view a_name)
{
    const auto found =
        std::ranges::find_if(a_modules, [&](const Module* module) { return module->GetName() == a_name; });
    return found != a_modules.end() ? *found : nullptr;
}

} // namespace

bool ModuleDirectory::TakeName(const std::wstring& a_name)
{
    const std::lock_guard lock(m_mutex);
    return m_names.insert(a_name).second;
}

void ModuleDirectory::FreeName(const std::wstring& a_name)
{
    const std::lock_guard lock(m_mutex);
    m_names.erase(a_name);
}

void ModuleDirectory::Enter(ProviderBase& a_provider)
{
    const std::lock_guard lock(m_mutex);
    m_providers.push_back(&a_provider);
}

void ModuleDirectory::Enter(ConsumerBase& a_consumer)
{
    const std::lock_guard lock(m_mutex);
    m_consumers.push_back(&a_consumer);
}

void ModuleDirectory::Withdraw(const ProviderBase& a_provider)
{
    const std::lock_guard lock(m_mutex);
    std::erase(m_providers, &a_provider);
}

void ModuleDirectory::Withdraw(const ConsumerBase& a_consumer)
{
    const std::lock_guard lock(m_mutex);
    std::erase(m_consumers, &a_consumer);
}

ProviderBase* ModuleDirectory::FindProvider(std::wstring_view a_name) const
{
    const std::lock_guard lock(m_mutex);
    return Find(m_providers, a_name);
}

IGenericModule* ModuleDirectory::FindModule(std::wstring_view a_name) const
{
    const std::lock_guard lock(m_mutex);
    if (ProviderBase* const provider = Find(m_providers, a_name))
        return provider;
    return Find(m_consumers, a_name);
}

bool ModuleDirectory::IsThere(const ProviderBase* a_provider) const
{
    const std::lock_guard lock(m_mutex);
    return std::ranges::find(m_providers, a_provider) != m_providers.end();
}

std::vector<ProviderBase*> ModuleDirectory::GetProviders() const
{
    const std::lock_guard lock(m_mutex);
    return m_providers;
}

std::vector<ConsumerBase*> ModuleDirectory::GetConsumers() const
{
    const std::lock_guard lock(m_mutex);
    return m_consumers;
}

} // namespace kalvento::host
