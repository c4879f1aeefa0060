#pragma once

#include "modules/IStatusProvider.h"
#include "platform/Export.h"

/// A plug-in that ties the terminal to an outside system, with a field of its own on the status bar. Whatever else a
/// host and such a plug-in would ask of each other is not here until something needs it.
class KALVENTO_API IIntegrationManager : public IStatusProvider {
public:
    ~IIntegrationManager() override;
};
