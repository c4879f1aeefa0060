#pragma once

#include "platform/Export.h"

#include <filesystem>
#include <string_view>
#include <vector>

/// Folders of the user that runs the process.
namespace UserFolders {

/// $HOME, or what the system's user list says where that is not set.
KALVENTO_API std::filesystem::path GetHome();
KALVENTO_API std::filesystem::path GetDocuments();
/// Where a user's programs keep their data: $XDG_DATA_HOME, ".local/share" in the home folder, and the same in the home
/// folder of the system's user list. Without those that aren't set or aren't absolute.
KALVENTO_API std::vector<std::filesystem::path> GetDataCandidates();

/// Value of XDG_DOCUMENTS_DIR in the text of a user-dirs.dirs file: an absolute path or one below "$HOME/"; empty where
/// the text has none. Source of the form: xdg-user-dirs, user-dirs.dirs(5).
KALVENTO_API std::filesystem::path ReadDocumentsFolder(std::string_view a_text,
                                                       const std::filesystem::path& a_home);

} // namespace UserFolders
