#include "modules/IModuleRegistry.h"
#include "modules/PluginDescription.h"
#include "sql_provider/SqlProvider.h"
#include "sql_provider/SqlProviderSettings.h"

#include <memory>

namespace {

// What the host was told for this run goes before what the user keeps.
void CreateModules(IModuleRegistry& a_registry, const Settings& a_options)
{
    SqlProviderSettings settings;
    settings.LoadState(SqlProviderSettings::S_fileName);
    settings.ReadSettings(a_options);
    a_registry.AddProvider(std::make_unique<SqlProvider>(settings.connection));
}

} // namespace

KALVENTO_PLUGIN("sql_provider", "0.1.0", &CreateModules)
