#include "kalvento/Commands.h"
#include "kalvento/Note.h"
#include "kalvento/OperationsFile.h"
#include "kalvento/OutputOptions.h"
#include "kalvento/OutputTarget.h"
#include "kalvento/TextForms.h"

#include "history_operations/OperationsText.h"

#include <memory>
#include <ostream>
#include <string>

namespace kalvento::tool {

namespace {

struct OperationsOptions {
    std::string input;
    std::string format = "table";
    std::string output;
};

// The factors by which the library would scale a price and a volume of 1.
double VolumeFactor(const SingleHistoryOperation& a_operation)
{
    constexpr int lastTypeOfVolumes = 6;
    return a_operation.GetType() <= lastTypeOfVolumes ? 1.0 / a_operation.GetFactor() : 1.0;
}

std::string TableText(const OperationsFile& a_file)
{
    TextTable table({"no", "id", "until", "type", "factor", "prices x", "volumes x"},
                    {TextTable::EColumnNumber, TextTable::EColumnNumber, TextTable::EColumnText,
                     TextTable::EColumnNumber, TextTable::EColumnNumber, TextTable::EColumnNumber,
                     TextTable::EColumnNumber});
    std::size_t number = 0;
    for (const SingleHistoryOperation& operation : a_file.list) {
        const NDateTime& date = operation.GetDate();
        const bool isMidnight = date.GetAbsoluteTime() == 0 && date.GetMilliSec() == 0;
        table.Add({std::to_string(++number), std::to_string(operation.GetId()),
                   date.IsValid() ? FormatTime(date, isMidnight) : "invalid",
                   std::to_string(static_cast<int>(operation.GetType())),
                   FormatNumber(operation.GetStoredFactor()), FormatNumber(operation.GetFactor()),
                   FormatNumber(VolumeFactor(operation))});
    }
    std::string text = a_file.name + ": " + (a_file.isXml ? "XML" : "text") + " form, version " +
                       std::to_string(a_file.list.Version()) +
                       (a_file.list.Version() < 0 ? " (a list cut for a date)" : "") + ", " +
                       ShownCount(number) + (number == 1 ? " operation\n" : " operations\n");
    return number == 0 ? text : text + table.ToText(2);
}

std::string TextForm(const OperationsFile& a_file)
{
    if (auto text = OperationsText::Write(a_file.list))
        return *std::move(text);
    std::size_t number = 1;
    for (const SingleHistoryOperation& operation : a_file.list) {
        if (!OperationsText::CanHold(operation))
            break;
        ++number;
    }
    throw ToolError(EExitBadData, a_file.name + ": operation " + std::to_string(number) +
                                      ": the text form holds midnights of the years 1950 to 2049 only; "
                                      "--format xml holds any time");
}

void RunOperations(const OperationsOptions& a_options, ToolContext& a_context)
{
    const OperationsFile file = ReadOperationsFile(a_options.input, a_context);
    OutputTarget target(a_options.output, a_context);
    target.Write(a_options.format == "text"  ? TextForm(file)
                 : a_options.format == "xml" ? OperationsXml(file.list)
                                             : TableText(file));
    target.Commit();
    a_context.out.flush();
    for (const std::string& oddity : file.oddities)
        Note(a_context, file.name + ": " + oddity);
    if (!file.oddities.empty())
        a_context.exitCode = EExitBadData;
}

} // namespace

void AddOperationsCommand(Command a_app, ToolContext& a_context)
{
    Command command =
        a_app.AddCommand("operations", "Show, check and convert a list of corporate operations");
    const auto options = std::make_shared<OperationsOptions>();
    command
        .AddOption("FILE", options->input,
                   "List in the text form of a data source or as DataOperation.xml, - for standard input")
        .Required()
        .TypeName("");
    command
        .AddOption("-f,--format", options->format,
                   "table, text (version, then lines id,date,type,factor) or xml")
        .OneOf({"table", "text", "xml"})
        .ShowDefault();
    AddOutputOption(command, options->output);
    command.SetFooter(
        "Shows the list, or writes it in one of its forms, and tells on standard error what nobody can have meant:\n"
        "numbers that can't be read (they count as 0), dates that no calendar has, factors of 0 and below, identifiers given\n"
        "twice. Ends with 0 for a sound list and with 3 for any other, which is written all the same unless it can't be\n"
        "read at all.\n\n"
        "Examples:\n"
        "  kalvento operations orcl.txt\n"
        "  kalvento operations orcl.txt --format xml -o DataOperation.xml\n"
        "  kalvento operations DataOperation.xml --format text | head\n\n" +
        ExitCodesHelp());
    command.OnRun([options, &a_context] { RunOperations(*options, a_context); });
}

} // namespace kalvento::tool
