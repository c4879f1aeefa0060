#pragma once

#include "platform/Export.h"

#include <filesystem>

/// The tree of folders around the running program, which reads some of them and writes into others.
namespace kalvento::internal::ProgramTree {

/// The tree's folder of programs; the folder above it is the root of the tree. Where the program lies in a folder of
/// the user's own, it is the folder of the executable. Where it is installed for many users, it is
/// `$XDG_DATA_HOME/kalvento/bin`: that tree is made when it is first asked for, with links to the folders that were
/// installed, and its other folders are made by whoever writes there. Nothing raises: what can't be made shows itself
/// when it is used. One thread at a time.
KALVENTO_API std::filesystem::path GetProgramFolder();

/// Whether the user may keep files in the tree of that root: it is the user's own, nobody else can put anything into it
/// or its folders, and it isn't marked as one for many (a file `installed-for-all`) or, for the superuser, one of the
/// system's.
KALVENTO_API bool IsUsersOwn(const std::filesystem::path& a_root);

} // namespace kalvento::internal::ProgramTree
