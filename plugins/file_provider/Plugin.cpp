#include "file_provider/FileProvider.h"
#include "file_provider/FileProviderSettings.h"
#include "modules/IModuleRegistry.h"
#include "modules/PluginDescription.h"
#include "settings/Settings.h"

#include <memory>

namespace {

// What the host was told for this run goes before what the user keeps.
void CreateModules(IModuleRegistry& a_registry, const Settings& a_options)
{
    FileProviderSettings settings;
    settings.LoadState(FileProviderSettings::S_fileName);
    settings.ReadSettings(a_options);
    a_registry.AddProvider(std::make_unique<FileProvider>(settings.options));
}

} // namespace

KALVENTO_PLUGIN("file_provider", "0.1.0", &CreateModules)
