#include "folding/Explanation.h"
#include "kalvento/AddReadOptions.h"
#include "kalvento/Commands.h"
#include "kalvento/OpenInput.h"
#include "kalvento/OptionValues.h"
#include "kalvento/OutputTarget.h"
#include "kalvento/ReadNotes.h"
#include "kalvento/RowFolding.h"
#include "kalvento/TextForms.h"
#include "kalvento/WordFault.h"
#include "text_rows/IntervalNotation.h"
#include "text_rows/RowReader.h"
#include "text_rows/RowSeries.h"
#include "text_rows/SeriesNames.h"
#include "text_rows/TimeText.h"
#include "time/TimeParts.h"

#include <boost/json.hpp>

#include <algorithm>
#include <cmath>
#include <memory>
#include <numeric>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kalvento::tool {

namespace {

constexpr std::size_t S_rowsAtOnce = 65536;

struct ExplainOptions {
    InputOptions read;
    std::string input;
    IntervalAndMultiplicity interval;
    std::string at;
    std::optional<std::int64_t> day; // of a time of day alone, since 1970-01-01
    std::size_t rows = 20;
    bool json = false;
};

/// Rows of one instrument with the lines that they come from.
struct Rows {
    DataSeriesSet series{EIntervalTick, 1};
    std::vector<Explanation::Source> sources; // lines from 1; rows of a block count as well
    std::vector<LineFate> others;             // lines that gave no row
    bool fromBlock = false;
};

/// Reads the rows, and what became of the lines that gave none.
Rows ReadRows(RowReader& a_reader)
{
    Rows all;
    a_reader.WatchLines([&](const LineFate& a_fate) {
        if (a_fate.fate > LineFate::EFateRaised)
            all.others.push_back(a_fate);
        else
            all.sources.push_back({a_fate.line, a_fate.written});
    });
    RowBlock block;
    while (a_reader.Read(block, S_rowsAtOnce, block.rows)) {
    }
    a_reader.ExpectSymbol();
    // A block has no lines, so its rows are counted, those before --from included.
    all.fromBlock = all.sources.empty() && block.rows > 0;
    for (std::size_t row = all.sources.size(); row < block.rows; ++row)
        all.sources.push_back({a_reader.GetCounts().outside + row + 1, block.times[row]});
    std::vector<std::size_t> rows(block.rows);
    std::iota(rows.begin(), rows.end(), std::size_t{0});
    all.series = SeriesOf(block, a_reader.GetLayout(), rows);
    return all;
}

/// What is told about one candle, the lists as texts.
struct Told {
    const Explanation::Candle& candle;
    std::vector<std::string> refused;
    std::vector<std::string> notes;
};

/// One run of the command.
class ExplainRun {
public:
    ExplainRun(const ExplainOptions& a_options, ToolContext& a_context)
        : m_options(a_options),
          m_context(a_context),
          m_source(OpenInput(a_options.input, a_context)),
          m_notes(a_context, a_options.read),
          m_reader(*m_source, a_options.read, m_notes.HooksFor(*m_source)),
          m_layout(m_reader.GetLayout())
    {}

    void Run();

private:
    std::vector<NDateTime> Moments() const;
    void ListRows(Told& a_told) const;
    std::string RaisedText(std::size_t a_row) const;
    std::string WhyNoCandle(const NDateTime& a_at) const;
    std::string Place(std::size_t a_row) const;
    static std::string HowText(const Explanation::Value& a_value, const Explanation::Span& a_rows);
    std::string CandleText(std::size_t a_candle) const;
    std::string WindowText(const Explanation::Candle& a_candle) const;
    std::string Text(const Told& a_told) const;
    std::string Json(const Told& a_told) const;
    boost::json::object RowJson(std::size_t a_row) const;
    std::string RowTable(const Explanation::Span& a_span) const;
    std::string Title() const;
    const NDateTime& TimeOfRow(std::size_t a_row) const { return m_rows.series.TimeSeries()[a_row]; }

    const ExplainOptions& m_options;
    ToolContext& m_context;
    std::unique_ptr<ByteSource> m_source;
    ReadNotes m_notes;
    RowReader m_reader;
    const RowLayout& m_layout;
    Rows m_rows;
    std::optional<Explanation> m_explanation; // once the rows are read
};

std::string ExplainRun::Title() const
{
    return m_source->GetName() + (m_options.read.symbol.empty() ? "" : ", " + m_options.read.symbol) + ", " +
           FormatInterval(m_options.interval);
}

std::string ExplainRun::Place(std::size_t a_row) const
{
    return (m_rows.fromBlock ? "row " : "line ") + std::to_string(m_rows.sources[a_row].origin) + ", " +
           ShownTimeWithCounter(TimeOfRow(a_row));
}

std::string ExplainRun::CandleText(std::size_t a_candle) const
{
    return FormatTime(m_explanation->TimeOf(a_candle));
}

// The moments that --at may mean, in the order in which they are tried.
std::vector<NDateTime> ExplainRun::Moments() const
{
    if (const auto clock = ParseClockText(m_options.at)) {
        const NDateTime time = TimeParts::TimeOf(clock->seconds);
        if (m_options.day)
            return {TimeParts::TimeOf(*m_options.day * TimeParts::S_secondsOfDay + clock->seconds)};
        std::vector<NDateTime> moments;
        for (std::size_t row = 0; row < m_rows.sources.size(); ++row)
            if (row == 0 || !TimeOfRow(row).SameDay(TimeOfRow(row - 1)))
                moments.push_back(TimeParts::AtTimeOfDay(TimeOfRow(row), time.GetHour(), time.GetMinute(),
                                                         time.GetSecond()));
        return moments;
    }
    const auto whole = ParseTimeText(m_options.at);
    if (!whole || whole->absolute)
        throw ToolError(EExitUsage,
                        "--at: found \"" + m_options.at +
                            "\", expected a time of day as 10:05 or 10:05:30, or a time as 2024-01-02 10:05, "
                            "in the zone in which candles are written");
    if (m_options.day)
        throw ToolError(EExitUsage, "--day goes with a time of day alone, and --at holds a day already");
    return {TimeParts::TimeOf(whole->seconds)};
}

void ExplainRun::Run()
{
    // Raises for intervals that the rows don't reach.
    FolderOf(m_layout, m_options.interval, ELastRecordTime);
    m_rows = ReadRows(m_reader);
    std::vector<Explanation::Source> refused;
    for (const LineFate& line : m_rows.others)
        refused.push_back({line.line, line.written});
    m_explanation.emplace(m_rows.series, m_rows.sources, std::move(refused), PropertiesOf(m_layout),
                          m_options.interval);

    OutputTarget target("", m_context);
    const std::vector<NDateTime> moments = Moments();
    for (const NDateTime& at : moments) {
        const auto candle = m_explanation->Explain(at);
        if (!candle)
            continue;
        Told told{*candle, {}, {}};
        if (moments.size() > 1)
            told.notes.push_back(FormatTime(at, true) + " is the first of " + std::to_string(moments.size()) +
                                 " days that has a candle then; --day gives another");
        ListRows(told);
        target.Write(m_options.json ? Json(told) : Text(told));
        target.Commit();
        return;
    }
    target.Write(WhyNoCandle(moments.empty() ? NDateTime() : moments.front()));
    target.Commit();
    m_context.exitCode = EExitDifferent;
}

std::string ExplainRun::HowText(const Explanation::Value& a_value, const Explanation::Span& a_rows)
{
    if (a_value.from == Explanation::Value::EFromNone)
        return "of no single row";
    const std::size_t count = a_rows.end - a_rows.begin;
    return "the sum of " + ShownCount(count) + (count == 1 ? " row" : " rows");
}

std::string ExplainRun::RaisedText(std::size_t a_row) const
{
    return "line " + std::to_string(m_rows.sources[a_row].origin) + ": its time " +
           FormatTime(m_rows.sources[a_row].written) + " falls behind the row before; it counts as " +
           ShownTimeWithCounter(TimeOfRow(a_row));
}

void ExplainRun::ListRows(Told& a_told) const
{
    const Explanation::Candle& candle = a_told.candle;
    for (const std::size_t place : candle.refused) {
        const LineFate& line = m_rows.others[place];
        std::string text = "line " + std::to_string(line.line) + ": ";
        if (line.fate == LineFate::EFateBad)
            text += WordFault(*line.fault);
        else if (line.fate == LineFate::EFateDropped)
            text +=
                "its time " + FormatTime(line.written) + " isn't later than the one before (--order drop)";
        else
            text += "its time " + FormatTime(line.written) + " lies outside of --from and --to";
        a_told.refused.push_back(std::move(text));
    }
    for (const std::size_t row : candle.lost)
        a_told.refused.push_back(RaisedText(row) + ", in another candle");
    for (const std::size_t row : candle.raised)
        a_told.notes.push_back(RaisedText(row));
    // A window is known by its number and the day of the year alone, as in every chart that was stored so far.
    if (candle.isMixed)
        a_told.notes.push_back("the candle holds rows of " + FormatTime(TimeOfRow(candle.rows.begin), true) +
                               " and of " + FormatTime(TimeOfRow(candle.rows.end - 1), true) +
                               ": with no row between them, windows of one number on the same "
                               "day of the year aren't told apart");
}

std::string ExplainRun::WhyNoCandle(const NDateTime& a_at) const
{
    const std::vector<Explanation::Span>& candles = m_explanation->GetCandles();
    const auto isBefore = [&](const Explanation::Span& a_span) { return TimeOfRow(a_span.begin) < a_at; };
    const auto next =
        static_cast<std::size_t>(std::ranges::partition_point(candles, isBefore) - candles.begin());
    const std::string before = next > 0 ? CandleText(next - 1) : "";
    const std::string after = next < candles.size() ? CandleText(next) : "";
    const bool isClock = ParseClockText(m_options.at).has_value() && !m_options.day;
    if (m_options.json) {
        boost::json::object object{{"file", m_source->GetName()},
                                   {"interval", FormatInterval(m_options.interval)},
                                   {"at", m_options.at},
                                   {"candle", nullptr}};
        object["before"] = before.empty() ? boost::json::value() : boost::json::value(before);
        object["after"] = after.empty() ? boost::json::value() : boost::json::value(after);
        return boost::json::serialize(object) + '\n';
    }
    return Title() + ": no candle at " + (isClock ? m_options.at + " on any day" : FormatTime(a_at)) +
           "\n  before: " + (before.empty() ? "none" : before) +
           "\n  after:  " + (after.empty() ? "none" : after) + '\n';
}

std::string ExplainRun::WindowText(const Explanation::Candle& a_candle) const
{
    const std::string number = "number " + std::to_string(a_candle.number);
    if (m_options.interval.IsTick())
        return number + " of the day (from 0), " + ShownCount(m_options.interval.GetMultiplicity()) +
               " ticks at most, counted anew each day";
    const char* of = " of the day";
    if (m_options.interval.IsEod())
        of = m_options.interval.GetInterval() < EIntervalYear ? " of the year" : " of the years";
    return number + of + " (from 0), begin " + FormatTime(a_candle.begin) + ", border " +
           FormatTime(a_candle.border);
}

std::string ExplainRun::RowTable(const Explanation::Span& a_span) const
{
    const bool isCandle = !m_layout.interval.IsSingleTick();
    std::vector<std::string> header{m_rows.fromBlock ? "row" : "line", "time"};
    std::vector<TextTable::EColumn> kinds{TextTable::EColumnNumber, TextTable::EColumnText};
    for (const ESeriesId series : m_layout.series) {
        header.push_back(ColumnName(series, isCandle));
        kinds.push_back(TextTable::EColumnValue);
    }
    TextTable table(std::move(header), std::move(kinds));
    const std::size_t count = a_span.end - a_span.begin;
    const std::size_t head = count <= m_options.rows ? count : (m_options.rows + 1) / 2;
    const std::size_t tail = count <= m_options.rows ? 0 : m_options.rows / 2;
    for (std::size_t row = a_span.begin; row < a_span.end; ++row) {
        if (row == a_span.begin + head) {
            table.Add({"...", ShownCount(count - head - tail) + " more"});
            row = a_span.end - tail;
        }
        if (row == a_span.end)
            break;
        std::vector<std::string> cells{std::to_string(m_rows.sources[row].origin),
                                       ShownTimeWithCounter(TimeOfRow(row))};
        for (const auto& [series, values] : m_rows.series)
            cells.push_back(FormatNumber(values[row]));
        table.Add(std::move(cells));
    }
    return table.ToText(2);
}

std::string ExplainRun::Text(const Told& a_told) const
{
    const Explanation::Candle& candle = a_told.candle;
    const Explanation::Span& span = candle.rows;
    std::string text = Title() + ": the candle of " + CandleText(candle.place) + '\n';
    text += "  window: " + WindowText(candle) + '\n';
    text += "  rows:   " + ShownCount(span.end - span.begin) + ", from " + Place(span.begin) + " to " +
            Place(span.end - 1) + "\n\n";
    TextTable values({"value", "", "from"},
                     {TextTable::EColumnText, TextTable::EColumnNumber, TextTable::EColumnText});
    for (const Explanation::Value& value : candle.values)
        values.Add({ColumnName(value.series, !m_options.interval.IsSingleTick()), FormatNumber(value.value),
                    value.from == Explanation::Value::EFromRow ? Place(value.row) : HowText(value, span)});
    text += values.ToText(2) + '\n' + RowTable(span);
    const auto list = [&](const char* a_title, const std::vector<std::string>& a_lines) {
        if (a_lines.empty())
            return;
        text += std::string("\n  ") + a_title + ":\n";
        for (std::size_t place = 0; place < std::min(a_lines.size(), m_options.rows); ++place)
            text += "    " + a_lines[place] + '\n';
        if (a_lines.size() > m_options.rows)
            text += "    ... " + ShownCount(a_lines.size() - m_options.rows) + " more\n";
    };
    list("refused", a_told.refused);
    list("notes", a_told.notes);
    return text;
}

boost::json::object ExplainRun::RowJson(std::size_t a_row) const
{
    return {{m_rows.fromBlock ? "row" : "line", m_rows.sources[a_row].origin},
            {"time", ShownTimeWithCounter(TimeOfRow(a_row))}};
}

std::string ExplainRun::Json(const Told& a_told) const
{
    const Explanation::Candle& candle = a_told.candle;
    const Explanation::Span& span = candle.rows;
    boost::json::object object{{"file", m_source->GetName()}};
    if (!m_options.read.symbol.empty())
        object["symbol"] = m_options.read.symbol;
    object["interval"] = FormatInterval(m_options.interval);
    object["candle"] = CandleText(candle.place);
    boost::json::object window;
    if (!m_options.interval.IsTick())
        window["begin"] = FormatTime(candle.begin);
    window["number"] = candle.number;
    if (!m_options.interval.IsTick())
        window["border"] = FormatTime(candle.border);
    object["window"] = std::move(window);
    object["row_count"] = span.end - span.begin;
    object["first_row"] = RowJson(span.begin);
    object["last_row"] = RowJson(span.end - 1);
    boost::json::object values;
    for (const Explanation::Value& value : candle.values) {
        const bool hasRow = value.from == Explanation::Value::EFromRow;
        boost::json::object told = hasRow ? RowJson(value.row) : boost::json::object();
        if (!hasRow)
            told["how"] = HowText(value, span);
        told["value"] = std::isfinite(value.value) ? boost::json::value(value.value) : boost::json::value();
        values[ColumnName(value.series, !m_options.interval.IsSingleTick())] = std::move(told);
    }
    object["values"] = std::move(values);
    boost::json::array rows;
    for (std::size_t row = span.begin; row < std::min(span.end, span.begin + m_options.rows); ++row)
        rows.push_back(RowJson(row));
    object["rows"] = std::move(rows);
    object["refused"] = boost::json::value_from(a_told.refused);
    object["notes"] = boost::json::value_from(a_told.notes);
    return boost::json::serialize(object) + '\n';
}

constexpr const char* S_help =
    R"(Shows the rows of one candle, the row that each value comes from, the window, and the rows that were refused and why.
Lines that can't be read are set aside unless --bad-lines stop is given. Ends with 5 where no candle is.

Examples:
  kalvento explain trades.csv --interval 5min --at 10:05
  kalvento explain trades.csv -i 1h --at "2024-01-02 10:00" --rows 100
  kalvento explain stocks.csv -i 1min --at 16:00 --symbol TSLA -f json

)";

} // namespace

void AddExplainCommand(Command a_app, ToolContext& a_context)
{
    const auto options = std::make_shared<ExplainOptions>();
    Command command = a_app.AddCommand("explain", "Tell which rows made a candle, and how");
    command.AddOption("file", options->input, "File of rows or series block, or - for standard input")
        .Required();
    command
        .AddOption(
            "-i,--interval",
            [options](const std::string& a_text) { options->interval = IntervalOption(a_text); },
            "Interval of the candle, as 5min")
        .TypeName("INTERVAL")
        .Required();
    command
        .AddOption("--at", options->at, "A moment inside of the candle: 10:05, 10:05:30 or 2024-01-02 10:05")
        .TypeName("TIME")
        .Required();
    command
        .AddOption(
            "--day", [options](const std::string& a_text) { options->day = DayOption(a_text, "--day"); },
            "Day of a time of day (default: the first with a candle then)")
        .TypeName("DAY");
    command.AddOption("--rows", options->rows, "How many rows are listed at most (default: 20)")
        .TypeName("N");
    command
        .AddChoice<bool>("-f,--format", options->json, {{"text", false}, {"json", true}},
                         "text, or json: one object (default: text)")
        .TypeName("FORMAT");
    // Lines that can't be read are part of the answer, not its end.
    options->read.badLines = EBadLinesReject;
    options->read.oneSymbol = true;
    AddReadOptions(command, options->read);
    AddSymbolOption(command, options->read);
    command.SetFooter(S_help + ExitCodesHelp());
    command.OnRun([options, &a_context] { ExplainRun(*options, a_context).Run(); });
}

} // namespace kalvento::tool
