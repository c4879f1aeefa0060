#pragma once

#include "platform/Export.h"
#include "platform/Handles.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

/// Tools for paths. Wide paths become file names as platform/WidePath.h says. Nothing here raises for what it finds on
/// the disk; failures that lose something are logged. Safe from any thread.
namespace VeloTools::Path {

/// True for anything but a folder that is there; a symbolic link counts as its target.
KALVENTO_API bool FileExist(const std::filesystem::path& a_path);
KALVENTO_API bool DirectoryExist(const std::filesystem::path& a_path);
/// Makes the folder and its missing parents, for the user to write in. True where it is there afterwards.
KALVENTO_API bool CreateDirectoryIfNotExist(const std::filesystem::path& a_path);
/// Removes a file, or a folder with all that is in it; of a symbolic link, only the link. False where there was
/// nothing, or something could not be removed. Refuses the root folder.
KALVENTO_API bool RemovePath(std::wstring_view a_path);
/// Folder of a module, for null of the main executable as ProgramTree has it; empty for an address in no module.
KALVENTO_API std::wstring GetModulePath(HINSTANCE a_module);
/// The part before the last '/', without it; "/" for what lies in the root folder, empty where there is no '/'.
KALVENTO_API std::wstring GetFileFolder(std::wstring_view a_path);
/// The part after the last '/'. Without the extension: up to its last point, unless that comes first.
KALVENTO_API std::wstring GetFileName(std::wstring_view a_path, bool a_withExtension);
/// Appends the paths of the regular files in the folder whose extension is that one (".xml", in either case of ASCII),
/// sorted, and returns their number. Recursive goes into sub-folders, but not through symbolic links.
KALVENTO_API std::size_t FindAllFilesInFolder(std::wstring_view a_folder, std::wstring_view a_extension,
                                              bool a_recursive, std::vector<std::wstring>& a_files);
/// The user's documents folder, then both parts as folders below it; an empty part is left out. The folder is that of
/// the desktop's user-dirs.dirs file, without which it is "Documents" in the home folder.
KALVENTO_API std::wstring GetCurrentUserDocumentPath(std::wstring_view a_first, std::wstring_view a_second);

} // namespace VeloTools::Path
