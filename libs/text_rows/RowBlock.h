#pragma once

#include "time/NDateTime.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kalvento::tool {

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

} // namespace kalvento::tool
