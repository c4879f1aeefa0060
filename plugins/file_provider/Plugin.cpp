#include "file_provider/FileProvider.h"
#include "modules/PluginDescription.h"
#include "provider_kit/CreateProvider.h"

KALVENTO_PLUGIN("file_provider", "0.1.0", &CreateProvider<FileProvider>)
