#pragma once

#include "kalvento/ReadOptions.h"
#include "kalvento/ToolContext.h"
#include "time/IntervalAndMultiplicity.h"
#include "time/NDateTime.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

enum ESeriesId : std::uint32_t;

namespace kalvento::tool {

class ByteSource;

/// The shape of the rows of one input.
struct RowLayout {
    std::vector<ESeriesId> series;   ///< Ascending, without Time: the order of RowBlock::columns.
    std::vector<EAggrType> folds;    ///< How each of them folds.
    IntervalAndMultiplicity interval; ///< (EIntervalTick, 1) for ticks; a candle interval where open, high, low stand.
    bool hasSymbols = false;
};

/// Some rows, column by column. Buffers are kept between reads.
struct RowBlock {
    std::vector<NDateTime> times;
    std::vector<std::vector<double>> columns; ///< One per series of the layout, as long as `times`.
    std::vector<std::uint32_t> symbols;       ///< Places in RowReader::GetSymbols; empty where there are none.
    std::size_t Size() const { return times.size(); }
};

/// What became of the lines of an input.
struct RowCounts {
    std::uint64_t rows = 0;     ///< Handed out.
    std::uint64_t bad = 0;      ///< Set aside, unreadable.
    std::uint64_t dropped = 0;  ///< Left out for their time (EOrderDrop).
    std::uint64_t raised = 0;   ///< Moved up behind a later time before them (EOrderRaise); equal times don't count.
    std::uint64_t outside = 0;  ///< Outside of `from` and `to`.
};

/// Reads rows of one text input (delimited columns) or of a binary series block, which it recognises by itself.
/// Rows come out strictly rising in time (for each symbol): whole seconds, with the ordering counter telling rows of one
/// second apart. Memory doesn't grow with the input. One thread at a time.
class RowReader {
public:
    /// Reads the header and the first rows to learn the shape. The source and the context must outlive the reader.
    /// Raises ToolError: EExitBadData for what can't be read, EExitUsage for options that don't fit together.
    RowReader(ByteSource& a_source, const ReadOptions& a_options, ToolContext& a_context);
    ~RowReader();
    RowReader(const RowReader&) = delete;
    RowReader& operator=(const RowReader&) = delete;

    const RowLayout& GetLayout() const;
    /// Replaces the contents of a_block by the next rows, at most a_limit. False at the end, with an empty block.
    bool Read(RowBlock& a_block, std::size_t a_limit);
    /// Symbols in the order of their first row, so far.
    const std::vector<std::string>& GetSymbols() const;
    const RowCounts& GetCounts() const;
    /// Bytes of the source gone through, for progress.
    std::uint64_t GetBytesRead() const;

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace kalvento::tool
