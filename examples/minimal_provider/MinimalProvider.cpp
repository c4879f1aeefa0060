#include "RandomWalk.h"
#include "modules/IModuleRegistry.h"
#include "modules/PluginDescription.h"
#include "provider_kit/StoreProvider.h"

#include <memory>

namespace {

void CreateModules(IModuleRegistry& a_registry, const Settings& /*a_options*/)
{
    a_registry.AddProvider(
        std::make_unique<StoreProvider>(EGenericModuleNone, L"Random walk", std::make_unique<RandomWalk>()));
}

} // namespace

KALVENTO_PLUGIN("minimal_provider", "1.0", &CreateModules)
