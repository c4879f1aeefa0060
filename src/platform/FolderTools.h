#pragma once

#include "platform/Export.h"

#include <cstdint>
#include <filesystem>

/// Folders that the program keeps its files in. Safe from any thread.
namespace FolderTools {

enum EReaders : std::uint8_t {
    EForUserOnly, ///< Nobody else may enter it.
    EForAll       ///< Others may read it, as far as the user lets them (umask).
};

/// Makes the folder and its missing parents, so that nobody but the user can write there. True where it is there
/// afterwards, whoever has made it and whatever rights it has.
KALVENTO_API bool MakeFolder(const std::filesystem::path& a_folder, EReaders a_readers = EForAll);

/// Whether it is a folder in which nobody else can put, change or remove a file: it belongs to the user that runs the
/// process, and only that one may write there. A symbolic link counts as what it leads to, if nobody else has laid it.
KALVENTO_API bool IsUsersOwn(const std::filesystem::path& a_folder);

} // namespace FolderTools
