#include "console_consumer/ConsoleConsumer.h"
#include "modules/IModuleRegistry.h"
#include "modules/PluginDescription.h"

#include <iostream>
#include <memory>

namespace {

void CreateModules(IModuleRegistry& a_registry, const Settings& a_options)
{
    a_registry.AddConsumer(
        std::make_unique<ConsoleConsumer>(kalvento::host::ScreenOptions(a_options), std::cout));
}

} // namespace

KALVENTO_PLUGIN("console_consumer", "1.0", &CreateModules)
