#pragma once

#include "rows/ReadOptions.h"
#include "rows/ToolContext.h"
#include "time/IntervalAndMultiplicity.h"
#include "time/NDateTime.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

enum ESeriesId : std::uint32_t;

namespace kalvento::tool {

class ByteSource;
class OutputTarget;

/// The shape of the rows of one input.
struct RowLayout {
    std::vector<ESeriesId> series; ///< Ascending, without Time: the order of RowBlock::columns.
    std::vector<EAggrType> folds;  ///< How each of them folds.
    IntervalAndMultiplicity
        interval; ///< (EIntervalTick, 1) for ticks; a candle interval where open, high, low stand.
    bool hasSymbols = false;
};

/// Some rows, column by column. The vectors may be longer than the rows that they hold: between reads they stay at
/// their full length, since bringing them down and up again would write every element once more.
struct RowBlock {
    std::size_t rows = 0;
    std::vector<NDateTime> times;
    std::vector<std::vector<double>> columns; ///< One per series of the layout.
    std::vector<std::uint32_t> symbols; ///< Places in RowReader::GetSymbols; empty where there are none.

    /// Makes room for that many rows of that many columns, never less than before.
    void Reserve(std::size_t a_rows, std::size_t a_columns, bool a_symbols);
};

/// What became of the lines of an input.
struct RowCounts {
    std::uint64_t rows = 0;    ///< Handed out.
    std::uint64_t bad = 0;     ///< Set aside, unreadable.
    std::uint64_t dropped = 0; ///< Left out for their time (EOrderDrop).
    std::uint64_t raised =
        0; ///< Moved up behind a later time before them (EOrderRaise); equal times don't count.
    std::uint64_t firstRaised = 0; ///< The line (text, from 1) or row (block, from 0) of the first of them.
    std::uint64_t outside = 0;     ///< Outside of `from` and `to`.

    /// Those of another input; firstRaised stays.
    void Add(const RowCounts& a_other);
};

/// What became of one line of a text that holds a row.
struct LineFate {
    enum EFate : std::uint8_t {
        EFateTaken, ///< Handed out; where the one before has the same time, told apart by the ordering counter.
        EFateRaised,  ///< Handed out with a later time than its own (EOrderRaise).
        EFateDropped, ///< Left out for its time (EOrderDrop).
        EFateOutside, ///< Outside of `from` and `to`.
        EFateBad      ///< Set aside: it can't be read, or its time can't be taken.
    };
    EFate fate = EFateTaken;
    std::uint64_t line = 0;   ///< From 1.
    std::uint32_t symbol = 0; ///< Place in RowReader::GetSymbols; of no meaning for bad lines.
    NDateTime written;        ///< The line's own time in the zone of the output; zero for bad lines.
    std::string reason;       ///< Of bad lines: what was found and what would be accepted.
};

/// Reads rows of one text input (delimited columns) or of a binary series block, which it recognises by itself.
///
/// Rows come out strictly rising in time (for each symbol): whole seconds, with the ordering counter telling rows of one
/// second apart, given as DateTimeTools::ShiftTimeIfNeed gives it. From the 50,001st row of one second on, rows share
/// their time: a greater counter would come within half a second of the next second, where times no longer compare
/// by their seconds. Before 1899-12-30 they always share it, for the counter counts backward there. A text's memory doesn't grow with its length; a block is read whole. One thread at a time.
class RowReader {
public:
    /// Reads the header and the first rows to learn the shape. The source, the context and a_rejects outlive the reader.
    /// a_rejects: where lines go that are set aside, the header first; may be null. Raises ToolError: EExitBadData for
    /// what can't be read, EExitUsage for options that don't fit together.
    RowReader(ByteSource& a_source, const ReadOptions& a_options, ToolContext& a_context,
              OutputTarget* a_rejects = nullptr);
    ~RowReader();
    RowReader(const RowReader&) = delete;
    RowReader& operator=(const RowReader&) = delete;

    /// This input goes on where another one of the same series ended: times must rise behind its last rows, symbols keep
    /// their places. To be called before the first Read.
    void ContinueFrom(const RowReader& a_before);

    /// From now on a_watcher is told of each line of a text, in their order, from within Read. It must not raise.
    void WatchLines(std::function<void(const LineFate&)> a_watcher);

    const RowLayout& GetLayout() const;
    /// Keeps the first a_keep rows of a_block and puts the next rows of the input behind them, at most a_limit. False where
    /// the source has no more, with no new rows. With ReadOptions::growing that isn't final: the next call asks the source
    /// again, and the rows go on where they stopped.
    bool Read(RowBlock& a_block, std::size_t a_limit, std::size_t a_keep = 0);
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
