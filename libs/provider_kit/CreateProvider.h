#pragma once

#include "modules/IModuleRegistry.h"
#include "modules/ProviderBase.h"
#include "settings/Settings.h"

#include <memory>

/// PluginDescription::createModules of a plug-in with one provider that has settings of its own:
///     KALVENTO_PLUGIN("my_quotes", "1.0", &CreateProvider<MyQuotes>)
/// They are read from the pair of files named after the provider; what the host was told for this run takes precedence.
///
/// Provider has the name as `S_name`, a class derived from ProviderSettings as `UserSettings`, of which an absent key
/// leaves what was there, and a constructor from `const UserSettings&`.
template<class Provider>
void CreateProvider(IModuleRegistry& a_registry, const Settings& a_options)
{
    typename Provider::UserSettings settings;
    settings.LoadState(Provider::S_name);
    settings.ReadSettings(a_options);
    a_registry.AddProvider(std::make_unique<Provider>(settings));
}
