#include "modules/IIntegrationManagerMediator.h"

IIntegrationManagerMediator::~IIntegrationManagerMediator() = default;
