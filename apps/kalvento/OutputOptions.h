#pragma once

#include "kalvento/RowWriter.h"

#include <CLI/CLI.hpp>

#include <string>

namespace kalvento::tool {

/// `--output`: the file to write, empty for standard output. a_output must live as long as the command.
void AddOutputOption(CLI::App& a_command, std::string& a_output);

/// `--format` and `--output`, as every command has them that writes rows. Both must live as long as the command.
void AddOutputOptions(CLI::App& a_command, EOutputFormat& a_format, std::string& a_output);

} // namespace kalvento::tool
