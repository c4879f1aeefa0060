#include "assets/Asset2GroupId.h"

#include "settings/Settings.h"

Asset2GroupId::Asset2GroupId(const Asset& a_asset, const AssetsGroupId& a_groupId)
    : m_asset(a_asset), m_groupId(a_groupId)
{}

Asset2GroupId::Asset2GroupId(const Settings& a_settings) : m_asset(a_settings[XML_ASSET])
{
    if (const Settings& group = a_settings[XML_ASSET_GROUP]; group.Exists())
        m_groupId.emplace(group);
}

void Asset2GroupId::SerializeState(Settings& a_settings) const
{
    m_asset.SerializeState(a_settings[XML_ASSET]);
    if (m_groupId)
        m_groupId->SerializeState(a_settings[XML_ASSET_GROUP]);
}
