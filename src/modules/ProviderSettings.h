#pragma once

#include "platform/Export.h"

#include <string>

class Settings;

/// A provider's settings in a pair of files: one that came with the installation, and the user's, which starts as its
/// copy. KalventoPaths must be initialised. The thread is as SettingsManager requires: the main one, and while the
/// plug-in is being started (PluginDescription::createModules, Init) the one that starts it.
class KALVENTO_API ProviderSettings {
public:
    /// The root of the file, the same for all providers.
    static constexpr const char* SettingsNode = "Settings";

    virtual ~ProviderSettings();

    /// Writes all settings into an empty node.
    virtual void WriteSettings(Settings& a_settings) const = 0;
    /// Takes over what WriteSettings wrote.
    virtual void ReadSettings(const Settings& a_settings) = 0;

    /// Loads the files of that name (without folder and extension). False, with nothing read, where there is none.
    bool LoadState(const std::wstring& a_name);
    /// Writes the user's file; a damaged one is kept aside first. False where that failed; then the file is as it was.
    bool SaveState(const std::wstring& a_name) const;
};
