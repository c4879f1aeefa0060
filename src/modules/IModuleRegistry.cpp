#include "modules/IModuleRegistry.h"

IModuleRegistry::~IModuleRegistry() = default;
