#include "platform/FolderTools.h"

#include <sys/stat.h>
#include <unistd.h>

#include <system_error>

namespace FolderTools {

namespace {

constexpr ::uid_t S_superuser = 0;

// A group whose number is the user's is, by custom, that user's alone.
bool IsGroupOfOne(const struct stat& a_state)
{
    return a_state.st_gid == static_cast<::gid_t>(::geteuid());
}

} // namespace

bool MakeFolder(const std::filesystem::path& a_folder, EReaders a_readers)
{
    std::error_code error;
    if (std::filesystem::is_directory(a_folder, error))
        return true;
    const std::filesystem::path parent = a_folder.parent_path();
    if (!parent.empty() && parent != a_folder && !MakeFolder(parent))
        return false;
    // Another process may be making it at the same time.
    return ::mkdir(a_folder.c_str(), a_readers == EForUserOnly ? 0700 : 0755) == 0 ||
           std::filesystem::is_directory(a_folder, error);
}

bool IsUsersOwn(const std::filesystem::path& a_folder)
{
    struct stat name {};
    struct stat folder {};
    if (::lstat(a_folder.c_str(), &name) != 0 || ::stat(a_folder.c_str(), &folder) != 0)
        return false;
    const bool isLaidByUs = name.st_uid == ::geteuid() || name.st_uid == S_superuser;
    const ::mode_t others = IsGroupOfOne(folder) ? S_IWOTH : S_IWOTH | S_IWGRP;
    return isLaidByUs && S_ISDIR(folder.st_mode) && folder.st_uid == ::geteuid() &&
           (folder.st_mode & others) == 0;
}

} // namespace FolderTools
