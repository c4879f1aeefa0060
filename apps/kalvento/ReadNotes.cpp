#include "kalvento/ReadNotes.h"

#include "text_rows/ByteSource.h"

#include <ostream>

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
        hooks.passedOver = [&err = m_context.err, name = a_input.GetName()](const std::string& a_columns) {
            err << "kalvento: " << name << ": columns passed over: " << a_columns << '\n';
        };
    if (m_rejects)
        hooks.setAside = [rejects = m_rejects.get()](std::string_view a_line) {
            rejects->Write(std::string(a_line) + "\n");
        };
    return hooks;
}

void ReadNotes::Commit()
{
    if (m_rejects)
        m_rejects->Commit();
}

} // namespace kalvento::tool
