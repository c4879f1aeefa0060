#include "kalvento/ReadNotes.h"

#include "kalvento/Note.h"
#include "text_rows/ByteSource.h"

namespace kalvento::tool {

ReadNotes::ReadNotes(ToolContext& a_context, const InputOptions& a_options)
    : m_context(a_context), m_dropsRepeated(a_options.dropRepeated)
{
    if (!a_options.rejectFile.empty())
        m_rejects = std::make_unique<OutputTarget>(a_options.rejectFile, a_context);
}

ReadHooks ReadNotes::HooksFor(const ByteSource& a_input) const
{
    ReadHooks hooks;
    if (!m_context.quiet)
        hooks.passedOver = [&context = m_context, name = a_input.GetName()](const std::string& a_columns) {
            Note(context, name + ": columns passed over: " + a_columns);
        };
    if (!m_context.quiet)
        hooks.turned = [&context = m_context, name = a_input.GetName()] {
            Note(context, name + ": the rows run from the newest to the oldest; they are turned");
        };
    if (m_rejects)
        hooks.setAside = [rejects = m_rejects.get()](std::string_view a_line) {
            rejects->Write(std::string(a_line) + "\n");
        };
    return hooks;
}

void ReadNotes::Say(const std::string& a_file, std::string_view a_note) const
{
    if (!a_note.empty() && !m_context.quiet)
        Note(m_context, (a_file.empty() ? "standard output" : a_file) + ": " + std::string(a_note));
}

void ReadNotes::Finish(const RowCounts& a_counts)
{
    if (m_rejects)
        m_rejects->Commit();
    if (m_context.quiet)
        return;
    const auto note = [this](std::uint64_t a_count, const char* a_one, const char* a_several) {
        if (a_count > 0)
            Note(m_context, std::to_string(a_count) + ' ' + (a_count == 1 ? a_one : a_several));
    };
    note(a_counts.bad, "line set aside that could not be read", "lines set aside that could not be read");
    note(a_counts.dropped, "row left out, its time not later than the one before",
         "rows left out, their times not later than the ones before");
    note(a_counts.raised, "row with a falling time moved up past the one before",
         "rows with falling times moved up past the ones before");
    note(a_counts.misplaced, "row out of order put in its place", "rows out of order put in their places");
    if (m_dropsRepeated)
        note(a_counts.repeated, "row left out that repeats another one exactly",
             "rows left out that repeat another one exactly");
    else
        note(a_counts.repeated, "row repeats another one exactly (--drop-repeated leaves it out)",
             "rows repeat another one exactly (--drop-repeated leaves them out)");
    if (a_counts.rows == 0)
        Note(m_context, std::string("no rows") + (a_counts.outside > 0 ? " between --from and --to" : ""));
}

} // namespace kalvento::tool
