#include "platform/UserFolders.h"

#include "platform/FileTools.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <system_error>
#include <vector>

namespace UserFolders {

namespace {

constexpr std::string_view S_documentsKey = "XDG_DOCUMENTS_DIR=\"";
constexpr std::string_view S_homeVariable = "$HOME";
constexpr std::size_t S_mostBytes = 65536;

std::filesystem::path Variable(const char* a_name)
{
    const char* const value = std::getenv(a_name);
    return value != nullptr ? value : "";
}

// The home folder in the system's user list.
std::filesystem::path ListedHome()
{
    std::vector<char> buffer(16384);
    passwd entry{};
    passwd* found = nullptr;
    ::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found);
    return found != nullptr && found->pw_dir != nullptr ? found->pw_dir : "/";
}

} // namespace

std::filesystem::path GetHome()
{
    const std::filesystem::path home = Variable("HOME");
    return home.is_absolute() ? home : ListedHome();
}

std::vector<std::filesystem::path> GetDataCandidates()
{
    constexpr const char* below = ".local/share";
    std::vector<std::filesystem::path> folders = {Variable("XDG_DATA_HOME"), GetHome() / below,
                                                  ListedHome() / below};
    std::erase_if(folders, [](const std::filesystem::path& folder) { return !folder.is_absolute(); });
    return folders;
}

std::filesystem::path ReadDocumentsFolder(std::string_view a_text, const std::filesystem::path& a_home)
{
    std::filesystem::path folder;
    while (!a_text.empty()) {
        std::string_view line = a_text.substr(0, a_text.find('\n'));
        a_text.remove_prefix(std::min(line.size() + 1, a_text.size()));
        line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
        if (!line.starts_with(S_documentsKey))
            continue;
        line.remove_prefix(S_documentsKey.size());
        const bool belowHome = line.starts_with(S_homeVariable);
        if (belowHome)
            line.remove_prefix(S_homeVariable.size());
        // The file holds assignments of a shell: the value ends at the quote, a backslash keeps what follows it.
        std::string value;
        for (std::size_t place = 0; place < line.size() && line[place] != '"'; ++place) {
            if (line[place] == '\\' && place + 1 < line.size())
                ++place;
            value += line[place];
        }
        if (belowHome)
            folder = a_home / std::filesystem::path(value).relative_path();
        else if (value.starts_with('/'))
            folder = value;
    }
    return folder;
}

std::filesystem::path GetDocuments()
{
    const std::filesystem::path home = GetHome();
    std::filesystem::path configuration = Variable("XDG_CONFIG_HOME");
    if (!configuration.is_absolute())
        configuration = home / ".config";
    std::error_code ignored; // most machines have no such file
    const auto text = FileTools::ReadFile(configuration / "user-dirs.dirs", S_mostBytes, ignored);
    std::filesystem::path folder = text ? ReadDocumentsFolder(*text, home) : std::filesystem::path();
    return folder.empty() ? home / "Documents" : folder;
}

} // namespace UserFolders
