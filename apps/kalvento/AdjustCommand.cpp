#include "kalvento/AddReadOptions.h"
#include "kalvento/Commands.h"
#include "kalvento/OpenInput.h"
#include "kalvento/OperationsFile.h"
#include "kalvento/OutputOptions.h"
#include "kalvento/OutputTarget.h"
#include "kalvento/Progress.h"
#include "kalvento/ReadNotes.h"
#include "kalvento/RowAdjuster.h"
#include "kalvento/RowWriter.h"
#include "text_rows/RowReader.h"

#include <memory>
#include <string>

namespace kalvento::tool {

namespace {

struct AdjustOptions {
    std::string history;
    std::string operations;
    EOutputFormat format = EOutputCsv;
    std::string output;
    InputOptions read;
};

void RunAdjust(const AdjustOptions& a_options, ToolContext& a_context)
{
    if (a_options.history == "-" && a_options.operations == "-")
        throw ToolError(EExitUsage, "standard input can be read only once");
    RefuseOtherForm(a_options.output, a_options.format);
    HistoryOperations operations = ReadOperationsForRows(a_options.operations, a_context);

    const auto source = OpenInput(a_options.history, a_context);
    ReadNotes notes(a_context, a_options.read);
    RowReader reader(*source, a_options.read, notes.HooksFor(*source));
    const RowLayout& layout = reader.GetLayout();
    RowAdjuster adjuster(std::move(operations), layout);
    OutputTarget target(a_options.output, a_context);
    const auto writer = RowWriter::Make(a_options.format, layout, layout.interval.IsEod(), target);

    Progress progress(a_context, source->GetSize());
    RowBlock rows;
    while (reader.Read(rows, S_blockRows)) {
        adjuster.Adjust(rows, 0);
        writer->Write(rows, {});
        progress.Show(reader.GetBytesRead(), reader.GetCounts().rows);
    }
    reader.ExpectSymbol();
    writer->Finish();
    target.Commit();
    notes.Say(a_options.output, writer->GetNote());
    notes.Finish(reader.GetCounts());
}

constexpr const char* S_help =
    "Puts the prices and volumes of a history on the scale of the present: each operation scales the rows up to the end of its\n"
    "day. Prices, open, high and low are multiplied by its factor (divided, for the types 4 and 14); types up to 6 scale volume\n"
    "and open interest the other way. Other columns stay. A history bears no mark of it: adjust it once.\n"
    "Days are those of the rows as written, after --output-zone.\n\n"
    "Examples:\n"
    "  kalvento adjust orcl.csv --operations orcl.txt -o orcl-adjusted.csv\n"
    "  kalvento adjust wig20.block --operations DataOperation.xml --format block -o adjusted.block\n"
    "  kalvento operations orcl.txt && kalvento adjust orcl.csv --operations orcl.txt | head\n\n";

} // namespace

void AddAdjustCommand(Command a_app, ToolContext& a_context)
{
    Command command =
        a_app.AddCommand("adjust", "Correct a history by the instrument's corporate operations");
    const auto options = std::make_shared<AdjustOptions>();
    command.AddOption("HISTORY", options->history, "CSV file or series block, - for standard input")
        .Required()
        .TypeName("");
    command
        .AddOption("--operations", options->operations,
                   "List of operations: text (version, then lines id,date,type,factor) or DataOperation.xml")
        .Required()
        .TypeName("FILE");
    AddOutputOptions(command, options->format, options->output);
    AddReadOptions(command, options->read);
    AddSymbolOption(command, options->read);
    options->read.oneSymbol = true;
    options->read.fractions = true;
    command.SetFooter(S_help + ExitCodesHelp());
    command.OnRun([options, &a_context] { RunAdjust(*options, a_context); });
}

} // namespace kalvento::tool
