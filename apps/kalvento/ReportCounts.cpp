#include "kalvento/ReportCounts.h"

#include "text_rows/RowReader.h"

#include <ostream>

namespace kalvento::tool {

void ReportCounts(const RowCounts& a_counts, ToolContext& a_context)
{
    if (a_context.quiet)
        return;
    const auto note = [&](std::uint64_t a_count, const char* a_text) {
        if (a_count > 0)
            a_context.err << "kalvento: " << a_count << ' ' << a_text << '\n';
    };
    note(a_counts.bad, "lines set aside that could not be read");
    note(a_counts.dropped, "rows left out, their times not later than the ones before");
    note(a_counts.raised, "rows with falling times moved up behind the ones before");
    if (a_counts.rows == 0)
        a_context.err << "kalvento: no rows" << (a_counts.outside > 0 ? " between --from and --to" : "")
                      << '\n';
}

} // namespace kalvento::tool
