#pragma once

#include "kalvento/ToolContext.h"
#include "text_rows/RowsFault.h"

#include <functional>
#include <string>

namespace kalvento::tool {

/// What is wrong with rows, with the names that the command line has for its options; without the place.
std::string WordFault(const RowsFault::Parts& a_fault);

/// Does it, and raises what can't be read as a ToolError with place, words and exit code.
void RaiseToolErrors(const std::function<void()>& a_action);

} // namespace kalvento::tool
