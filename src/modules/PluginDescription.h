#pragma once

#include <cstdint>

class IModuleRegistry;
class Settings;

/// What a plug-in says of itself: the one symbol of its shared object that the host looks up, before any function of it
/// runs. Plain data with fixed places: a host must be able to read the first two fields of any version, so they never
/// move, and a new field is added at the end.
struct PluginDescription {
    /// Raised when a class that host and plug-ins share changes its layout or its virtual operations. A host refuses
    /// every other number: a call through a moved slot would not fail but do something else.
    static constexpr std::uint32_t S_abi = 1;
    /// Name of the symbol.
    static constexpr const char* S_symbol = "KalventoPlugin";

    std::uint32_t abi;
    std::uint32_t size;  ///< Of this structure, in bytes.
    const char* build;   ///< KALVENTO_PLUGIN_BUILD of the plug-in: the compiler's traits that decide layouts.
    const char* name;    ///< Of the plug-in, not of its modules; UTF-8. Appears in every report about it.
    const char* version; ///< For the user; UTF-8.
    /// Makes the modules and hands them over. a_options: what the host was told for this plug-in, with keys of the
    /// plug-in's choice; an absent key leaves the default. May raise: the host reports the plug-in and goes on without
    /// it. Called on the main thread, once in the host and before that in the trial of the plug-in's file, a process of
    /// its own: see docs/plugins.md.
    void (*createModules)(IModuleRegistry& a_registry, const Settings& a_options);
};

#define KALVENTO_PLUGIN_TEXT_(a_value) #a_value
#define KALVENTO_PLUGIN_TEXT(a_value) KALVENTO_PLUGIN_TEXT_(a_value)
#ifdef _GLIBCXX_DEBUG
#define KALVENTO_PLUGIN_CONTAINERS "debug"
#else
#define KALVENTO_PLUGIN_CONTAINERS "plain"
#endif
/// Plug-in and host agree on layouts where these agree: in the version of the C++ ABI, the library's strings and its
/// containers.
#define KALVENTO_PLUGIN_BUILD                                                                                \
    "cxxabi " KALVENTO_PLUGIN_TEXT(__GXX_ABI_VERSION) " strings " KALVENTO_PLUGIN_TEXT(                      \
        _GLIBCXX_USE_CXX11_ABI) " containers " KALVENTO_PLUGIN_CONTAINERS

/// Makes a shared object a plug-in; once in one of its sources, outside of any namespace:
///     KALVENTO_PLUGIN("My quotes", "1.0", &CreateModules)
#define KALVENTO_PLUGIN(a_name, a_version, a_createModules)                                                  \
    extern "C" __attribute__((visibility("default"))) const PluginDescription KalventoPlugin;                \
    const PluginDescription KalventoPlugin = {                                                               \
        PluginDescription::S_abi, sizeof(PluginDescription), KALVENTO_PLUGIN_BUILD, a_name, a_version,       \
        a_createModules};
