// A plug-in of another age: its interface, its description or its compiler is another one.
#include "modules/PluginDescription.h"

extern "C" __attribute__((visibility("default"))) const PluginDescription KalventoPlugin;
const PluginDescription KalventoPlugin = {TEST_ABI, TEST_SIZE, TEST_BUILD,
                                          "Old",    "0.1",     [](IModuleRegistry&, const Settings&) {}};
