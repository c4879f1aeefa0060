#pragma once

#include "platform/Export.h"

/// The host, as an integration manager sees it; operations come when something needs them.
class KALVENTO_API IIntegrationManagerMediator {
public:
    virtual ~IIntegrationManagerMediator();

protected:
    IIntegrationManagerMediator() = default;
};
