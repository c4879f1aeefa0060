#include "assets/AssetUtils.h"

#include "assets/Asset.h"
#include "assets/Asset2GroupId.h"
#include "assets/AssetsGroup.h"
#include "assets/AssetsGroupId.h"
#include "modules/AssetsGroupProvider.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <optional>

namespace AssetUtils {

namespace {

std::optional<AssetsGroup> AskForGroup(const AssetsGroupId& a_groupId)
{
    if (a_groupId.GetProvider() == nullptr)
        return std::nullopt;
    return a_groupId.GetProvider()->GetAssetsGroupForAssetsGroupId(a_groupId);
}

} // namespace

std::vector<Asset2GroupId> GetSortedAssets2GroupIdContainer(const std::vector<Asset>& a_assets,
                                                            const std::vector<AssetsGroupId>& a_groupIds)
{
    std::vector<Asset2GroupId> result;
    result.reserve(a_assets.size());
    for (const Asset& asset : a_assets)
        result.emplace_back(asset);
    std::sort(result.begin(), result.end());

    const auto aloneCount = static_cast<std::ptrdiff_t>(result.size());
    const auto standsAlone = [&](const Asset& a_asset) {
        const auto end = std::next(result.begin(), aloneCount);
        const auto found = std::lower_bound(
            result.begin(), end, a_asset,
            [](const Asset2GroupId& a_left, const Asset& a_right) { return a_left.GetAsset() < a_right; });
        return found != end && found->GetAsset() == a_asset;
    };
    for (const AssetsGroupId& groupId : a_groupIds) {
        const auto group = AskForGroup(groupId);
        if (!group)
            continue;
        for (const auto& asset : *group) {
            if (!standsAlone(*asset))
                result.emplace_back(*asset, groupId);
        }
    }
    std::sort(result.begin(), result.end());
    return result;
}

} // namespace AssetUtils
