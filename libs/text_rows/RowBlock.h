#pragma once

#include "folding/ColumnBlock.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kalvento::rows {

/// Rows as they are read: one column for each series of the layout.
struct RowBlock : ColumnBlock {
    std::vector<std::uint32_t> symbols; ///< Places in RowReader::GetSymbols; empty where there are none.

    /// Nanoseconds of the second that a row lies in, where they were asked for (ReadOptions::fractions); else empty.
    std::vector<std::int32_t> fractions;

    /// Adds rows as ColumnBlock::Append does, with their fractions.
    void AppendRows(const RowBlock& a_from, std::size_t a_first, std::size_t a_last);
    /// Makes room for that many rows of that many columns, never less than before.
    void Reserve(std::size_t a_rows, std::size_t a_columns, bool a_symbols);
};

} // namespace kalvento::rows
