#pragma once

#include "platform/Export.h"

#include <memory>

class ConsumerBase;
class ProviderBase;

/// Where a plug-in puts the modules that it makes. The host owns them from then on and destroys them before it unloads
/// the plug-in: consumers first, then providers, each in the reverse order of their arrival.
class KALVENTO_API IModuleRegistry {
public:
    virtual ~IModuleRegistry();

    /// Raises std::invalid_argument for null, and for a name that a module of the host already bears: saved data find a
    /// module by its name.
    virtual void AddProvider(std::unique_ptr<ProviderBase> a_provider) = 0;
    virtual void AddConsumer(std::unique_ptr<ConsumerBase> a_consumer) = 0;

    IModuleRegistry(const IModuleRegistry&) = delete;
    IModuleRegistry& operator=(const IModuleRegistry&) = delete;

protected:
    IModuleRegistry() = default;
};
