#pragma once

#include "kalvento/ToolContext.h"
#include "text_rows/RowCounts.h"

namespace kalvento::tool {

/// Notes on standard error about rows that were set aside, left out or moved, and about there being none.
void ReportCounts(const RowCounts& a_counts, ToolContext& a_context);

} // namespace kalvento::tool
