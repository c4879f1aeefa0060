#include "host/ModuleRegistry.h"

#include "host/ModuleDirectory.h"
#include "modules/ConsumerBase.h"
#include "modules/ProviderBase.h"
#include "platform/CodePage.h"

#include <stdexcept>
#include <utility>

namespace kalvento::host {

namespace {

template<typename Module>
std::vector<Module*> PointersTo(const std::vector<std::unique_ptr<Module>>& a_modules)
{
    std::vector<Module*> pointers;
    pointers.reserve(a_modules.size());
    for (const auto& module : a_modules)
        pointers.push_back(module.get());
    return pointers;
}

template<typename Module>
void TakeOut(ModuleDirectory& a_directory, const Module& a_module)
{
    a_directory.Withdraw(a_module);
    a_directory.FreeName(a_module.GetName());
}

} // namespace

ModuleRegistry::ModuleRegistry(std::shared_ptr<ModuleDirectory> a_directory)
    : m_directory(std::move(a_directory))
{}

ModuleRegistry::~ModuleRegistry()
{
    DestroyConsumers();
    DestroyProviders();
}

// Under the lock, so that Withdraw frees exactly the names that were taken.
void ModuleRegistry::CheckName(const std::wstring& a_name)
{
    if (!m_withdrawn && !m_directory->TakeName(a_name))
        throw std::invalid_argument(
            std::string("Jest już moduł o nazwie \""_cp1250) + CodePage::WideToCp1250(a_name) +
            "\"; każdy musi mieć własną, bo po niej znajdują go zapisane dane"_cp1250);
}

void ModuleRegistry::AddProvider(std::unique_ptr<ProviderBase> a_provider)
{
    if (!a_provider)
        throw std::invalid_argument("Wtyczka przekazała pusty wskaźnik zamiast modułu: a_provider"_cp1250);
    const std::lock_guard lock(m_mutex);
    CheckName(a_provider->GetName());
    m_providers.push_back(std::move(a_provider));
}

void ModuleRegistry::AddConsumer(std::unique_ptr<ConsumerBase> a_consumer)
{
    if (!a_consumer)
        throw std::invalid_argument("Wtyczka przekazała pusty wskaźnik zamiast modułu: a_consumer"_cp1250);
    const std::lock_guard lock(m_mutex);
    CheckName(a_consumer->GetName());
    m_consumers.push_back(std::move(a_consumer));
}

std::vector<ProviderBase*> ModuleRegistry::GetProviders() const
{
    const std::lock_guard lock(m_mutex);
    return PointersTo(m_providers);
}

std::vector<ConsumerBase*> ModuleRegistry::GetConsumers() const
{
    const std::lock_guard lock(m_mutex);
    return PointersTo(m_consumers);
}

void ModuleRegistry::Withdraw()
{
    const std::lock_guard lock(m_mutex);
    if (std::exchange(m_withdrawn, true))
        return;
    for (const auto& consumer : m_consumers)
        TakeOut(*m_directory, *consumer);
    for (const auto& provider : m_providers)
        TakeOut(*m_directory, *provider);
}

void ModuleRegistry::DestroyConsumers()
{
    DestroyAll(m_consumers);
}

void ModuleRegistry::DestroyProviders()
{
    DestroyAll(m_providers);
}

// Without the lock: destructors may take long, and nobody adds any more.
template<typename Module>
void ModuleRegistry::DestroyAll(std::vector<std::unique_ptr<Module>>& a_modules)
{
    for (; !a_modules.empty(); a_modules.pop_back())
        if (!m_withdrawn)
            TakeOut(*m_directory, *a_modules.back());
}

} // namespace kalvento::host
