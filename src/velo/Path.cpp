#include "velo/Path.h"

#include "platform/CodePage.h"
#include "platform/ErrorText.h"
#include "platform/FolderTools.h"
#include "platform/ModulePath.h"
#include "platform/ProgramTree.h"
#include "platform/UserFolders.h"
#include "platform/WidePath.h"
#include "velo/Log.h"

#include <fmt/format.h>

#include <algorithm>
#include <system_error>

namespace VeloTools::Path {

namespace {

constexpr wchar_t S_separator = L'/';

wchar_t LowerAscii(wchar_t a_character)
{
    return a_character >= L'A' && a_character <= L'Z' ? static_cast<wchar_t>(a_character + (L'a' - L'A'))
                                                      : a_character;
}

bool HasExtension(std::wstring_view a_name, std::wstring_view a_extension)
{
    return a_name.size() >= a_extension.size() &&
           std::equal(
               a_extension.begin(), a_extension.end(),
               a_name.end() - static_cast<std::ptrdiff_t>(a_extension.size()),
               [](wchar_t a_left, wchar_t a_right) { return LowerAscii(a_left) == LowerAscii(a_right); });
}

// Iterator is directory_iterator or recursive_directory_iterator.
template<class Iterator>
void Collect(const std::filesystem::path& a_folder, std::wstring_view a_extension,
             std::vector<std::wstring>& a_files)
{
    std::error_code error;
    Iterator entry(a_folder, std::filesystem::directory_options::skip_permission_denied, error);
    while (!error && entry != Iterator()) {
        std::error_code unknown; // a file that vanishes meanwhile is none
        const std::wstring path = WidePath::ToWide(entry->path());
        if (entry->is_regular_file(unknown) && HasExtension(GetFileName(path, true), a_extension))
            a_files.push_back(path);
        entry.increment(error);
    }
}

} // namespace

bool FileExist(const std::filesystem::path& a_path)
{
    std::error_code unknown;
    const auto status = std::filesystem::status(a_path, unknown);
    return std::filesystem::exists(status) && !std::filesystem::is_directory(status);
}

bool DirectoryExist(const std::filesystem::path& a_path)
{
    std::error_code unknown;
    return std::filesystem::is_directory(a_path, unknown);
}

bool CreateDirectoryIfNotExist(const std::filesystem::path& a_path)
{
    return FolderTools::MakeFolder(a_path);
}

bool RemovePath(std::wstring_view a_path)
{
    const std::filesystem::path path = WidePath::ToPath(a_path);
    std::error_code error;
    if (path.empty() || std::filesystem::equivalent(path, path.root_path(), error))
        return false;
    error.clear();
    const std::uintmax_t removed = std::filesystem::remove_all(path, error);
    if (!error)
        return removed > 0;
    Log::Instance().Write("Path::RemovePath", __LINE__,
                          fmt::format(fmt::runtime("Nie można usunąć {}: {}"_cp1250),
                                      CodePage::WideToCp1250(a_path), kalvento::internal::ErrorText(error)));
    return false;
}

std::wstring GetModulePath(HINSTANCE a_module)
{
    return WidePath::ToWide(a_module == nullptr ? kalvento::internal::ProgramTree::GetProgramFolder()
                                                : ModulePath::GetFile(a_module).parent_path());
}

std::wstring GetFileFolder(std::wstring_view a_path)
{
    const std::size_t separator = a_path.rfind(S_separator);
    if (separator == std::wstring_view::npos)
        return {};
    return std::wstring(a_path.substr(0, std::max<std::size_t>(separator, 1)));
}

std::wstring GetFileName(std::wstring_view a_path, bool a_withExtension)
{
    a_path.remove_prefix(a_path.rfind(S_separator) + 1); // npos + 1 is 0
    const std::size_t point = a_path.rfind(L'.');
    if (!a_withExtension && point != std::wstring_view::npos && point != 0)
        a_path = a_path.substr(0, point);
    return std::wstring(a_path);
}

std::size_t FindAllFilesInFolder(std::wstring_view a_folder, std::wstring_view a_extension, bool a_recursive,
                                 std::vector<std::wstring>& a_files)
{
    std::vector<std::wstring> found;
    const std::filesystem::path folder = WidePath::ToPath(a_folder);
    if (a_recursive)
        Collect<std::filesystem::recursive_directory_iterator>(folder, a_extension, found);
    else
        Collect<std::filesystem::directory_iterator>(folder, a_extension, found);
    std::sort(found.begin(), found.end());
    a_files.insert(a_files.end(), found.begin(), found.end());
    return found.size();
}

std::wstring GetCurrentUserDocumentPath(std::wstring_view a_first, std::wstring_view a_second)
{
    std::filesystem::path path = UserFolders::GetDocuments();
    for (const std::wstring_view part : {a_first, a_second}) {
        if (!part.empty())
            path /= WidePath::ToPath(part).relative_path();
    }
    return WidePath::ToWide(path);
}

} // namespace VeloTools::Path
