#include "kalvento/OutputOptions.h"

namespace kalvento::tool {

void AddOutputOption(Command a_command, std::string& a_output)
{
    a_command
        .AddOption("--output,-o", a_output, "File to write, whole or not at all (default: standard output)")
        .TypeName("FILE");
}

void AddOutputOptions(Command a_command, EOutputFormat& a_format, std::string& a_output)
{
    a_command
        .AddChoice<EOutputFormat>(
            "--format", a_format,
            {{"csv", EOutputCsv}, {"jsonl", EOutputJsonl}, {"table", EOutputTable}, {"block", EOutputBlock}},
            "csv, jsonl, table (aligned, for reading) or block (binary series block); default: csv")
        .TypeName("FORM");
    AddOutputOption(a_command, a_output);
}

} // namespace kalvento::tool
