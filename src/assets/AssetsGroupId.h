#pragma once

#include "platform/Export.h"

#include <cstdint>
#include <string>
#include <string_view>

class AssetsGroupProvider;
class Settings;

/// A storable reference to a group of assets; the provider turns it into the group. A value type: copies are
/// independent, one thread at a time. The provider is a module and outlives every identifier that names it.
class KALVENTO_API AssetsGroupId {
public:
    static constexpr std::string_view XML_GROUP_ID = "AssetsGroupId";
    static constexpr std::string_view XML_PARENT_PROVIDER = "ParentProvider";

    /// a_id: the group's number within its provider. a_isVirtual: the group exists only while the program runs and is
    /// never saved. a_provider may be null.
    AssetsGroupId(unsigned int a_id, bool a_isVirtual, std::wstring a_providerName,
                  AssetsGroupProvider* a_provider);
    /// Reads what SerializeState wrote. With a "ParentProvider" the host looks the provider up, so the mediator must
    /// be set; a name that it doesn't know leaves the provider null. Without that key name and provider stay empty.
    explicit AssetsGroupId(const Settings& a_settings);

    unsigned int GetId() const { return m_id; }
    bool IsVirtual() const { return m_isVirtual; }
    const std::wstring& GetProviderName() const { return m_providerName; }
    AssetsGroupProvider* GetProvider() const { return m_provider; }

    /// The number and the provider object; its name and the flag take no part.
    bool operator==(const AssetsGroupId& a_other) const
    {
        return m_id == a_other.m_id && m_provider == a_other.m_provider;
    }

    /// Writes nothing for a virtual group, otherwise the number and, where there is a provider, its name.
    void SerializeState(Settings& a_settings) const;

private:
    std::uint32_t m_id;
    bool m_isVirtual;
    std::wstring m_providerName;
    AssetsGroupProvider* m_provider; // not owned, may be null
};
