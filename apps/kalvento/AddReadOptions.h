#pragma once

#include "kalvento/CommandLine.h"

namespace kalvento::tool {

struct ReadOptions;

/// Adds the options that fill a ReadOptions, which must outlive the parse.
void AddReadOptions(const Command& a_command, ReadOptions& a_options);

} // namespace kalvento::tool
