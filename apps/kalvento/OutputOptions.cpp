#include "kalvento/OutputOptions.h"

namespace kalvento::tool {

void AddOutputOption(CLI::App& a_command, std::string& a_output)
{
    a_command
        .add_option("--output,-o", a_output, "File to write, whole or not at all (default: standard output)")
        ->type_name("FILE");
}

void AddOutputOptions(CLI::App& a_command, EOutputFormat& a_format, std::string& a_output)
{
    a_command
        .add_option_function<std::string>(
            "--format", [&a_format](const std::string& a_text) { a_format = *OutputFormatFromName(a_text); },
            "csv, jsonl, table (aligned, for reading) or block (binary series block); default: csv")
        ->check(CLI::IsMember({"csv", "jsonl", "table", "block"}))
        ->type_name("FORM");
    AddOutputOption(a_command, a_output);
}

} // namespace kalvento::tool
