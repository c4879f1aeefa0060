#pragma once

#include "kalvento/CommandLine.h"
#include "kalvento/RowWriter.h"

#include <string>

namespace kalvento::tool {

/// `--output`: the file to write, empty for standard output. a_output must live as long as the command.
void AddOutputOption(Command a_command, std::string& a_output);

/// `--format` and `--output`, as in every command that writes rows. Both must live as long as the command.
void AddOutputOptions(Command a_command, EOutputFormat& a_format, std::string& a_output);

} // namespace kalvento::tool
