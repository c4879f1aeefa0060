#pragma once

#include "modules/EGenericModule.h"

#include <cstdint>

/// Families of bookmarks in the host's ribbon. The family of a kind with bookmarks bears the number of the kind.
namespace BookmarkFamilyType {

enum Value : std::int32_t {
    FamilyNone = -1,
    FamilyFirst = EGenericModuleFirstWithBookmarks,
    FamilyLast = EGenericModuleLastWithBookmarks
};

} // namespace BookmarkFamilyType
