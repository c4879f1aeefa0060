#include "file_provider/SourceFolder.h"

#include "platform/CodePage.h"
#include "platform/WidePath.h"
#include "text_rows/TextFields.h"

#include <algorithm>
#include <iterator>
#include <set>

namespace kalvento::files {

namespace {

constexpr std::string_view S_bookEnding = ".book";
constexpr std::string_view S_operationsEnding = ".operations";
constexpr std::string_view S_operationsStart = "operations_";

using rows::LowerCase;

// What isn't there is gone; all other errors say that it can't be reached just now.
bool IsUnreachable(const std::error_code& a_error)
{
    return a_error && a_error != std::errc::no_such_file_or_directory &&
           a_error != std::errc::not_a_directory;
}

// A file, or all that is in a sub-folder, stays as it was.
void Keep(const std::filesystem::path& a_path, const FolderContents* a_before, FolderContents& a_contents)
{
    a_contents.unreadable.push_back(a_path);
    if (a_before == nullptr)
        return;
    const auto isOfIt = [&a_path](const auto& a_file) {
        return a_file.path == a_path || a_file.path.parent_path() == a_path;
    };
    for (const SourceFile& source : a_before->sources) {
        if (!isOfIt(source))
            continue;
        a_contents.sources.push_back(source);
        a_contents.sources.back().name = SafeName(source.path.stem().string()); // not yet numbered
    }
    std::ranges::copy_if(a_before->operations, std::back_inserter(a_contents.operations), isOfIt);
}

void TakeFile(const std::filesystem::path& a_path, const std::filesystem::path& a_subFolder,
              const FolderContents* a_before, FolderContents& a_contents)
{
    const std::string extension = LowerCase(a_path.extension().string());
    const std::string stem = a_path.stem().string();
    const std::string lower = LowerCase(stem);
    const bool isText = extension == ".csv" || extension == ".txt" || extension == ".tsv";
    if (stem.empty() || stem.front() == '.' || (!isText && extension != ".block"))
        return;
    std::error_code error;
    const auto stamp = StampOf(a_path, error);
    if (IsUnreachable(error))
        return Keep(a_path, a_before, a_contents);
    if (!stamp)
        return;
    if (extension == ".txt" &&
        (lower.ends_with(S_operationsEnding) || lower.starts_with(S_operationsStart))) {
        a_contents.operations.push_back({a_path, *stamp});
        return;
    }
    SourceFile source;
    source.path = a_path;
    source.stamp = *stamp;
    source.name = SafeName(stem);
    source.market = a_subFolder.empty() ? "PLIKI" : SafeName(a_subFolder.string());
    source.group = WidePath::ToWide(a_subFolder);
    source.isBook = isText && lower.ends_with(S_bookEnding);
    a_contents.sources.push_back(std::move(source));
}

// Two files can have one safe name, in two sub-folders or by their extensions: the later ones are numbered.
void MakeNamesUnique(std::vector<SourceFile>& a_sources)
{
    std::set<std::string> taken;
    for (SourceFile& source : a_sources) {
        const std::string wanted = source.name;
        for (unsigned int number = 2; !taken.insert(source.name).second; ++number)
            source.name = wanted + "-" + std::to_string(number);
    }
}

} // namespace

FolderContents ScanFolder(const std::filesystem::path& a_folder, const FolderContents* a_before)
{
    FolderContents contents;
    std::error_code error;
    contents.exists = !a_folder.empty() && std::filesystem::is_directory(a_folder, error);
    if (!contents.exists)
        return contents;
    std::vector<std::filesystem::path> subFolders;
    const auto entries = EntriesOf(a_folder, error);
    // An empty list would mean that all instruments are gone.
    contents.exists = !error;
    for (const auto& entry : entries) {
        const bool isFolder = entry.is_directory(error);
        if (!isFolder && !IsUnreachable(error))
            TakeFile(entry.path(), {}, a_before, contents);
        else if (!entry.path().filename().string().starts_with('.'))
            subFolders.push_back(entry.path());
    }
    for (const auto& subFolder : subFolders) {
        const auto files = EntriesOf(subFolder, error);
        // A folder that can't be read doesn't hold up the others.
        if (IsUnreachable(error)) {
            Keep(subFolder, a_before, contents);
            continue;
        }
        for (const auto& file : files)
            TakeFile(file.path(), subFolder.filename(), a_before, contents);
    }
    MakeNamesUnique(contents.sources);
    return contents;
}

std::vector<std::filesystem::directory_entry> EntriesOf(const std::filesystem::path& a_folder,
                                                        std::error_code& a_error)
{
    std::vector<std::filesystem::directory_entry> entries;
    for (std::filesystem::directory_iterator entry(a_folder, a_error);
         !a_error && entry != std::filesystem::directory_iterator(); entry.increment(a_error))
        entries.push_back(*entry);
    std::sort(entries.begin(), entries.end());
    return entries;
}

std::optional<FileStamp> StampOf(const std::filesystem::path& a_path)
{
    std::error_code ignored;
    return StampOf(a_path, ignored);
}

std::optional<FileStamp> StampOf(const std::filesystem::path& a_path, std::error_code& a_error)
{
    if (!std::filesystem::is_regular_file(a_path, a_error))
        return std::nullopt;
    FileStamp stamp;
    stamp.size = std::filesystem::file_size(a_path, a_error);
    if (a_error)
        return std::nullopt;
    stamp.modified = std::filesystem::last_write_time(a_path, a_error).time_since_epoch().count();
    return a_error ? std::nullopt : std::optional(stamp);
}

std::string SafeName(std::string_view a_name)
{
    static constexpr std::wstring_view S_polish = L"ĄĆĘŁŃÓŚŹŻąćęłńóśźż";
    static constexpr std::string_view S_latin = "ACELNOSZZacelnoszz";
    static constexpr std::wstring_view S_kept =
        L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._-";
    std::string safe;
    for (const wchar_t sign : CodePage::Utf8ToWide(a_name)) {
        if (const std::size_t polish = S_polish.find(sign); polish != std::wstring_view::npos)
            safe += S_latin[polish];
        else
            safe += S_kept.find(sign) != std::wstring_view::npos ? static_cast<char>(sign) : '_';
    }
    return safe.empty() || safe.front() == '.' ? "_" + safe : safe;
}

std::optional<std::filesystem::path> FindOperations(const FolderContents& a_contents,
                                                    const SourceFile& a_source, std::string_view a_name)
{
    const std::string name = LowerCase(a_name);
    for (const std::string& wanted :
         {name + std::string(S_operationsEnding), std::string(S_operationsStart) + name}) {
        for (const OperationsSource& operations : a_contents.operations) {
            if (operations.path.parent_path() == a_source.path.parent_path() &&
                LowerCase(operations.path.stem().string()) == wanted)
                return operations.path;
        }
    }
    return std::nullopt;
}

} // namespace kalvento::files
