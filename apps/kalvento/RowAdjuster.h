#pragma once

#include "history_operations/HistoryOperations.h"
#include "kalvento/ToolContext.h"
#include "series/History.h"
#include "text_rows/RowReader.h"

#include <cstddef>

namespace kalvento::tool {

/// Puts rows that come in pieces on the scale of the present, exactly as History::ApplyDataOperations does with all of
/// them at once: times of a RowReader never come within half a second of the next day. One thread at a time.
class RowAdjuster {
public:
    RowAdjuster(HistoryOperations a_operations, const RowLayout& a_layout);

    /// Adjusts the rows from a_first on; those before it were adjusted earlier.
    void Adjust(RowBlock& a_rows, std::size_t a_first);

private:
    HistoryOperations m_operations;
    History m_history; // the piece at hand
};

} // namespace kalvento::tool
