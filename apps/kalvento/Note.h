#pragma once

#include "kalvento/ToolContext.h"

#include <string_view>

namespace kalvento::tool {

/// A line of the program on standard error, in UTF-8. What came from outside may stand in it: it stays one line, without
/// controls. Not for what --quiet keeps silent: its callers know.
void Note(ToolContext& a_context, std::string_view a_text);

} // namespace kalvento::tool
