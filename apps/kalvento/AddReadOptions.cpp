#include "kalvento/AddReadOptions.h"

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
            RefuseOption(a_option, "found \"" + pair + "\", expected name=value pairs such as " + a_example);
        if (!result.emplace(pair.substr(0, sign), pair.substr(sign + 1)).second)
            RefuseOption(a_option, "\"" + pair.substr(0, sign) + "\" is given twice");
    }
    return result;
}

char ParseSign(const std::string& a_text, const char* a_option, std::string_view a_accepted)
{
    static const std::map<std::string, std::string> names{{"tab", "\t"},      {"\\t", "\t"}, {"comma", ","},
                                                          {"semicolon", ";"}, {"pipe", "|"}, {"space", " "},
                                                          {"point", "."}};
    const auto named = names.find(a_text);
    const std::string& text = named == names.end() ? a_text : named->second;
    if (text.size() != 1 || a_accepted.find(text[0]) == std::string_view::npos)
        RefuseOption(a_option, "found \"" + a_text +
                                   "\", expected one of comma, semicolon, tab, "
                                   "pipe, space (--delimiter) or point, comma (--decimal)");
    return text[0];
}

// How lines become columns.
void AddColumnOptions(const Command& a_command, ReadOptions& a_options)
{
    a_command.AddOption(
        "--delimiter",
        [&a_options](const std::string& a_text) {
            a_options.delimiter = ParseSign(a_text, "--delimiter", ",;\t| ");
        },
        "Sign between columns: comma, semicolon, tab, pipe, space (default: found out)");
    a_command.AddOption(
        "--decimal",
        [&a_options](const std::string& a_text) { a_options.decimal = ParseSign(a_text, "--decimal", ".,"); },
        "Decimal sign: point or comma (default: found out)");
    a_command.AddFlag(
        "--no-header", [&a_options] { a_options.header = false; },
        "The first line is data; --columns gives places, as in time=1,price=2");
    a_command
        .AddList(
            "--columns",
            [&a_options](const std::vector<std::string>& a_pairs) {
                a_options.columns = ParsePairs(a_pairs, "--columns", "time=Date,price=Last");
            },
            "Names of the file's columns where they differ from ours: time=Date,price=Last")
        .Separator(',');
    a_command
        .AddList(
            "--fold",
            [&a_options](const std::vector<std::string>& a_pairs) {
                a_options.folds = ParsePairs(a_pairs, "--fold", "turnover=sum,lop=last");
            },
            "How columns fold: sum or last; the price: ohlc, ohlcsum or ohlclast (turnover=sum)")
        .Separator(',');
    a_command.AddFlag("--strict", a_options.strict,
                      "Refuse columns that mean nothing instead of leaving them out");
}

// What times mean, and which rows are taken.
void AddTimeOptions(const Command& a_command, ReadOptions& a_options)
{
    a_command.AddOption(
        "--time-format", a_options.timeFormat,
        "Form of times, as %Y-%m-%d %H:%M:%S, or unix, unixms, unixus, unixns (default: found out)");
    a_command.AddOption("--zone", a_options.zone,
                        "Zone of input times that bear none, as Europe/Warsaw (default: as written)");
    a_command.AddOption("--output-zone", a_options.outputZone,
                        "Zone in which windows lie and times are written (default: that of the input)");
    a_command.AddOption("--from", a_options.from, "First day taken, YYYY-MM-DD");
    a_command.AddOption("--to", a_options.to, "Last day taken, YYYY-MM-DD, whole");
    a_command.AddOption(
        "--symbol-column", a_options.symbolColumn,
        "Column that tells several instruments in one file apart (default: symbol, ticker, instrument, papier, "
        "walor, nazwa, name or isin, where there is one)");
    a_command.AddOption("--input-interval", a_options.inputInterval,
                        "Interval of input candles (default: the smallest step between the first rows)");
    a_command.AddChoice<bool>(
        "--input-stamp", a_options.stampedWithEnd, {{"begin", false}, {"end", true}},
        "Whether input candles bear the begin or the end of their window (default: begin)");
}

// What becomes of rows that can't be taken as they are.
void AddRules(const Command& a_command, InputOptions& a_options)
{
    a_command
        .AddChoice<EOrderRule>(
            "--order", a_options.order,
            {{"raise", EOrderRaise}, {"refuse", EOrderRefuse}, {"drop", EOrderDrop}},
            "A row not later than the one before: raise (move it up past it), refuse, drop (default: raise, unless more than "
            "1 row in 1000 is earlier)")
        .TypeName("RULE");
    a_command.AddFlag("--sort", a_options.sort,
                      "Sort the rows by their times, by way of the disk where they are many");
    a_command.AddFlag("--drop-repeated", a_options.dropRepeated,
                      "Leave out rows that repeat one of the same time exactly, and files given twice");
    a_command
        .AddChoice<EBadLines>(
            "--bad-lines", a_options.badLines, {{"stop", EBadLinesStop}, {"reject", EBadLinesReject}},
            "A line that can't be read: stop, or reject (set it aside and count it; default: stop)")
        .TypeName("RULE");
    a_command.AddOption("--reject-file", a_options.rejectFile, "Where rejected lines go, with the header");
}

} // namespace

void AddSymbolOption(const Command& a_command, InputOptions& a_options)
{
    a_command.Under("Reading").AddOption("--symbol", a_options.symbol,
                                         "Only rows of this instrument, of several in one file");
}

void AddReadOptions(const Command& a_command, InputOptions& a_options)
{
    const Command reading = a_command.Under("Reading");
    AddColumnOptions(reading, a_options);
    AddTimeOptions(reading, a_options);
    AddRules(reading, a_options);
}

} // namespace kalvento::tool
