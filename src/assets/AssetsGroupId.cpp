#include "assets/AssetsGroupId.h"

#include "modules/AssetsGroupProvider.h"
#include "modules/IAppMediator.h"
#include "modules/PluginBase.h"
#include "modules/ProviderBase.h"
#include "settings/Settings.h"

#include <utility>

AssetsGroupId::AssetsGroupId(unsigned int a_id, bool a_isVirtual, std::wstring a_providerName,
                             AssetsGroupProvider* a_provider)
    : m_id(a_id), m_isVirtual(a_isVirtual), m_providerName(std::move(a_providerName)), m_provider(a_provider)
{}

AssetsGroupId::AssetsGroupId(const Settings& a_settings)
    : m_id(a_settings[XML_GROUP_ID]), m_isVirtual(false), m_provider(nullptr)
{
    const Settings& provider = a_settings[XML_PARENT_PROVIDER];
    if (!provider.Exists())
        return;
    m_providerName = static_cast<std::wstring>(provider);
    m_provider = PluginBase::Sm_pMediator->GetProviderByName(m_providerName);
}

void AssetsGroupId::SerializeState(Settings& a_settings) const
{
    if (m_isVirtual)
        return;
    a_settings[XML_GROUP_ID] = m_id;
    if (m_provider != nullptr)
        a_settings[XML_PARENT_PROVIDER] = m_providerName;
}
