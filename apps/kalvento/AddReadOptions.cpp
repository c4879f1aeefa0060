#include "kalvento/AddReadOptions.h"

#include "text_rows/ReadOptions.h"

#include <CLI/CLI.hpp>

#include <utility>

namespace kalvento::tool {

namespace {

// "time=Date,price=Last" as a map. Raises what the parser of the command line turns into a refusal.
std::map<std::string, std::string> ParsePairs(const std::vector<std::string>& a_pairs, const char* a_option,
                                              const char* a_example)
{
    std::map<std::string, std::string> result;
    for (const std::string& pair : a_pairs) {
        const auto sign = pair.find('=');
        if (sign == std::string::npos || sign == 0 || sign + 1 == pair.size())
            throw CLI::ValidationError(a_option, "found \"" + pair +
                                                     "\", expected name=value pairs such as " + a_example);
        if (!result.emplace(pair.substr(0, sign), pair.substr(sign + 1)).second)
            throw CLI::ValidationError(a_option, "\"" + pair.substr(0, sign) + "\" is given twice");
    }
    return result;
}

char ParseSign(const std::string& a_text, const char* a_option, std::string_view a_accepted)
{
    const std::string text = a_text == "tab" || a_text == "\\t" ? "\t"
                             : a_text == "comma"                ? ","
                             : a_text == "semicolon"            ? ";"
                             : a_text == "pipe"                 ? "|"
                             : a_text == "space"                ? " "
                             : a_text == "point"                ? "."
                                                                : a_text;
    if (text.size() != 1 || a_accepted.find(text[0]) == std::string_view::npos)
        throw CLI::ValidationError(a_option, "found \"" + a_text +
                                                 "\", expected one of comma, semicolon, tab, "
                                                 "pipe, space (--delimiter) or point, comma (--decimal)");
    return text[0];
}

} // namespace

void AddReadOptions(CLI::App& a_command, ReadOptions& a_options)
{
    const std::string group = "Reading";
    a_command
        .add_option_function<std::string>(
            "--delimiter",
            [&a_options](const std::string& a_text) {
                a_options.delimiter = ParseSign(a_text, "--delimiter", ",;\t| ");
            },
            "Sign between columns: comma, semicolon, tab, pipe, space (default: found out)")
        ->group(group);
    a_command
        .add_option_function<std::string>(
            "--decimal",
            [&a_options](const std::string& a_text) {
                a_options.decimal = ParseSign(a_text, "--decimal", ".,");
            },
            "Decimal sign: point or comma (default: found out)")
        ->group(group);
    a_command
        .add_flag_callback(
            "--no-header", [&a_options] { a_options.header = false; },
            "The first line is data; --columns gives places, as in time=1,price=2")
        ->group(group);
    a_command
        .add_option_function<std::vector<std::string>>(
            "--columns",
            [&a_options](const std::vector<std::string>& a_pairs) {
                a_options.columns = ParsePairs(a_pairs, "--columns", "time=Date,price=Last");
            },
            "Names of the file's columns where they differ from ours: time=Date,price=Last")
        ->delimiter(',')
        ->group(group);
    a_command
        .add_option_function<std::vector<std::string>>(
            "--fold",
            [&a_options](const std::vector<std::string>& a_pairs) {
                a_options.folds = ParsePairs(a_pairs, "--fold", "turnover=sum,lop=last");
            },
            "How columns fold: sum or last; the price: ohlc, ohlcsum or ohlclast (turnover=sum)")
        ->delimiter(',')
        ->group(group);
    a_command
        .add_flag("--strict", a_options.strict,
                  "Refuse columns that mean nothing instead of leaving them out")
        ->group(group);
    a_command
        .add_option(
            "--time-format", a_options.timeFormat,
            "Form of times, as %Y-%m-%d %H:%M:%S, or unix, unixms, unixus, unixns (default: found out)")
        ->group(group);
    a_command
        .add_option("--zone", a_options.zone,
                    "Zone of input times that bear none, as Europe/Warsaw (default: as written)")
        ->group(group);
    a_command
        .add_option("--output-zone", a_options.outputZone,
                    "Zone in which windows lie and times are written (default: that of the input)")
        ->group(group);
    a_command.add_option("--from", a_options.from, "First day taken, YYYY-MM-DD")->group(group);
    a_command.add_option("--to", a_options.to, "Last day taken, YYYY-MM-DD, whole")->group(group);
    a_command
        .add_option("--symbol-column", a_options.symbolColumn,
                    "Column that tells several instruments in one file apart")
        ->group(group);
    a_command
        .add_option("--input-interval", a_options.inputInterval,
                    "Interval of input candles (default: the smallest step between the first rows)")
        ->group(group);
    a_command
        .add_option_function<std::string>(
            "--input-stamp",
            [&a_options](const std::string& a_text) { a_options.stampedWithEnd = a_text == "end"; },
            "Whether input candles bear the begin or the end of their window (default: begin)")
        ->check(CLI::IsMember({"begin", "end"}))
        ->group(group);
    // The enumerations are of bytes, which the command line parser would show as characters.
    a_command
        .add_option_function<std::string>(
            "--order",
            [&a_options](const std::string& a_text) {
                a_options.order = a_text == "refuse" ? EOrderRefuse
                                  : a_text == "drop" ? EOrderDrop
                                                     : EOrderRaise;
            },
            "A row not later than the one before: raise (move it up behind), refuse, drop (default: raise)")
        ->check(CLI::IsMember({"raise", "refuse", "drop"}))
        ->type_name("RULE")
        ->group(group);
    a_command
        .add_option_function<std::string>(
            "--bad-lines",
            [&a_options](const std::string& a_text) {
                a_options.badLines = a_text == "reject" ? EBadLinesReject : EBadLinesStop;
            },
            "A line that can't be read: stop, or reject (set it aside and count it; default: stop)")
        ->check(CLI::IsMember({"stop", "reject"}))
        ->type_name("RULE")
        ->group(group);
    a_command.add_option("--reject-file", a_options.rejectFile, "Where rejected lines go, with the header")
        ->group(group);
}

} // namespace kalvento::tool
