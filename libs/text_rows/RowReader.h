#pragma once

#include "text_rows/LineFate.h"
#include "text_rows/ReadHooks.h"
#include "text_rows/ReadOptions.h"
#include "text_rows/RowBlock.h"
#include "text_rows/RowCounts.h"
#include "text_rows/RowLayout.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kalvento::rows {

class ByteSource;

/// Reads rows of one text input (delimited columns) or of a binary series block, which it recognises by itself.
///
/// Rows that run from the newest to the oldest are turned, others sorted where ReadOptions::sort says so; both keep what
/// doesn't fit into memory in a temporary file, and raise std::system_error where the disk refuses it. An input out of
/// order otherwise raises RowsFault at its end (EOrderRaiseFew).
///
/// Rows come out strictly rising in time (for each symbol): whole seconds, with the ordering counter telling rows of
/// one second apart, given as DateTimeTools::ShiftTimeIfNeed gives it. From the 50,001st row of one second on, rows
/// share their time: a greater counter would come within half a second of the next second, where times no longer
/// compare by their seconds. Before 1899-12-30 they always share it, since the counter counts backward there. A text's
/// memory doesn't grow with its length; a block is read whole. One thread at a time.
class RowReader {
public:
    /// Reads the header and the first rows to learn the shape. The source and the options outlive the reader. Raises
    /// RowsFault, as Read does.
    RowReader(ByteSource& a_source, const ReadOptions& a_options, ReadHooks a_hooks = {});
    ~RowReader();
    RowReader(const RowReader&) = delete;
    RowReader& operator=(const RowReader&) = delete;

    /// This input goes on where another one of the same series ended: times must be later than its last rows, symbols
    /// keep their places, and rows that it collected come out of this one. Call it before the first Read.
    void ContinueFrom(RowReader& a_before);
    /// With ReadOptions::sort, in place of Read: keeps all rows for the reader that continues from this one.
    void Collect();

    /// From now on a_watcher is called for each line of a text, in order, from within Read. It must not raise.
    void WatchLines(std::function<void(const LineFate&)> a_watcher);

    const RowLayout& GetLayout() const;
    /// Keeps the first a_keep rows of a_block and puts the next rows of the input after them, at most a_limit. False
    /// where the source has no more, with no new rows. With ReadOptions::growing that isn't final: the next call asks
    /// the source again, and the rows go on where they stopped.
    bool Read(RowBlock& a_block, std::size_t a_limit, std::size_t a_keep = 0);
    /// Raises RowsFault (EFaultOptions) where ReadOptions::symbol is none of those that came so far.
    void ExpectSymbol() const;
    /// Symbols in the order of their first row, so far.
    const std::vector<std::string>& GetSymbols() const;
    const RowCounts& GetCounts() const;
    /// Bytes of the source gone through, for progress.
    std::uint64_t GetBytesRead() const;

private:
    void RefuseToSort() const;

    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace kalvento::rows
