#include "modules/ProviderSettings.h"

#include "settings/Settings.h"
#include "settings/SettingsManager.h"

ProviderSettings::~ProviderSettings() = default;

bool ProviderSettings::LoadState(const std::wstring& a_name)
{
    const std::wstring userPath = SettingsManager::GenerateSettingsFilePath(true, a_name);
    const std::wstring factoryPath = SettingsManager::GenerateSettingsFilePath(false, a_name);
    const auto node = SettingsManager::LoadCurrentSettingsNode(userPath, factoryPath, SettingsNode);
    if (!node)
        return false;
    ReadSettings(*node);
    return true;
}

bool ProviderSettings::SaveState(const std::wstring& a_name) const
{
    Settings node;
    WriteSettings(node);
    return SettingsManager::SaveUserSettingsNode(
        node, SettingsManager::GenerateSettingsFilePath(true, a_name), SettingsNode);
}
