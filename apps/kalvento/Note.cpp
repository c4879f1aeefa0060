#include "kalvento/Note.h"

#include "platform/ShownText.h"

#include <ostream>

namespace kalvento::tool {

void Note(ToolContext& a_context, std::string_view a_text)
{
    a_context.err << "kalvento: " << internal::ShownText::OneLine(a_text) << std::endl;
}

} // namespace kalvento::tool
