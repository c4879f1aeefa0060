#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

/// The files of a folder that hold rows, and what lies beside them.
namespace kalvento::files {

/// Tells whether a file has changed, without reading it.
struct FileStamp {
    std::uint64_t size = 0;
    std::int64_t modified = 0; ///< Of the file system's clock, in its own steps.

    friend bool operator==(const FileStamp&, const FileStamp&) = default;
};

/// One file of rows.
struct SourceFile {
    std::filesystem::path path;
    FileStamp stamp;
    std::string
        name; ///< Of the file without its extension, safe as the name of a folder; one of its kind in a folder.
    std::string market;  ///< The sub-folder's name, safe; "PLIKI" at the top.
    std::wstring group;  ///< The sub-folder's name as the user sees it; empty at the top.
    bool isBook = false; ///< Rows of an order book, of the instrument `name` without its ".book".

    friend bool operator==(const SourceFile&, const SourceFile&) = default;
};

/// A file that holds no rows but belongs to an instrument: a list of corporate operations.
struct OperationsSource {
    std::filesystem::path path;
    FileStamp stamp;

    friend bool operator==(const OperationsSource&, const OperationsSource&) = default;
};

/// All that a folder holds, each list in the order of the paths.
struct FolderContents {
    bool exists = false; ///< And can be read.
    std::vector<SourceFile> sources;
    std::vector<OperationsSource> operations;
    std::vector<std::filesystem::path>
        unreadable; ///< Files and sub-folders that exist, with unknown contents.

    /// False where files came, went or changed, or where others than before can't be read.
    friend bool operator==(const FolderContents&, const FolderContents&) = default;
};

/// Looks through a folder and its direct sub-folders. Rows: *.csv, *.txt, *.tsv, *.block; a book: *.book.csv;
/// operations: *.operations.txt, operations_*.txt. Hidden files are passed over. What exists but can't be read is taken
/// over from a_before, if given: instruments don't vanish while somebody is writing their file. Never raises for what
/// it finds.
FolderContents ScanFolder(const std::filesystem::path& a_folder, const FolderContents* a_before);

/// The entries of a folder, in the order of their paths; incomplete where a_error is set.
std::vector<std::filesystem::directory_entry> EntriesOf(const std::filesystem::path& a_folder,
                                                        std::error_code& a_error);

/// The size and time of a regular file; empty where there is none or they can't be found out.
std::optional<FileStamp> StampOf(const std::filesystem::path& a_path);
/// The same, with the reason of a failure.
std::optional<FileStamp> StampOf(const std::filesystem::path& a_path, std::error_code& a_error);

/// The name of a symbol made from a UTF-8 text: Polish letters lose their accents, and every other character but
/// A-Z a-z 0-9 . _ - becomes '_'. Never empty, and never begins with a point.
std::string SafeName(std::string_view a_name);

/// The list of operations of an instrument among those beside its file: NAME.operations.txt, then operations_NAME.txt;
/// letter case doesn't matter. Empty where there is none.
std::optional<std::filesystem::path> FindOperations(const FolderContents& a_contents,
                                                    const SourceFile& a_source, std::string_view a_name);

} // namespace kalvento::files
