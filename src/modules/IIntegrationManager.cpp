#include "modules/IIntegrationManager.h"

IIntegrationManager::~IIntegrationManager() = default;
