#pragma once

#include "platform/Export.h"
#include "settings/Settings.h"

#include <memory>
#include <string>

/// Base of the settings of a module, kept in a pair of files as SettingsManager says, on the threads named there.
///
/// Usual order: Prepare at the module's start, RestoreDefaultSettings when the user asks for it,
/// SaveGivenSettingsAsCurrent when the module stops or the user accepts a change.
class KALVENTO_API GeneralSettingsBase {
public:
    GeneralSettingsBase() = default;
    GeneralSettingsBase(const GeneralSettingsBase&) = default;
    GeneralSettingsBase& operator=(const GeneralSettingsBase&) = default;
    GeneralSettingsBase(GeneralSettingsBase&&) = default;
    GeneralSettingsBase& operator=(GeneralSettingsBase&&) = default;
    virtual ~GeneralSettingsBase() = default;

    // The order of the virtual operations is that of the interface that modules are built against.

    /// The path of the user's file (true) or of the factory file: SettingsManager::GenerateSettingsFilePath with the
    /// name of the module's file.
    virtual std::wstring GenerateFilePath(bool a_userFile) const = 0;
    /// The name of the document element of both files.
    virtual std::string GetRootName() const = 0;
    /// Takes the node's values over. False where they can't be used.
    virtual bool LoadSettings(const Settings& a_node) = 0;
    /// Takes the factory node's values over.
    virtual void RestoreSettings(const Settings& a_node) = 0;
    /// Brings a user's tree of an older version up to date. True where a_user was changed and is to be saved.
    virtual bool UpdateOldVersionUserSettings(const Settings& /*a_factory*/, Settings& /*a_user*/) const
    {
        return false;
    }

    /// Loads both files, updates the user's where it is older, and returns what LoadSettings returns. False, with
    /// LoadSettings not called, where the factory file won't load.
    bool Prepare();
    /// The user's tree, or the factory's, as SettingsManager::LoadCurrentSettingsNode.
    std::unique_ptr<Settings> LoadCurrentSettingsNode() const;
    /// The factory's tree; empty where it won't load.
    std::unique_ptr<Settings> LoadFabricSettingsNode() const;
    /// Calls RestoreSettings with the factory's tree; does nothing where that won't load. The user's file stays as it
    /// is until the module saves.
    void RestoreDefaultSettings();
    /// Saves the tree as the user's file, whose path is asked for afresh.
    bool SaveGivenSettingsAsCurrent(const Settings& a_node) const;

private:
    // Asked for once, at first use: the paths of the process may not be known earlier.
    mutable std::wstring m_userFilePath;
    mutable std::wstring m_factoryFilePath;
};
