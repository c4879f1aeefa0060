#pragma once

#include "file_provider/BlockShelf.h"
#include "file_provider/CacheContents.h"
#include "file_provider/PartFiles.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <stop_token>

namespace kalvento::files {

/// What the caches of one store share.
struct CacheHost {
    bool sorts = false; ///< FileStoreOptions::sort.
    BlockShelf shelf{std::uint64_t{4} << 20U};
    std::atomic<bool> writeFailureTold = false; ///< One line in the log is enough.
    std::atomic<std::uint64_t> textsRead = 0;   ///< How many files of rows were read.
    bool storesRows = true; ///< False: rows are counted, and only those on the disk already can be read.
};

/// The rows of one file, kept as binary series blocks and an index, so that the text is read only once.
///
/// On disk, in a folder of its own: the parts (PartFiles) and, written last, the index (RowIndex); a kill at any moment
/// leaves the old index with the old parts, the new ones, or what makes the next start read the text again. Each part
/// is checked by its checksum when it is read; a damaged one is kept aside and all are made again. Where nothing can be
/// written the parts stay in memory.
class RowCache {
public:
    /// a_folder: an existing folder for this source alone.
    RowCache(SourceFile a_source, std::filesystem::path a_folder, std::shared_ptr<CacheHost> a_host);

    /// Takes over what is on the disk. False where there is none, or not of this source as it is now.
    bool Load();
    /// Reads the whole source. Raises kalvento::rows::RowsFault with the place for what can't be read,
    /// std::runtime_error where a_stop asked for the end. Memory doesn't grow with a text's length.
    void Build(const std::stop_token& a_stop);
    /// Removes the part files of other generations. For when nobody reads those any more.
    void RemoveOldParts() const { m_files.RemoveOthers(GetContents()->generation); }

    const SourceFile& GetSource() const { return m_source; }
    /// After Load or Build. What is handed out stays as it is.
    std::shared_ptr<const CacheContents> GetContents() const;

    // a_symbol: place in CacheContents::symbols. Both may read files, and raise std::exception where that fails. Any
    // thread.

    /// Number of the first row not before a_time.
    std::uint64_t FindRow(std::size_t a_symbol, const NDateTime& a_time);
    /// Rows a_first to before a_last, as far as there are any.
    History ReadRows(std::size_t a_symbol, std::uint64_t a_first, std::uint64_t a_last);

private:
    void SetContents(std::shared_ptr<const CacheContents> a_contents);
    std::shared_ptr<const CacheContents> MakeContents(const std::stop_token& a_stop) const;
    std::shared_ptr<const History> GetPart(std::size_t a_symbol, std::size_t a_part);
    void Repair(const std::shared_ptr<const CacheContents>& a_damaged, const std::filesystem::path& a_path);

    SourceFile m_source;
    std::shared_ptr<CacheHost> m_host;
    PartFiles m_files;
    std::mutex m_repair; // one rebuilding at a time
    mutable std::mutex m_mutex;
    std::shared_ptr<const CacheContents> m_contents; // guarded by m_mutex
};

} // namespace kalvento::files
