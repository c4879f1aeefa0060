#pragma once

#include "kalvento/ToolContext.h"

#include <string>
#include <vector>

namespace kalvento::tool {

/// Runs the whole tool in this process and returns its exit code, which is also in the context. a_arguments are those
/// after the program's name. Nothing is thrown: every failure becomes a line on a_context.err and an exit code.
int RunTool(const std::vector<std::string>& a_arguments, ToolContext& a_context);

} // namespace kalvento::tool
