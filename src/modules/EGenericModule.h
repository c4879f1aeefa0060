#pragma once

#include <cstdint>

/// The kind of a module. The host and its modules agree on what each number means; here only the range with a family of
/// bookmarks of its own is known, see BookmarkFamilyType. Any other number is a kind as well.
enum EGenericModule : std::uint32_t {
    EGenericModuleNone = 0,
    EGenericModuleFirstWithBookmarks = 1,
    EGenericModuleLastWithBookmarks = 13
};
