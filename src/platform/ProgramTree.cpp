#include "platform/ProgramTree.h"

#include "platform/FolderTools.h"
#include "platform/ModulePath.h"
#include "platform/UserFolders.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <system_error>

namespace kalvento::internal::ProgramTree {

namespace {

using std::filesystem::path;

constexpr const char* S_markOfMany = "installed-for-all";
constexpr std::array S_written = {"Data", "Logs", "CrashReports", "UserSettings"};
constexpr std::array S_installed = {"plugins", "Resources", "AmiBroker", "DefaultSettings"};
// Users add skins of their own to those that were installed.
constexpr const char* S_skins = "Styles";

bool IsBelow(const path& a_folder, const path& a_file)
{
    return std::mismatch(a_folder.begin(), a_folder.end(), a_file.begin(), a_file.end()).first ==
           a_folder.end();
}

// A link left by an earlier installation makes way; what the user has put there stays.
void Link(const path& a_target, const path& a_link)
{
    std::error_code error;
    if (!std::filesystem::exists(a_target, error))
        return;
    if (std::filesystem::is_symlink(a_link, error)) {
        if (std::filesystem::read_symlink(a_link, error) == a_target)
            return;
        std::filesystem::remove(a_link, error);
    }
    std::filesystem::create_directory_symlink(a_target, a_link, error);
}

// An environment that names a folder of somebody else's (a program run by the superuser in a user's session) is not
// followed: the system's list knows the user's home.
path UsersRoot()
{
    path root;
    for (const path& folder : UserFolders::GetDataCandidates()) {
        root = folder / "kalvento";
        if (FolderTools::MakeFolder(root, FolderTools::EForUserOnly) && FolderTools::IsUsersOwn(root))
            break;
    }
    return root;
}

void LinkInstalled(const path& a_installed, const path& a_programs, const path& a_root)
{
    Link(a_programs, a_root / a_programs.filename());
    for (const char* const name : S_installed)
        Link(a_installed / name, a_root / name);
    FolderTools::MakeFolder(a_root / S_skins, FolderTools::EForUserOnly);
    std::error_code error;
    for (std::filesystem::directory_iterator skin(a_installed / S_skins, error), end; !error && skin != end;
         skin.increment(error))
        Link(skin->path(), a_root / S_skins / skin->path().filename());
}

} // namespace

bool IsUsersOwn(const path& a_root)
{
    std::error_code error;
    if (!FolderTools::IsUsersOwn(a_root) || std::filesystem::exists(a_root / S_markOfMany, error))
        return false;
    if (::geteuid() == 0 && (IsBelow("/usr", a_root) || IsBelow("/opt", a_root)))
        return false;
    return std::ranges::all_of(S_written, [&](const char* name) {
        const path folder = a_root / name;
        return (!std::filesystem::is_symlink(folder, error) &&
                !std::filesystem::is_directory(folder, error)) ||
               FolderTools::IsUsersOwn(folder);
    });
}

path GetProgramFolder()
{
    const path installed = ModulePath::GetFile(nullptr).parent_path();
    if (IsUsersOwn(installed.parent_path()))
        return installed;
    const path root = UsersRoot();
    LinkInstalled(installed.parent_path(), installed, root);
    return root / installed.filename();
}

} // namespace kalvento::internal::ProgramTree
