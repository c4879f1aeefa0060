#pragma once

#include "modules/IModuleRegistry.h"

#include <memory>
#include <mutex>
#include <string>
#include <vector>

class ConsumerBase;
class ProviderBase;

namespace kalvento::host {

class ModuleDirectory;

/// The modules of one plug-in: what its createModules is given, and what owns them from then on.
class ModuleRegistry : public IModuleRegistry {
public:
    explicit ModuleRegistry(std::shared_ptr<ModuleDirectory> a_directory);
    /// Destroys the modules, consumers first.
    ~ModuleRegistry() override;

    /// Raises std::invalid_argument, with a Polish text, for null and for a name that another module has.
    void AddProvider(std::unique_ptr<ProviderBase> a_provider) override;
    void AddConsumer(std::unique_ptr<ConsumerBase> a_consumer) override;

    /// In the order of their arrival. A copy: a plug-in may add from threads of its own.
    std::vector<ProviderBase*> GetProviders() const;
    std::vector<ConsumerBase*> GetConsumers() const;

    /// Nobody finds these modules from now on, and their names are free for others. What is added later is kept, and
    /// not found.
    void Withdraw();
    // The last module first. Only once the plug-in adds no more.
    void DestroyConsumers();
    void DestroyProviders();

private:
    void CheckName(const std::wstring& a_name);
    template<typename Module>
    void DestroyAll(std::vector<std::unique_ptr<Module>>& a_modules);

    const std::shared_ptr<ModuleDirectory> m_directory;
    mutable std::mutex m_mutex; // of all below
    bool m_withdrawn = false;
    std::vector<std::unique_ptr<ProviderBase>> m_providers;
    std::vector<std::unique_ptr<ConsumerBase>> m_consumers;
};

} // namespace kalvento::host
