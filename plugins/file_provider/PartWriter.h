#pragma once

#include "file_provider/CacheContents.h"
#include "file_provider/PartFiles.h"
#include "text_rows/RowBlock.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace kalvento::files {

/// Collects the rows of one or many instruments into parts, writes those to the disk and notes them in the contents.
/// Memory doesn't grow with the count of the rows, but for parts that can't be written. One thread.
class PartWriter {
public:
    /// a_contents: with generation, interval and series; one symbol without a name where the rows have none. All must
    /// outlive the writer. a_failureTold: whether the log said already that nothing can be written. a_storesRows: false
    /// notes what there is and drops the rows.
    PartWriter(const PartFiles& a_files, CacheContents& a_contents, std::atomic<bool>& a_failureTold,
               bool a_storesRows);

    /// a_names: of the symbols that the block's rows bear by number, those known so far and any that came since.
    void Add(const rows::RowBlock& a_block, const std::vector<std::string>& a_names);
    /// After the last row. False where a part isn't on the disk.
    bool Finish();

private:
    struct Waiting {
        std::vector<NDateTime> times;
        std::vector<std::vector<double>> columns;
    };

    void AddRow(std::size_t a_symbol, const rows::RowBlock& a_block, std::size_t a_row);
    void Flush(std::size_t a_symbol);
    void Write(std::size_t a_symbol, History a_rows);
    void Store(std::size_t a_symbol, CacheContents::Part& a_part, History a_rows);

    const PartFiles& m_files;
    CacheContents& m_contents;
    std::atomic<bool>& m_failureTold;
    const bool m_hasSymbols;
    const bool m_storesRows;
    std::vector<Waiting> m_waiting; // of each symbol
    std::uint64_t m_rows = 0;       // waiting in all
    bool m_written;
};

} // namespace kalvento::files
