#include "kalvento/Commands.h"
#include "kalvento/OutputTarget.h"
#include "kalvento/TextForms.h"
#include "kalvento/Tool.h"
#include "platform/CodePage.h"
#include "series/Series.h"
#include "series/SeriesTable.h"

#include <memory>
#include <string>
#include <string_view>

namespace kalvento::tool {

namespace {

using internal::SeriesInfo;

std::string_view GroupText(ESeriesId a_series)
{
    return VeloTools::Series::IsValueSeries(a_series)    ? "value"
           : VeloTools::Series::IsVolumeSeries(a_series) ? "volume"
                                                         : "";
}

std::string_view FoldText(EAggrType a_type)
{
    switch (a_type) {
    case EAggrTypeOhlc:
        return "ohlc";
    case EAggrTypeOhlcSum:
        return "ohlcsum";
    case EAggrTypeOhlcLast:
        return "ohlclast";
    case EAggrTypeSum:
        return "sum";
    case EAggrTypeLast:
        return "last";
    }
    return "";
}

std::string PrecisionText(const SeriesInfo& a_series)
{
    return a_series.precision && *a_series.precision != EPrecisionNone
               ? std::to_string(static_cast<int>(*a_series.precision))
               : "";
}

std::string TableText()
{
    TextTable table({"no", "key", "name", "label", "group", "fold", "places"},
                    {TextTable::EColumnNumber, TextTable::EColumnText, TextTable::EColumnText,
                     TextTable::EColumnText, TextTable::EColumnText, TextTable::EColumnText,
                     TextTable::EColumnNumber});
    for (const SeriesInfo& series : internal::SeriesTable())
        table.Add({std::to_string(series.id), std::string(series.key), std::string(series.name),
                   CodePage::WideToUtf8(series.label), std::string(GroupText(series.id)),
                   std::string(FoldText(series.aggrType)), PrecisionText(series)});
    return table.ToText();
}

std::string CsvText()
{
    std::string text = "no,key,name,label,group,fold,places\n";
    for (const SeriesInfo& series : internal::SeriesTable()) {
        text += std::to_string(series.id);
        const std::string label = CodePage::WideToUtf8(series.label);
        const std::string precision = PrecisionText(series);
        for (const std::string_view cell :
             {series.key, series.name, std::string_view(label), GroupText(series.id),
              FoldText(series.aggrType), std::string_view(precision)})
            text.append(",").append(cell);
        text += '\n';
    }
    return text;
}

std::string JsonlText()
{
    const auto textOrNull = [](std::string_view a_text) {
        return a_text.empty() ? "null" : JsonText(a_text);
    };
    std::string text;
    for (const SeriesInfo& series : internal::SeriesTable()) {
        const std::string precision = PrecisionText(series);
        text += R"({"no":)" + std::to_string(series.id) + R"(,"key":)" + textOrNull(series.key) +
                R"(,"name":)" + JsonText(series.name) + R"(,"label":)" +
                JsonText(CodePage::WideToUtf8(series.label)) + R"(,"group":)" +
                textOrNull(GroupText(series.id)) + R"(,"fold":)" + JsonText(FoldText(series.aggrType)) +
                R"(,"places":)" + (precision.empty() ? "null" : precision) + "}\n";
    }
    return text;
}

} // namespace

void AddSeriesCommand(Command a_app, ToolContext& a_context)
{
    auto format = std::make_shared<std::string>("table");
    Command command = a_app.AddCommand("series", "List the series that rows may hold");
    command.AddOption("-f,--format", *format, "table, csv, or jsonl: one JSON object a line")
        .OneOf({"table", "csv", "jsonl"})
        .ShowDefault();
    command.SetFooter("Lists the series that rows may hold: the number that stands in stored blocks, the "
                      "key by which other programs\n"
                      "name a series, the English name that heads a column, the Polish label that a user "
                      "sees, the group, the way in\n"
                      "which the series folds into a candle unless told otherwise, and the decimal places "
                      "with which it is shown.\n\n"
                      "Examples:\n"
                      "  kalvento series\n"
                      "  kalvento series --format csv | grep ',volume,'\n\n" +
                      ExitCodesHelp());
    command.OnRun([format, &a_context] {
        OutputTarget target("", a_context);
        target.Write(*format == "csv" ? CsvText() : *format == "jsonl" ? JsonlText() : TableText());
        target.Commit();
    });
}

} // namespace kalvento::tool
