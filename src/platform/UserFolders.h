#pragma once

#include "platform/Export.h"

#include <filesystem>
#include <string_view>

/// Folders of the user that runs the process.
namespace UserFolders {

/// $HOME, or what the system's user list says where that is not set.
KALVENTO_API std::filesystem::path GetHome();
KALVENTO_API std::filesystem::path GetDocuments();

/// Value of XDG_DOCUMENTS_DIR in the text of a user-dirs.dirs file: an absolute path or one below "$HOME/"; empty where
/// the text has none. Source of the form: xdg-user-dirs, user-dirs.dirs(5).
KALVENTO_API std::filesystem::path ReadDocumentsFolder(std::string_view a_text,
                                                       const std::filesystem::path& a_home);

} // namespace UserFolders
