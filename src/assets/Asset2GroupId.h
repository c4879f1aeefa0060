#pragma once

#include "assets/Asset.h"
#include "assets/AssetsGroupId.h"
#include "platform/Export.h"

#include <optional>
#include <string_view>

class Settings;

/// An asset with the group that it was reached through, if it does not stand alone. A value type: copies are
/// independent, one thread at a time.
class KALVENTO_API Asset2GroupId {
public:
    static constexpr std::string_view XML_ASSET = "Asset";
    static constexpr std::string_view XML_ASSET_GROUP = "AssetGroup";

    explicit Asset2GroupId(const Asset& a_asset) : m_asset(a_asset) {}
    Asset2GroupId(const Asset& a_asset, const AssetsGroupId& a_groupId);
    /// Reads what SerializeState wrote; without the node "AssetGroup" the asset stands alone. The mediator must be set.
    explicit Asset2GroupId(const Settings& a_settings);

    const Asset& GetAsset() const { return m_asset; }
    const std::optional<AssetsGroupId>& GetAssetGroupId() const { return m_groupId; }
    void SetAssetGroupId(const AssetsGroupId& a_groupId) { m_groupId = a_groupId; }

    // Equality and order look at the asset only.
    bool operator==(const Asset2GroupId& a_other) const { return m_asset == a_other.m_asset; }
    bool operator!=(const Asset2GroupId& a_other) const { return m_asset != a_other.m_asset; }
    bool operator<(const Asset2GroupId& a_other) const { return m_asset < a_other.m_asset; }

    /// A virtual group leaves its node empty: it reads back as group 0 without a provider.
    void SerializeState(Settings& a_settings) const;

private:
    Asset m_asset;
    std::optional<AssetsGroupId> m_groupId;
};
