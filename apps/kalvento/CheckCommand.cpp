#include "kalvento/AddReadOptions.h"
#include "kalvento/BlockFile.h"
#include "kalvento/Commands.h"
#include "kalvento/LogCollector.h"
#include "kalvento/OpenInput.h"
#include "kalvento/OptionValues.h"
#include "kalvento/OutputTarget.h"
#include "kalvento/ReadNotes.h"
#include "kalvento/TextForms.h"
#include "series/VectorTimeTester.h"
#include "text_rows/IntervalNotation.h"
#include "text_rows/RowReader.h"
#include "text_rows/SeriesNames.h"
#include "time/TimeParts.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kalvento::tool {

namespace {

struct CheckOptions {
    InputOptions read;
    std::string input;
    std::optional<NDateTime> day;
};

/// The answers of a check, printed as they come.
class Report {
public:
    explicit Report(ToolContext& a_context) : m_target("", a_context) {}

    void Title(const std::string& a_text) { m_target.Write(a_text + "\n"); }
    /// a_fault: empty where there is none.
    void Answer(std::string_view a_question, const std::optional<std::string>& a_fault)
    {
        Answer(a_question, !a_fault, a_fault.value_or(""));
    }
    void Answer(std::string_view a_question, bool a_good, const std::string& a_text)
    {
        std::string line = a_good ? "  ok   " : "  BAD  ";
        line += a_question;
        if (!a_text.empty())
            line += ": " + a_text;
        m_target.Write(line + "\n");
        m_bad += a_good ? 0 : 1;
    }
    /// The last line; gives the exit code.
    int Finish()
    {
        m_target.Write(m_bad == 0 ? "good\n" : "bad\n");
        m_target.Commit();
        return m_bad == 0 ? EExitOk : EExitBadData;
    }

private:
    OutputTarget m_target;
    unsigned int m_bad = 0;
};

/// What the library's message says, followed by the place.
std::string Reason(const std::string& a_message, const std::string& a_place)
{
    return a_message + (a_message.empty() || a_place.empty() ? "" : "; ") + a_place;
}

/// Why DataSeriesSet::IsValid says no, in the order in which it looks.
std::string WhyInvalid(const DataSeriesSet& a_set)
{
    for (const auto& [series, values] : a_set)
        if (values.size() != a_set.GetRecordsCount())
            return "column " + ColumnName(series, false) + " has " + ShownCount(values.size()) +
                   " values for " + ShownCount(a_set.GetRecordsCount()) + " rows";
    const IntervalAndMultiplicity interval = a_set.GetIntervalData();
    if (!interval.IsValid())
        return "interval " + std::to_string(static_cast<unsigned int>(interval.GetInterval())) +
               " with multiplicity " + std::to_string(interval.GetMultiplicity()) +
               " is none; expected 1 (tick) to 8 (year) and a multiplicity "
               "from 1 to the interval's limit";
    return interval.IsSingleTick() ? "ticks hold no open, high, low" : "candles need open, high and low";
}

std::optional<std::string> FindBadColumn(const DataSeriesSet& a_set)
{
    const std::pair<ESeriesId, std::vector<double>>* before = nullptr;
    for (const auto& column : a_set) {
        if (column.first == Time || column.first == 0)
            return "series " + std::to_string(column.first) + " can't be a column";
        if (before != nullptr && column.first <= before->first)
            return "series " + std::to_string(column.first) + " stands behind " +
                   std::to_string(before->first);
        before = &column;
    }
    return std::nullopt;
}

/// The first row that AddData would refuse after the one before.
std::optional<std::string> FindEqualTime(const BlockFile& a_block)
{
    const auto& times = a_block.set.TimeSeries();
    for (std::size_t row = 1; row < times.size(); ++row)
        if (times[row] == times[row - 1])
            return "row " + std::to_string(row + 1) + " (byte " + std::to_string(a_block.TimePlace(row)) +
                   ") has the time of the row before, " + ShownTimeWithCounter(times[row]);
    return std::nullopt;
}

int CheckBlock(const CheckOptions& a_options, ToolContext& a_context)
{
    const BlockFile block = ReadBlockFile(a_options.input, a_context);
    const DataSeriesSet& set = block.set;
    Report report(a_context);
    report.Title(block.name + ": series block, " + FormatInterval(set.GetIntervalData()) + ", " +
                 ShownCount(set.GetRecordsCount()) + " rows, " + std::to_string(set.SeriesCount()) +
                 " columns, " + ShownCount(block.size) + " bytes");

    report.Answer("length", !block.endsEarly && block.surplus == 0,
                  block.endsEarly ? "the block ends early, at byte " + std::to_string(block.size)
                  : block.surplus > 0
                      ? "the block ends at byte " + std::to_string(block.size - block.surplus) +
                            ", the input at " + std::to_string(block.size)
                      : "");
    // What was missing reads as zero, and needs no report.
    if (block.endsEarly)
        return report.Finish();
    report.Answer("order of columns", FindBadColumn(set));
    {
        const LogCollector log;
        const bool good = set.IsValid();
        report.Answer("IsValid", good, good ? "" : Reason(log.GetText(), WhyInvalid(set)));
    }
    {
        const LogCollector log;
        const bool good =
            VectorTimeTester::CheckIntegrity(set.TimeSeries(), a_options.day ? &*a_options.day : nullptr);
        const auto place = FindBadTime(block);
        report.Answer("CheckIntegrity", good && !place, Reason(log.GetText(), place.value_or("")));
        if (good && !place)
            report.Answer("times strictly rising", FindEqualTime(block));
    }
    return report.Finish();
}

int CheckText(const CheckOptions& a_options, ToolContext& a_context)
{
    const auto source = OpenInput(a_options.input, a_context);
    RowReader reader(*source, a_options.read, ReadNotes(a_context).HooksFor(*source));
    RowBlock block;
    std::optional<NDateTime> first;
    NDateTime last;
    while (reader.Read(block, S_blockRows)) {
        if (!first)
            first = block.times.front();
        last = block.times[block.rows - 1];
    }

    const RowLayout& layout = reader.GetLayout();
    const RowCounts& counts = reader.GetCounts();
    std::string columns;
    for (const ESeriesId series : layout.series)
        columns += (columns.empty() ? "" : ", ") + ColumnName(series, !layout.interval.IsSingleTick());
    Report report(a_context);
    report.Title(source->GetName() + ": text, " + FormatInterval(layout.interval) + ", " +
                 ShownCount(counts.rows) + " rows" +
                 (layout.hasSymbols ? " of " + ShownCount(reader.GetSymbols().size()) + " symbols" : "") +
                 ", columns " + columns);
    report.Answer("lines", counts.bad == 0, counts.bad == 0 ? "" : ShownCount(counts.bad) + " can't be read");
    report.Answer("order of times", counts.raised == 0,
                  counts.raised == 0
                      ? ""
                      : ShownCount(counts.raised) + " rows are earlier than the one before; the first is " +
                            source->GetName() + ":" + std::to_string(counts.firstRaised) + ":1");
    if (a_options.day && first) {
        const LogCollector log;
        const bool good = VectorTimeTester::CheckIntegrity({*first, last}, &*a_options.day);
        report.Answer(
            "CheckIntegrity", good,
            Reason(log.GetText(), "the rows run from " + FormatTime(*first) + " to " + FormatTime(last)));
    }
    return report.Finish();
}

constexpr const char* S_help =
    R"(Tells whether a series block or a text file of rows is sound, and where the first fault lies. A block is judged as
the library judges it (DataSeriesSet::IsValid, VectorTimeTester::CheckIntegrity), its length and the order of
its columns beside that; of a text every line must be readable and no time may fall.
Ends with 0 for a sound file and with 3 for any other.

Examples:
  kalvento check trades.block --day 2024-01-02
  kalvento check trades.csv && kalvento candles trades.csv --interval 1min

)";

} // namespace

void AddCheckCommand(Command a_app, ToolContext& a_context)
{
    auto options = std::make_shared<CheckOptions>();
    Command command = a_app.AddCommand("check", "Tell whether a file of rows or a series block is sound");
    command.AddOption("file", options->input, "Series block or text file, or - for text on standard input")
        .Required();
    command
        .AddOption(
            "--day",
            [options](const std::string& a_text) {
                options->day = TimeParts::TimeOf(DayOption(a_text, "--day") * TimeParts::S_secondsOfDay);
            },
            "The rows must begin and end on this day")
        .TypeName("DAY");
    AddReadOptions(command, options->read);
    command.SetFooter(S_help + ExitCodesHelp());
    command.OnRun([options, &a_context] {
        a_context.exitCode =
            IsBlockFile(options->input) ? CheckBlock(*options, a_context) : CheckText(*options, a_context);
    });
}

} // namespace kalvento::tool
