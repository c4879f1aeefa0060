#pragma once

#include "platform/Export.h"

#include <vector>

class Asset;
class Asset2GroupId;
class AssetsGroupId;

namespace AssetUtils {

/// The list that a chooser or a saved selection shows: the assets that stand alone and those of the groups, in the
/// order of Asset::operator<. An asset that stands alone is not listed again for a group; one that only groups hold is
/// listed once for each of them. Groups whose provider is not set or does not know them are left out.
KALVENTO_API std::vector<Asset2GroupId>
GetSortedAssets2GroupIdContainer(const std::vector<Asset>& a_assets,
                                 const std::vector<AssetsGroupId>& a_groupIds);

} // namespace AssetUtils
