#include "kalvento/ReadNotes.h"

#include "kalvento/Note.h"
#include "text_rows/ByteSource.h"

namespace kalvento::tool {

ReadNotes::ReadNotes(ToolContext& a_context, const std::string& a_rejectFile) : m_context(a_context)
{
    if (!a_rejectFile.empty())
        m_rejects = std::make_unique<OutputTarget>(a_rejectFile, a_context);
}

ReadHooks ReadNotes::HooksFor(const ByteSource& a_input) const
{
    ReadHooks hooks;
    if (!m_context.quiet)
        hooks.passedOver = [&context = m_context, name = a_input.GetName()](const std::string& a_columns) {
            Note(context, name + ": columns passed over: " + a_columns);
        };
    if (m_rejects)
        hooks.setAside = [rejects = m_rejects.get()](std::string_view a_line) {
            rejects->Write(std::string(a_line) + "\n");
        };
    return hooks;
}

void ReadNotes::Finish(const RowCounts& a_counts)
{
    if (m_rejects)
        m_rejects->Commit();
    if (m_context.quiet)
        return;
    const auto note = [this](std::uint64_t a_count, const char* a_text) {
        if (a_count > 0)
            Note(m_context, std::to_string(a_count) + ' ' + a_text);
    };
    note(a_counts.bad, "lines set aside that could not be read");
    note(a_counts.dropped, "rows left out, their times not later than the ones before");
    note(a_counts.raised, "rows with falling times moved up behind the ones before");
    if (a_counts.rows == 0)
        Note(m_context, std::string("no rows") + (a_counts.outside > 0 ? " between --from and --to" : ""));
}

} // namespace kalvento::tool
