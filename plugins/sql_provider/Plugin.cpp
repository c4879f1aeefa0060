#include "modules/PluginDescription.h"
#include "provider_kit/CreateProvider.h"
#include "sql_provider/SqlProvider.h"

KALVENTO_PLUGIN("sql_provider", "0.1.0", &CreateProvider<SqlProvider>)
