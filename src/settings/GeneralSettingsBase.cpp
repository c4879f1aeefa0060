#include "settings/GeneralSettingsBase.h"

#include "settings/SettingsManager.h"

bool GeneralSettingsBase::Prepare()
{
    const auto factory = LoadFabricSettingsNode();
    const auto current = LoadCurrentSettingsNode();
    if (!factory || !current)
        return false;
    if (UpdateOldVersionUserSettings(*factory, *current))
        SaveGivenSettingsAsCurrent(*current);
    return LoadSettings(*current);
}

std::unique_ptr<Settings> GeneralSettingsBase::LoadCurrentSettingsNode() const
{
    if (m_userFilePath.empty())
        m_userFilePath = GenerateFilePath(true);
    if (m_factoryFilePath.empty())
        m_factoryFilePath = GenerateFilePath(false);
    return SettingsManager::LoadCurrentSettingsNode(m_userFilePath, m_factoryFilePath, GetRootName());
}

std::unique_ptr<Settings> GeneralSettingsBase::LoadFabricSettingsNode() const
{
    if (m_factoryFilePath.empty())
        m_factoryFilePath = GenerateFilePath(false);
    return SettingsManager::LoadFabricSettingsNode(m_factoryFilePath, GetRootName());
}

void GeneralSettingsBase::RestoreDefaultSettings()
{
    if (const auto factory = LoadFabricSettingsNode())
        RestoreSettings(*factory);
}

bool GeneralSettingsBase::SaveGivenSettingsAsCurrent(const Settings& a_node) const
{
    return SettingsManager::SaveUserSettingsNode(a_node, GenerateFilePath(true), GetRootName());
}
