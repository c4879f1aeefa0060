#pragma once

#include "platform/Export.h"

#include <optional>

class AssetsGroup;
class AssetsGroupId;

/// Turns the identifier of a group into the group. An AssetsGroupId points to it and doesn't own it.
class KALVENTO_API AssetsGroupProvider {
public:
    virtual ~AssetsGroupProvider();

    /// A copy of the group, which shares its assets; empty where it is not known (any more).
    virtual std::optional<AssetsGroup> GetAssetsGroupForAssetsGroupId(const AssetsGroupId& a_groupId) = 0;
};
