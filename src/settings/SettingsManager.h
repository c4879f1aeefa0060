#pragma once

#include "platform/Export.h"
#include "settings/Settings.h"

#include <memory>
#include <string>
#include <string_view>

/// The pair of files in which a setting survives a restart: the factory file in DefaultSettings, which comes with the
/// installation and is never written, and the user's file of the same name in UserSettings, which starts as its copy.
/// Failures show as empty pointers and false results.
///
/// There is no lock, and threads share nothing here but the files: one thread at a time for one name. That is the main
/// thread where modules are concerned: they read their settings when they are made and initialised, and write them as
/// long as they run. Processes share the files, too; of two that write one at the same time, one leaves its file, and
/// that one whole.
class KALVENTO_API SettingsManager {
public:
    SettingsManager() = delete;

    /// The path of the user's file or of the factory file: a_name with the extension ".xml". Raises as
    /// KalventoPaths::Instance does.
    static std::wstring GenerateSettingsFilePath(bool a_userFile, const std::wstring& a_name);
    /// a_extension includes its point.
    static std::wstring GenerateSettingsFilePath(bool a_userFile, const std::wstring& a_name,
                                                 const std::wstring& a_extension);

    /// The tree of the user's file; where that won't load, the tree of the factory file, which is then saved as the
    /// user's (a failure to save goes unnoticed). Empty, with the disk unchanged, where neither loads. A damaged user
    /// file is first kept aside beside its name, as "name.damaged-YYYYMMDD-HHMMSS", with a line in the log; where even
    /// that fails it stays where it is, and nothing is saved.
    static std::unique_ptr<Settings> LoadCurrentSettingsNode(std::wstring_view a_userPath,
                                                             std::wstring_view a_factoryPath,
                                                             std::string_view a_rootName);
    /// The tree of the factory file; empty where it won't load.
    static std::unique_ptr<Settings> LoadFabricSettingsNode(std::wstring_view a_factoryPath,
                                                            std::string_view a_rootName);

    /// Saves a tree over the user's file; a damaged one is kept aside first. False where that or the saving failed.
    static bool SaveUserSettingsNode(const Settings& a_node, std::wstring_view a_userPath,
                                     std::string_view a_rootName);
};
