#include "kalvento/Commands.h"
#include "kalvento/OutputTarget.h"
#include "kalvento/TextForms.h"
#include "platform/CodePage.h"
#include "series/Series.h"
#include "series/SeriesTable.h"

#include <fmt/ranges.h>

#include <array>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kalvento::tool {

namespace {

using internal::SeriesInfo;

const char* GroupText(ESeriesId a_series)
{
    if (VeloTools::Series::IsValueSeries(a_series))
        return "value";
    return VeloTools::Series::IsVolumeSeries(a_series) ? "volume" : "";
}

// In the order of EAggrType.
constexpr std::array<const char*, 5> S_folds = {"ohlc", "ohlcsum", "ohlclast", "sum", "last"};

std::string PrecisionText(const SeriesInfo& a_series)
{
    return a_series.precision && *a_series.precision != EPrecisionNone
               ? std::to_string(static_cast<int>(*a_series.precision))
               : "";
}

// What is told of a series, column by column; the first and the last one are numbers.
constexpr std::array<const char*, 7> S_columns = {"no", "key", "name", "label", "group", "fold", "places"};
using Cells = std::array<std::string, S_columns.size()>;

bool IsNumber(std::size_t a_column)
{
    return a_column == 0 || a_column + 1 == S_columns.size();
}

Cells CellsOf(const SeriesInfo& a_series)
{
    return {std::to_string(a_series.id), std::string(a_series.key),
            std::string(a_series.name),  CodePage::WideToUtf8(a_series.label),
            GroupText(a_series.id),      S_folds[a_series.aggrType],
            PrecisionText(a_series)};
}

std::string TableText()
{
    std::vector<TextTable::EColumn> kinds;
    for (std::size_t column = 0; column < S_columns.size(); ++column)
        kinds.push_back(IsNumber(column) ? TextTable::EColumnNumber : TextTable::EColumnText);
    TextTable table({S_columns.begin(), S_columns.end()}, std::move(kinds));
    for (const SeriesInfo& series : internal::SeriesTable()) {
        const Cells cells = CellsOf(series);
        table.Add({cells.begin(), cells.end()});
    }
    return table.ToText();
}

std::string CsvText()
{
    std::string text = fmt::format("{}\n", fmt::join(S_columns, ","));
    for (const SeriesInfo& series : internal::SeriesTable())
        text += fmt::format("{}\n", fmt::join(CellsOf(series), ","));
    return text;
}

std::string JsonlText()
{
    std::string text;
    for (const SeriesInfo& series : internal::SeriesTable()) {
        const Cells cells = CellsOf(series);
        for (std::size_t column = 0; column < cells.size(); ++column) {
            const std::string value = IsNumber(column) ? cells[column] : JsonText(cells[column]);
            text += fmt::format("{}\"{}\":{}", column == 0 ? '{' : ',', S_columns[column],
                                cells[column].empty() ? "null" : value);
        }
        text += "}\n";
    }
    return text;
}

constexpr const char* S_help =
    R"(Lists the series that rows may hold: the number that stands in stored blocks, the key by which other programs
name a series, the English name that heads a column, the Polish label that a user sees, the group, the way in
which the series folds into a candle unless told otherwise, and the decimal places with which it is shown.

Examples:
  kalvento series
  kalvento series --format csv | grep ',volume,'

)";

} // namespace

void AddSeriesCommand(Command a_app, ToolContext& a_context)
{
    auto format = std::make_shared<std::string>("table");
    Command command = a_app.AddCommand("series", "List the series that rows may hold");
    command.AddOption("-f,--format", *format, "table, csv, or jsonl: one JSON object a line")
        .OneOf({"table", "csv", "jsonl"})
        .ShowDefault();
    command.SetFooter(S_help + ExitCodesHelp());
    command.OnRun([format, &a_context] {
        OutputTarget target("", a_context);
        target.Write(*format == "csv" ? CsvText() : *format == "jsonl" ? JsonlText() : TableText());
        target.Commit();
    });
}

} // namespace kalvento::tool
