#include "kalvento/AddReadOptions.h"
#include "kalvento/BlockFile.h"
#include "kalvento/Commands.h"
#include "kalvento/LogCollector.h"
#include "kalvento/MarketCheck.h"
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
    void Answers(const MarketCheck& a_market)
    {
        for (const MarketCheck::Answer& answer : a_market.GetAnswers())
            Answer(answer.question, answer.fault.empty(),
                   answer.fault.empty() ? answer.remark : answer.fault);
    }
    /// The last line; gives the exit code.
    int Finish()
    {
        m_target.Write(m_bad == 0 ? "good\n" : "bad\n");
        m_target.Commit();
        return m_bad == 0 ? EExitOk : EExitBadData;
    }

    bool IsBad() const { return m_bad > 0; }

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

/// The rows of a block that is sound otherwise.
void JudgeMarket(const CheckOptions& a_options, Report& a_report, ToolContext& a_context)
{
    const auto source = OpenInput(a_options.input, a_context);
    RowReader reader(*source, a_options.read);
    MarketCheck market(reader.GetLayout(),
                       [](std::uint64_t a_row) { return "row " + std::to_string(a_row); });
    RowBlock block;
    std::vector<MarketCheck::Origin> origins;
    for (std::uint64_t row = 0; reader.Read(block, S_blockRows); row += origins.size()) {
        origins.clear();
        for (std::size_t each = 0; each < block.rows; ++each)
            origins.push_back({reader.GetCounts().outside + row + each + 1, block.times[each]});
        market.Add(block, origins);
    }
    a_report.Answers(market);
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
    if (!report.IsBad())
        JudgeMarket(a_options, report, a_context);
    return report.Finish();
}

/// The rows of a text on their way through a MarketCheck, with what becomes of their lines.
class TextCheck {
public:
    TextCheck(const CheckOptions& a_options, ToolContext& a_context)
        : m_options(a_options),
          m_read(a_options.read),
          m_source(OpenInput(a_options.input, a_context)),
          m_notes(a_context, a_options.read),
          m_report(a_context)
    {
        m_read.fractions = true;
        // Rows out of order are an answer, not the end.
        if (m_read.order == EOrderRaiseFew)
            m_read.order = EOrderRaise;
        ReadHooks hooks = m_notes.HooksFor(*m_source);
        hooks.turned = [this] { m_isTurned = true; };
        m_reader.emplace(*m_source, m_read, std::move(hooks));
        m_market.emplace(m_reader->GetLayout(), [this](std::uint64_t a_line) { return PlaceOf(a_line); });
    }

    int Run();

private:
    std::string PlaceOf(std::uint64_t a_line) const
    {
        return m_source->GetName() + ":" + std::to_string(a_line) + ":1";
    }
    void ReadRows();
    std::string Title() const;
    void AnswerSymbols();
    void AnswerOrder();

    const CheckOptions& m_options;
    InputOptions m_read;
    std::unique_ptr<ByteSource> m_source;
    const ReadNotes m_notes;
    Report m_report;
    bool m_isTurned = false;
    std::optional<RowReader> m_reader;
    std::optional<MarketCheck> m_market;
    std::uint64_t m_secondSymbol = 0; // the line of its first row
    std::optional<NDateTime> m_first;
    NDateTime m_last;
};

void TextCheck::ReadRows()
{
    std::vector<MarketCheck::Origin> origins;
    m_reader->WatchLines([&](const LineFate& a_fate) {
        if (a_fate.fate > LineFate::EFateRaised)
            return;
        origins.push_back({a_fate.line, a_fate.written});
        if (a_fate.symbol > 0 && (m_secondSymbol == 0 || a_fate.line < m_secondSymbol))
            m_secondSymbol = a_fate.line;
    });
    RowBlock block;
    while (m_reader->Read(block, S_blockRows)) {
        m_market->Add(block, origins);
        origins.clear();
        if (!m_first)
            m_first = block.times.front();
        m_last = block.times[block.rows - 1];
    }
    m_reader->ExpectSymbol();
}

std::string TextCheck::Title() const
{
    const RowLayout& layout = m_reader->GetLayout();
    std::string columns;
    for (const ESeriesId series : layout.series)
        columns += (columns.empty() ? "" : ", ") + ColumnName(series, !layout.interval.IsSingleTick());
    return m_source->GetName() + ": text, " + FormatInterval(layout.interval) + ", " +
           ShownCount(m_reader->GetCounts().rows) + " rows" +
           (layout.hasSymbols ? " of " + ShownCount(m_reader->GetSymbols().size()) + " symbols" : "") +
           ", columns " + columns;
}

// Several instruments are sound where the user says that there are several.
void TextCheck::AnswerSymbols()
{
    const std::vector<std::string>& symbols = m_reader->GetSymbols();
    if (!m_reader->GetLayout().symbolsFound || symbols.size() < 2 || !m_read.symbol.empty())
        return;
    m_report.Answer("one instrument", false,
                    ShownCount(symbols.size()) + " symbols; the second, \"" + symbols[1] + "\", begins at " +
                        PlaceOf(m_secondSymbol) + " (--symbol-column says that several are meant)");
}

void TextCheck::AnswerOrder()
{
    const RowCounts& counts = m_reader->GetCounts();
    const std::uint64_t astray = m_isTurned || m_read.sort ? counts.misplaced : counts.raised;
    if (astray == 0) {
        m_report.Answer("order of times", true,
                        m_isTurned ? "from the newest to the oldest, and so turned" : "");
        return;
    }
    const std::uint64_t first = m_isTurned || m_read.sort ? counts.firstMisplaced : counts.firstRaised;
    m_report.Answer("order of times", false,
                    ShownCount(astray) + (m_isTurned ? " rows are later" : " rows are earlier") +
                        " than the one before; the first is " + PlaceOf(first));
}

int TextCheck::Run()
{
    ReadRows();
    m_report.Title(Title());
    const RowCounts& counts = m_reader->GetCounts();
    m_report.Answer("lines", counts.bad == 0,
                    counts.bad == 0 ? "" : ShownCount(counts.bad) + " can't be read");
    AnswerSymbols();
    AnswerOrder();
    m_report.Answers(*m_market);
    if (m_options.day && m_first) {
        const LogCollector log;
        const bool good = VectorTimeTester::CheckIntegrity({*m_first, m_last}, &*m_options.day);
        m_report.Answer(
            "CheckIntegrity", good,
            Reason(log.GetText(), "the rows run from " + FormatTime(*m_first) + " to " + FormatTime(m_last)));
    }
    return m_report.Finish();
}

constexpr const char* S_help =
    R"(Tells whether a series block or a text file of rows is sound, and where the first fault lies. A block is judged as
the library judges it (DataSeriesSet::IsValid, VectorTimeTester::CheckIntegrity), its length and the order of
its columns beside that; of a text every line must be readable and no time may fall. Of both
the market data are judged: high and low, prices and volumes, days that repeat or are missing, doubled rows, several
instruments, none.
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
    AddSymbolOption(command, options->read);
    command.SetFooter(S_help + ExitCodesHelp());
    command.OnRun([options, &a_context] {
        a_context.exitCode = IsBlockFile(options->input) ? CheckBlock(*options, a_context)
                                                         : TextCheck(*options, a_context).Run();
    });
}

} // namespace kalvento::tool
