#pragma once

#include "folding/ColumnBlock.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kalvento::rows {

/// Rows as they are read: one column for each series of the layout.
struct RowBlock : ColumnBlock {
    std::vector<std::uint32_t> symbols; ///< Places in RowReader::GetSymbols; empty where there are none.

    /// Makes room for that many rows of that many columns, never less than before.
    void Reserve(std::size_t a_rows, std::size_t a_columns, bool a_symbols);
};

} // namespace kalvento::rows
