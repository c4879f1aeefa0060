#pragma once

#include "assets/AssetsGroupId.h"
#include "platform/Export.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

class Asset;

/// A named group of assets: the members of an index, a watch list, a whole market. Copies are independent lists that
/// share their assets, which nobody changes once they are in a group. One thread at a time.
///
/// The list is kept in the order of Asset::operator<, and RemoveAsset, HasInstrument and MergeAssets bisect it. Only
/// AddAsset leaves that order to its caller: until SortAssets has run, those three may miss what is there.
class KALVENTO_API AssetsGroup {
public:
    using const_iterator = std::vector<std::shared_ptr<Asset>>::const_iterator;

    /// An empty group. a_name is shown to the user; the rest makes up the identifier.
    AssetsGroup(unsigned int a_id, bool a_isVirtual, std::wstring a_name, std::wstring a_providerName,
                AssetsGroupProvider* a_provider);

    const AssetsGroupId& GetId() const { return m_id; }
    const std::wstring& GetName() const { return m_name; }
    std::size_t GetAssetsCount() const { return m_assets.size(); }
    bool IsEmpty() const { return m_assets.empty(); }
    const_iterator begin() const { return m_assets.begin(); }
    const_iterator end() const { return m_assets.end(); }

    /// Compares the identifiers.
    bool operator==(const AssetsGroup& a_other) const { return m_id == a_other.m_id; }
    /// Compares the numbers alone: groups of two providers may be neither before nor after each other, nor equal.
    bool operator<(const AssetsGroup& a_other) const { return m_id.GetId() < a_other.m_id.GetId(); }

    /// Appends, even what is there already, and does not sort: after the last one call SortAssets. a_asset must not be
    /// null.
    void AddAsset(const std::shared_ptr<Asset>& a_asset) { m_assets.push_back(a_asset); }
    /// Adds the assets that the group lacks and sorts; false when it lacks none, and then nothing changes. Incoming
    /// assets are compared with those that were there before the call only, so what comes twice is added twice.
    /// Raises what SortAssets raises; the new assets are then in the list, which still has to be sorted.
    bool MergeAssets(std::vector<Asset>&& a_assets);
    /// Takes out one asset of that identity and keeps the order of the rest; false when there is none.
    bool RemoveAsset(const Asset& a_asset);
    /// Drops the assets; identifier and name stay.
    void Clear() { m_assets.clear(); }

    /// Sorts by Asset::operator<; equal assets come in no particular order. More than 32 assets are sorted on the
    /// threads of the pool too, where the machine has more than one; the call returns when all is done. Raises
    /// std::bad_alloc, "Insufficient resources were available to use additional parallelism.", where the pool can't be
    /// had: the list is then as it was.
    void SortAssets();

    bool HasInstrument(const Asset& a_asset) const;
    /// Always false, even for an asset of the group. Plug-ins rely on that answer; to find out, ask with the asset
    /// itself.
    bool HasInstrument(const std::shared_ptr<Asset>& a_asset) const;

private:
    void AddAssets(std::vector<Asset>&& a_assets);

    AssetsGroupId m_id;
    std::wstring m_name;
    std::vector<std::shared_ptr<Asset>> m_assets;
};
