#pragma once

namespace kalvento::tool {

struct RowCounts;
struct ToolContext;

/// Notes on standard error about rows that were set aside, left out or moved, and about there being none.
void ReportCounts(const RowCounts& a_counts, ToolContext& a_context);

} // namespace kalvento::tool
