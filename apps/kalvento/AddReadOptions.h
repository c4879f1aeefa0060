#pragma once

#include "kalvento/CommandLine.h"
#include "kalvento/ToolContext.h"
#include "text_rows/ReadOptions.h"

namespace kalvento::tool {

/// Adds the options that fill a ReadOptions, which must outlive the parse.
void AddReadOptions(const Command& a_command, ReadOptions& a_options);

} // namespace kalvento::tool
