#include "kalvento/BlockFile.h"
#include "kalvento/Commands.h"
#include "kalvento/OutputTarget.h"
#include "kalvento/TextForms.h"
#include "platform/CodePage.h"
#include "series/Series.h"
#include "text_rows/IntervalNotation.h"
#include "text_rows/SeriesNames.h"
#include "time/IntervalTranslator.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kalvento::tool {

namespace {

struct ShowOptions {
    std::string input;
    std::size_t rows = 5;
    bool all = false;
    std::string format = "text";
};

constexpr std::size_t S_flushAt = 1 << 16;

std::vector<DataSeriesSet::const_iterator> ReadingOrder(const DataSeriesSet& a_set)
{
    std::vector<ESeriesId> series;
    for (const auto& [id, values] : a_set)
        series.push_back(id);
    std::vector<DataSeriesSet::const_iterator> order;
    for (const std::size_t place : VeloTools::Series::ReadingOrder(series))
        order.push_back(a_set.begin() + static_cast<std::ptrdiff_t>(place));
    return order;
}

bool HasCandles(const DataSeriesSet& a_set)
{
    return a_set.find(IntervalOpen) != a_set.end();
}

std::string ValueText(const std::vector<double>& a_values, std::size_t a_row)
{
    return a_row < a_values.size() ? FormatNumber(a_values[a_row]) : "";
}

std::string HeadText(const BlockFile& a_block)
{
    const DataSeriesSet& set = a_block.set;
    const IntervalAndMultiplicity interval = set.GetIntervalData();
    std::string text = a_block.name + ": series block, version 1, " + ShownCount(a_block.size) + " bytes\n";
    text += "  interval  " + FormatInterval(interval) + " (" +
            CodePage::WideToUtf8(
                IntervalTranslator::ToDescription(interval.GetInterval(), interval.GetMultiplicity())) +
            ")\n";
    text += "  rows      " + ShownCount(set.GetRecordsCount()) + "\n";
    NDateTime first;
    NDateTime last;
    if (set.GetTimes(first, last))
        text += "  times     " + FormatTime(first) + " to " + FormatTime(last) + "\n";
    text += "  columns   " + std::to_string(set.SeriesCount()) + "\n\n";

    TextTable table({"no", "name", "label", "values", "least", "greatest"},
                    {TextTable::EColumnNumber, TextTable::EColumnText, TextTable::EColumnText,
                     TextTable::EColumnNumber, TextTable::EColumnNumber, TextTable::EColumnNumber});
    const bool hasCandles = HasCandles(set);
    for (const auto& [series, values] : set) {
        const auto [least, greatest] = std::minmax_element(values.begin(), values.end());
        table.Add({std::to_string(series), ColumnName(series, hasCandles),
                   CodePage::WideToUtf8(VeloTools::Series::DefaultLabel(series)), ShownCount(values.size()),
                   values.empty() ? "" : FormatNumber(*least),
                   values.empty() ? "" : FormatNumber(*greatest)});
    }
    return text + table.ToText(2);
}

std::string RowsText(const DataSeriesSet& a_set, std::size_t a_first, std::size_t a_end)
{
    const auto order = ReadingOrder(a_set);
    std::vector<std::string> header{"row", "time"};
    std::vector<TextTable::EColumn> kinds{TextTable::EColumnNumber, TextTable::EColumnText};
    const bool hasCandles = HasCandles(a_set);
    for (const auto& column : order) {
        header.push_back(ColumnName(column->first, hasCandles));
        kinds.push_back(TextTable::EColumnValue);
    }
    TextTable table(std::move(header), std::move(kinds));
    for (std::size_t row = a_first; row < a_end; ++row) {
        std::vector<std::string> cells{std::to_string(row + 1),
                                       ShownTimeWithCounter(a_set.TimeSeries()[row])};
        for (const auto& column : order)
            cells.push_back(ValueText(column->second, row));
        table.Add(std::move(cells));
    }
    return table.ToText(2);
}

void WriteText(const BlockFile& a_block, const ShowOptions& a_options, OutputTarget& a_target)
{
    const std::size_t count = a_block.set.GetRecordsCount();
    a_target.Write(HeadText(a_block));
    // Twice the rows asked for leave nothing out between the first and the last ones.
    if (a_options.all || count / 2 < a_options.rows || count == 2 * a_options.rows) {
        if (count > 0)
            a_target.Write("\n" + RowsText(a_block.set, 0, count));
        return;
    }
    if (a_options.rows == 0)
        return;
    a_target.Write("\n" + RowsText(a_block.set, 0, a_options.rows));
    a_target.Write("  ... " + ShownCount(count - 2 * a_options.rows) + " rows ...\n");
    a_target.Write(RowsText(a_block.set, count - a_options.rows, count));
}

void WriteCsv(const DataSeriesSet& a_set, OutputTarget& a_target)
{
    const auto order = ReadingOrder(a_set);
    std::string text = "time";
    const bool hasCandles = HasCandles(a_set);
    for (const auto& column : order)
        text += ',' + ColumnName(column->first, hasCandles);
    text += '\n';
    for (std::size_t row = 0; row < a_set.GetRecordsCount(); ++row) {
        text += FormatTime(a_set.TimeSeries()[row]);
        for (const auto& column : order)
            text += ',' + ValueText(column->second, row);
        text += '\n';
        if (text.size() > S_flushAt) {
            a_target.Write(text);
            text.clear();
        }
    }
    a_target.Write(text);
}

void RunShow(const ShowOptions& a_options, ToolContext& a_context)
{
    const BlockFile block = ReadBlockFile(a_options.input, a_context);
    OutputTarget target("", a_context);
    if (a_options.format == "csv")
        WriteCsv(block.set, target);
    else
        WriteText(block, a_options, target);
    target.Commit();

    const std::string advice = "; `kalvento check` says more";
    if (block.endsEarly)
        throw ToolError(EExitBadData,
                        block.name + ": the block ends early, what was missing is shown as zero" + advice);
    if (!block.set.IsValid())
        throw ToolError(EExitBadData, block.name + ": the block is not valid" + advice);
}

constexpr const char* S_help =
    R"(Shows what a binary series block holds: its interval, its columns, its first and last rows. `#7` behind
a time is the ordering counter, which tells rows of one second apart.

Examples:
  kalvento show trades.block
  kalvento show trades.block --all | less
  kalvento show candles.block --format csv > candles.csv

)";

} // namespace

void AddShowCommand(Command a_app, ToolContext& a_context)
{
    auto options = std::make_shared<ShowOptions>();
    Command command = a_app.AddCommand("show", "Show what a series block holds");
    command.AddOption("block", options->input, "File of a series block, or - for standard input").Required();
    command.AddOption("-n,--rows", options->rows, "How many of the first and of the last rows").ShowDefault();
    command.AddFlag("--all", options->all, "All rows");
    command.AddOption("-f,--format", options->format, "text, or csv: all rows and nothing else")
        .OneOf({"text", "csv"})
        .ShowDefault();
    command.SetFooter(S_help + ExitCodesHelp());
    command.OnRun([options, &a_context] { RunShow(*options, a_context); });
}

} // namespace kalvento::tool
