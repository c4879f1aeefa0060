#pragma once

#include "platform/TemporaryFile.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace kalvento::rows {

struct RowBlock;

/// Puts any number of rows into the order of their times, in bounded memory: what doesn't fit waits in a temporary file.
/// Add all rows, then take them out by Next. Raises std::system_error where the disk refuses. One thread at a time.
class RowSorter {
public:
    /// What a row is sorted by, and what is known of it besides its values.
    struct Head {
        std::int64_t seconds = 0;
        std::int32_t nanoseconds = 0;
        std::uint32_t symbol = 0;
        std::int64_t place = 0; ///< Rows of one time come by this; no two have the same.
        std::uint64_t line = 0;
    };

    /// a_mostBytes: of rows that are held in memory, besides some for merging.
    explicit RowSorter(std::size_t a_columns, std::size_t a_mostBytes = std::size_t{1} << 26U);
    ~RowSorter();
    RowSorter(const RowSorter&) = delete;
    RowSorter& operator=(const RowSorter&) = delete;

    /// A row with the values of that row of the block.
    void Add(const Head& a_head, const RowBlock& a_block, std::size_t a_row);
    /// The next row in order, its values put into that row of the block; false at the end.
    bool Next(Head& a_head, RowBlock& a_block, std::size_t a_row);

private:
    using Word = std::uint64_t;
    class Run;
    class Merger;

    void Sort();
    void Spill();
    void MergeRuns();
    const Word* NextRecord();

    std::size_t m_width; // words of a record
    std::size_t m_most;  // records in memory
    std::vector<Word> m_words;
    std::vector<std::uint32_t> m_order;              // places of m_words' records, sorted
    std::size_t m_taken = 0;                         // of m_order
    std::unique_ptr<internal::TemporaryFile> m_file; // null as long as all fits into memory
    std::vector<std::uint64_t> m_starts;             // of the sorted runs in it
    std::unique_ptr<Merger> m_merger;                // once rows are taken out of the file
};

} // namespace kalvento::rows
