#pragma once

#include <cstdint>

/// The kind of a module. The host and its modules agree on what each number means; the library knows only the range
/// with a family of bookmarks of its own, see BookmarkFamilyType. Any other number is a kind as well.
enum EGenericModule : std::uint32_t {
    EGenericModuleNone = 0,
    EGenericModuleFirstWithBookmarks = 1,
    EGenericModuleLastWithBookmarks = 13
};
