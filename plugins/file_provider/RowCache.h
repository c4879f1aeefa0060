#pragma once

#include "file_provider/BlockShelf.h"
#include "file_provider/SourceFolder.h"
#include "series/ESeriesId.h"
#include "series/History.h"
#include "time/IntervalAndMultiplicity.h"
#include "time/NDateTime.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

class Settings;

namespace kalvento::files {

/// What the caches of one store share.
struct CacheHost {
    /// Folder of the stored history for a name, which is there when this returns. Any thread.
    std::function<std::wstring(const std::string&)> folderOf;
    BlockShelf shelf{std::uint64_t{4} << 20U};
    std::atomic<bool> writeFailureTold = false; ///< One line in the log is enough.
    std::atomic<std::uint64_t> textsRead = 0;   ///< How many files of rows were read through.
};

/// Some rows that follow one another, in a file of their own.
struct CachePart {
    std::uint64_t firstRow = 0;
    std::uint64_t rows = 0;
    std::uint64_t bytes = 0;    ///< Of the file.
    std::uint64_t checksum = 0; ///< Of the file's bytes.
    NDateTime first;
    NDateTime last;
    std::shared_ptr<const History> kept; ///< Where the file couldn't be written; else null.
};

/// One instrument of a file of rows.
struct CachedSymbol {
    std::string symbol; ///< Empty for a file of one instrument.
    std::vector<CachePart> parts;
    std::uint64_t rows = 0;
    unsigned int decimals = 0;  ///< Places of the prices behind the point, at most 6.
    bool hasTimesOfDay = false; ///< Some row isn't of midnight.
};

/// What is known of a file of rows that was gone through.
struct CacheContents {
    std::uint64_t generation =
        0; ///< In the names of the part files: those of an older one aren't overwritten.
    std::uint64_t fingerprint = 0; ///< Of the source's bytes.
    IntervalAndMultiplicity interval;
    std::vector<ESeriesId> series; ///< Ascending.
    ESeriesId priceMeans = Price;  ///< Of a book: the series that stands in the column of the prices.
    std::vector<CachedSymbol> symbols;
    /// Fingerprint of the contents that these took the place of, where the source only grew since then.
    std::optional<std::uint64_t> extendedFingerprint;
};

/// The rows of one file, kept as binary series blocks and an index, so that the text is read once only.
///
/// On disk, in the folder for the source's name: "Rows-<generation>-<symbol>-<part>.block" and, written last,
/// "Index.xml"; a kill at any moment leaves the old index with the old parts, the new ones, or what makes the next
/// start read the text again. Each part is checked by its checksum when it is read; a damaged one is kept aside and all
/// are made again. Where nothing can be written the parts stay in memory.
class RowCache {
public:
    static constexpr std::uint64_t S_partRows = 65536;

    RowCache(SourceFile a_source, std::shared_ptr<CacheHost> a_host);

    /// Takes over what is on the disk. False where there is none, or not of this source as it is now.
    bool Load();
    /// Reads the source through. Raises kalvento::rows::RowsFault with the place for what can't be read,
    /// std::runtime_error where a_stop asked for the end. Memory doesn't grow with a text's length.
    void Build(const std::stop_token& a_stop);
    /// Removes the part files of other generations; once nobody reads those any more.
    void RemoveOldParts() const;

    const SourceFile& GetSource() const { return m_source; }
    /// After Load or Build. What is handed out stays as it is.
    std::shared_ptr<const CacheContents> GetContents() const;

    // a_symbol: place in CacheContents::symbols. Both may read files, and raise std::exception where that fails. Any
    // thread.

    /// Number of the first row not before a_time.
    std::uint64_t FindRow(std::size_t a_symbol, const NDateTime& a_time);
    /// Rows a_first to before a_last, those that there are.
    History ReadRows(std::size_t a_symbol, std::uint64_t a_first, std::uint64_t a_last);

private:
    class Builder;

    std::filesystem::path PartPath(const CacheContents& a_contents, std::size_t a_symbol,
                                   std::size_t a_part) const;
    std::shared_ptr<const CacheContents> BuildContents(const std::stop_token& a_stop);
    std::shared_ptr<const History> ReadPart(const CacheContents& a_contents, std::size_t a_symbol,
                                            std::size_t a_part) const;
    std::shared_ptr<const History> GetPart(std::size_t a_symbol, std::size_t a_part);
    void Repair(const std::shared_ptr<const CacheContents>& a_damaged, const std::filesystem::path& a_path);
    void SaveIndex(const CacheContents& a_contents) const;
    std::optional<CacheContents> ReadIndex(const Settings& a_index) const;

    SourceFile m_source;
    std::shared_ptr<CacheHost> m_host;
    std::filesystem::path m_folder;
    std::mutex m_repair; // one rebuilding at a time
    mutable std::mutex m_mutex;
    std::shared_ptr<const CacheContents> m_contents; // guarded by m_mutex
};

} // namespace kalvento::files
