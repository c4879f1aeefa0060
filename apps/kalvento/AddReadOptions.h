#pragma once

#include "kalvento/CommandLine.h"
#include "kalvento/InputOptions.h"

namespace kalvento::tool {

/// Adds the options that fill an InputOptions, which must outlive the parse.
void AddReadOptions(const Command& a_command, InputOptions& a_options);

} // namespace kalvento::tool
