#pragma once

#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <vector>

class ConsumerBase;
class IGenericModule;
class ProviderBase;

namespace kalvento::host {

/// Which modules there are, by name. It owns none. A module can be found once its Init has ended, so that nobody calls
/// one that isn't ready. Any thread.
class ModuleDirectory {
public:
    /// False where the name is taken.
    bool TakeName(const std::wstring& a_name);
    void FreeName(const std::wstring& a_name);

    /// From now on the module can be found under its name, which was taken before.
    void Enter(ProviderBase& a_provider);
    void Enter(ConsumerBase& a_consumer);
    /// It can no longer be found; an unknown one is ignored.
    void Withdraw(const ProviderBase& a_provider);
    void Withdraw(const ConsumerBase& a_consumer);

    /// Null if there is none of that name.
    ProviderBase* FindProvider(std::wstring_view a_name) const;
    IGenericModule* FindModule(std::wstring_view a_name) const;
    /// Whether it can be found. The pointer is not followed.
    bool IsThere(const ProviderBase* a_provider) const;
    /// In the order of their arrival.
    std::vector<ProviderBase*> GetProviders() const;
    std::vector<ConsumerBase*> GetConsumers() const;

private:
    mutable std::mutex m_mutex;
    std::set<std::wstring> m_names; // including modules that aren't ready
    std::vector<ProviderBase*> m_providers;
    std::vector<ConsumerBase*> m_consumers;
};

} // namespace kalvento::host
