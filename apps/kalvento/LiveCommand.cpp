#include "folding/AggregatorWrapper.h"
#include "folding/PieceFolder.h"
#include "kalvento/AddReadOptions.h"
#include "kalvento/Commands.h"
#include "kalvento/Note.h"
#include "kalvento/OpenInput.h"
#include "kalvento/OptionValues.h"
#include "kalvento/OutputTarget.h"
#include "kalvento/ReadNotes.h"
#include "kalvento/TextForms.h"
#include "platform/Interruption.h"
#include "platform/ShownText.h"
#include "series/Series.h"
#include "text_rows/IntervalNotation.h"
#include "text_rows/RowReader.h"
#include "text_rows/RowSeries.h"
#include "text_rows/SeriesNames.h"
#include "time/DateTimeTools.h"
#include "time/TimeParts.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <memory>
#include <optional>
#include <ostream>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace kalvento::tool {

namespace {

enum ELiveFormat : std::uint8_t { ELiveText, ELiveCsv, ELiveJsonl };

struct LiveOptions {
    InputOptions read;
    std::string input;
    IntervalAndMultiplicity interval;
    ELiveFormat format = ELiveText;
    bool follow = true;
    std::optional<double> idleSeconds;
    bool stampedWithBegin = true;
    std::optional<std::uint64_t> history; // how many candles of the existing content are printed
};

/// Prints candles as they change. The three formats carry the same values.
class ChangeWriter {
public:
    ChangeWriter(const std::vector<ESeriesId>& a_series, bool a_symbols, bool a_datesOnly,
                 ELiveFormat a_format, ToolContext& a_context)
        : m_target("", a_context), m_format(a_format), m_symbols(a_symbols), m_datesOnly(a_datesOnly)
    {
        for (const std::size_t place : VeloTools::Series::ReadingOrder(a_series)) {
            m_order.push_back(a_series[place]);
            m_names.push_back(ColumnName(a_series[place], true));
        }
        PrintHeader();
    }

    void Print(bool a_isNew, const std::string& a_symbol, const Record& a_candle)
    {
        switch (m_format) {
        case ELiveText:
            PrintText(a_isNew, a_symbol, a_candle);
            break;
        case ELiveCsv:
            PrintCsv(a_isNew, a_symbol, a_candle);
            break;
        case ELiveJsonl:
            PrintJsonl(a_isNew, a_symbol, a_candle);
            break;
        }
        if (m_text.size() > S_flushAt)
            Hand();
    }

    /// Lets the reader see what was printed so far.
    void Flush()
    {
        Hand();
        m_target.Commit();
    }

private:
    static constexpr std::size_t S_flushAt = 1 << 16;
    static constexpr std::size_t S_cell = 12;

    void PrintHeader()
    {
        if (m_format == ELiveCsv) {
            m_text = m_symbols ? "event,time,symbol" : "event,time";
            for (const std::string& name : m_names)
                m_text += ',' + name;
            m_text += '\n';
        } else if (m_format == ELiveText) {
            m_text = m_datesOnly ? "         time      " : "         time               ";
            m_text += m_symbols ? "  symbol    " : "";
            for (const std::string& name : m_names)
                Cell(name);
            m_text += '\n';
        }
    }

    void PrintText(bool a_isNew, const std::string& a_symbol, const Record& a_candle)
    {
        m_text += a_isNew ? "new      " : "changed  ";
        m_text += FormatTime(a_candle.GetTime(), m_datesOnly);
        if (m_symbols) {
            const std::string symbol = internal::ShownText::OneLine(a_symbol);
            const std::size_t width = ShownWidth(symbol);
            m_text += "  " + symbol + std::string(width < 10 ? 10 - width : 0, ' ');
        }
        for (const ESeriesId series : m_order)
            Cell(FormatNumber(a_candle.find(series)->second));
        m_text += '\n';
    }

    void PrintCsv(bool a_isNew, const std::string& a_symbol, const Record& a_candle)
    {
        m_text += a_isNew ? "new," : "changed,";
        m_text += FormatTime(a_candle.GetTime(), m_datesOnly);
        if (m_symbols)
            m_text += ',' + QuoteField(a_symbol);
        for (const ESeriesId series : m_order)
            m_text += ',' + FormatNumber(a_candle.find(series)->second);
        m_text += '\n';
    }

    void PrintJsonl(bool a_isNew, const std::string& a_symbol, const Record& a_candle)
    {
        m_text += a_isNew ? R"({"event":"new","time":")" : R"({"event":"changed","time":")";
        m_text += FormatTime(a_candle.GetTime(), m_datesOnly, 'T') + '"';
        if (m_symbols)
            m_text += R"(,"symbol":)" + JsonText(a_symbol);
        for (std::size_t place = 0; place < m_order.size(); ++place)
            m_text += ",\"" + m_names[place] + "\":" + FormatNumber(a_candle.find(m_order[place])->second);
        m_text += "}\n";
    }

    void Cell(const std::string& a_text)
    {
        m_text.append(2 + (a_text.size() < S_cell ? S_cell - a_text.size() : 0), ' ');
        m_text += a_text;
    }

    void Hand()
    {
        m_target.Write(m_text);
        m_text.clear();
    }

    OutputTarget m_target;
    ELiveFormat m_format;
    bool m_symbols;
    bool m_datesOnly;
    std::vector<ESeriesId> m_order;
    std::vector<std::string> m_names;
    std::string m_text;
};

/// One instrument of the input with its open candle.
struct Instrument {
    std::string symbol;
    AggregatorWrapper wrapper;
    NDateTime last; // of the last row taken
    // The content at the start: rows that aren't folded yet, and the candles.
    PieceFolder folder;
    ColumnBlock rows;
    ColumnBlock candles;
};

/// One run of the command.
class LiveRun {
public:
    LiveRun(const LiveOptions& a_options, ToolContext& a_context)
        : m_options(a_options),
          m_context(a_context),
          m_source(OpenGrowingInput(a_options.input, a_context)),
          m_read(a_options.read),
          m_notes(a_context, a_options.read),
          m_caughtUp(!m_source->IsFile())
    {
        // What a file holds can be put in order; what comes live comes as it comes.
        m_read.turn = m_source->IsFile();
        if (m_read.sort && !m_source->IsFile())
            throw ToolError(EExitUsage, "--sort: rows that come live can't be sorted; give a file");
    }

    void Run();

private:
    bool WaitForMore(int a_interruption);
    void TakeRows(bool a_isLast);
    void OpenReader();
    void FoldPiece();
    void FoldPast(Instrument& a_instrument);
    void FoldRow(std::size_t a_row);
    void Print(bool a_isNew, Instrument& a_instrument, Record& a_candle);
    Instrument& InstrumentOf(std::size_t a_row);
    Instrument& InstrumentOf(const std::string& a_name);
    void Say(const std::string& a_text) const;

    const LiveOptions& m_options;
    ToolContext& m_context;
    std::unique_ptr<GrowingSource> m_source;
    InputOptions m_read;
    ReadNotes m_notes;
    RowCounts m_counts; // of readers before a restart
    bool m_caughtUp;    // the content that was there at the start is folded
    std::unique_ptr<RowReader> m_reader;
    std::optional<RowLayout> m_layout;
    std::set<DSProp> m_properties;
    std::optional<Record> m_emptyRow;
    std::optional<ChangeWriter> m_writer;
    std::vector<std::unique_ptr<Instrument>> m_instruments;
    std::unordered_map<std::string, Instrument*> m_byName;
    std::vector<Instrument*> m_bySymbol; // by the reader's numbers, as far as they were met
    RowBlock m_block;
    ColumnBlock m_candles;
    bool m_restarted = false;
    std::uint64_t m_skipped = 0; // rows earlier than the last one, after a restart
};

void LiveRun::Say(const std::string& a_text) const
{
    if (!m_context.quiet)
        Note(m_context, m_source->GetName() + ": " + a_text);
}

void LiveRun::Run()
{
    if (m_source->StartsLikeBlock())
        throw ToolError(EExitUsage, m_source->GetName() +
                                        ": is a binary series block, which doesn't grow; live follows "
                                        "text, and `kalvento candles` folds blocks");
    // Without following, the end of a file is the end; a pipe ends when its writer goes.
    const bool endsAtEnd = !m_options.follow && m_source->IsFile();
    const internal::Interruption interruption;
    if (endsAtEnd)
        m_source->ReleaseLastLine();
    do
        TakeRows(endsAtEnd);
    while (!endsAtEnd && WaitForMore(interruption.GetFd()));
    if (m_skipped > 0)
        Say(ShownCount(m_skipped) + " rows were earlier than rows before the restart and left out");
    if (m_reader)
        m_counts.Add(m_reader->GetCounts());
    m_notes.Finish(m_counts);
}

// False when nothing is to come.
bool LiveRun::WaitForMore(int a_interruption)
{
    std::optional<std::chrono::milliseconds> limit;
    if (m_options.idleSeconds)
        limit = std::chrono::milliseconds(static_cast<std::int64_t>(*m_options.idleSeconds * 1000.0));
    switch (const auto event = m_source->Wait(limit, a_interruption)) {
    case GrowingSource::EWaitMore:
        return true;
    case GrowingSource::EWaitCut:
    case GrowingSource::EWaitReplaced:
        Say(event == GrowingSource::EWaitCut
                ? "the file was cut short; reading it again from its start, rows already seen are left out"
                : "another file bears the name now; going on with its start");
        m_source->Restart();
        if (m_reader)
            m_counts.Add(m_reader->GetCounts());
        m_reader.reset();
        m_bySymbol.clear(); // a reader numbers symbols in the order of their first row
        m_restarted = true;
        return true;
    case GrowingSource::EWaitEnded:
        m_source->ReleaseLastLine();
        TakeRows(true);
        return false;
    case GrowingSource::EWaitInterrupted:
        // What was written before the signal is seen; a signal and an append may well come at the same moment.
        if (m_source->IsFile())
            TakeRows(false);
        return false;
    case GrowingSource::EWaitTimeout:
        return false;
    }
    return false;
}

// Folds what can be read now. a_isLast: nothing follows, so even an input without rows is complete.
void LiveRun::TakeRows(bool a_isLast)
{
    if (!m_reader) {
        // The decimal sign and the like are found from the first rows: a header alone isn't enough yet.
        if (!a_isLast && m_source->CountLines() < 2)
            return;
        if (m_layout && !m_source->HasLine())
            return;
        OpenReader();
    }
    while (m_reader->Read(m_block, S_blockRows)) {
        if (!m_caughtUp)
            FoldPiece();
        for (std::size_t row = 0; m_caughtUp && row < m_block.rows; ++row)
            FoldRow(row);
    }
    if (!m_caughtUp) {
        m_caughtUp = true;
        for (const auto& instrument : m_instruments)
            FoldPast(*instrument);
    }
    m_writer->Flush();
}

void LiveRun::OpenReader()
{
    m_reader = std::make_unique<RowReader>(*m_source, m_read, m_notes.HooksFor(*m_source));
    const RowLayout& layout = m_reader->GetLayout();
    if (m_layout) {
        if (layout.series != m_layout->series || layout.hasSymbols != m_layout->hasSymbols)
            throw ToolError(EExitBadData,
                            m_source->GetName() +
                                ": the new content has other columns than the one before; start again");
        return;
    }
    if (!layout.interval.IsSingleTick())
        throw ToolError(EExitUsage, m_source->GetName() + ": holds candles of " +
                                        FormatInterval(layout.interval) +
                                        "; live folds ticks, and `kalvento candles` folds candles");
    m_layout = layout;
    m_properties = PropertiesOf(layout);
    m_emptyRow.emplace(m_properties);
    std::vector<ESeriesId> candle(layout.series);
    candle.insert(candle.end(), {IntervalOpen, IntervalMax, IntervalMin});
    std::sort(candle.begin(), candle.end());
    const bool datesOnly = m_options.stampedWithBegin && m_options.interval.IsEod();
    m_writer.emplace(candle, layout.hasSymbols, datesOnly, m_options.format, m_context);
}

Instrument& LiveRun::InstrumentOf(std::size_t a_row)
{
    const std::size_t symbol = m_layout->hasSymbols ? m_block.symbols[a_row] : 0;
    if (symbol >= m_bySymbol.size())
        m_bySymbol.resize(symbol + 1);
    if (m_bySymbol[symbol] == nullptr)
        m_bySymbol[symbol] = &InstrumentOf(m_layout->hasSymbols ? m_reader->GetSymbols()[symbol] : "");
    return *m_bySymbol[symbol];
}

Instrument& LiveRun::InstrumentOf(const std::string& a_name)
{
    Instrument*& known = m_byName[a_name];
    if (known != nullptr)
        return *known;
    m_instruments.push_back(std::make_unique<Instrument>(
        Instrument{a_name,
                   AggregatorWrapper(m_properties, ELastRecordTime, m_options.interval.GetInterval(),
                                     static_cast<unsigned short>(m_options.interval.GetMultiplicity())),
                   NDateTime(),
                   PieceFolder(m_properties, m_layout->interval, m_options.interval),
                   {},
                   {}}));
    known = m_instruments.back().get();
    return *known;
}

void LiveRun::FoldPiece()
{
    std::set<Instrument*> touched;
    std::size_t begin = 0;
    while (begin < m_block.rows) {
        std::size_t end = begin + 1;
        while (end < m_block.rows &&
               (!m_layout->hasSymbols || m_block.symbols[end] == m_block.symbols[begin]))
            ++end;
        Instrument& instrument = InstrumentOf(begin);
        instrument.last = m_block.times[end - 1];
        instrument.rows.Append(m_block, begin, end);
        touched.insert(&instrument);
        begin = end;
    }
    for (Instrument* const instrument : touched) {
        instrument->rows.rows = instrument->folder.Fold(instrument->rows, false, m_candles);
        instrument->candles.Append(m_candles, 0, m_candles.rows);
    }
}

void LiveRun::FoldPast(Instrument& a_instrument)
{
    a_instrument.folder.Fold(a_instrument.rows, true, m_candles);
    a_instrument.candles.Append(m_candles, 0, m_candles.rows);
    const ColumnBlock candles = std::exchange(a_instrument.candles, {});
    a_instrument.rows = {};
    const std::vector<ESeriesId>& series = a_instrument.folder.GetSeries();
    Record last = candles.At(candles.rows - 1, series);
    if (!a_instrument.wrapper.SetCurrentRecord(last))
        throw ToolError(EExitFailure, m_source->GetName() + ": the rows can't be folded; the log says why");
    const std::uint64_t shown =
        std::min<std::uint64_t>(m_options.history.value_or(candles.rows), candles.rows);
    for (std::size_t row = candles.rows - static_cast<std::size_t>(shown); row < candles.rows; ++row) {
        Record candle = candles.At(row, series);
        Print(true, a_instrument, candle);
    }
}

void LiveRun::FoldRow(std::size_t a_row)
{
    Instrument& instrument = InstrumentOf(a_row);
    NDateTime time = m_block.times[a_row];
    if (m_restarted) {
        // A file that was cut and written anew, or copied back, repeats rows that are folded already.
        if (TimeParts::IsSecondEarlier(time, instrument.last)) {
            ++m_skipped;
            return;
        }
        DateTimeTools::ShiftTimeIfNeed(instrument.last, time);
    }
    instrument.last = time;

    Record row = *m_emptyRow;
    row.SetTime(time);
    auto value = row.begin();
    for (const auto& column : m_block.columns)
        (value++)->second = column[a_row];
    bool sameWindow = false;
    if (!instrument.wrapper.AggregateRecord(row, sameWindow))
        throw ToolError(EExitFailure, m_source->GetName() + ": a row can't be folded; the log says why");
    Print(!sameWindow, instrument, row);
}

void LiveRun::Print(bool a_isNew, Instrument& a_instrument, Record& a_candle)
{
    if (m_options.stampedWithBegin && m_options.interval.GetInterval() != EIntervalTick) {
        NDateTime begin;
        a_instrument.wrapper.GetWindowLimits(a_candle.GetTime(), &begin, nullptr);
        a_candle.SetTime(begin);
    }
    m_writer->Print(a_isNew, a_instrument.symbol, a_candle);
}

constexpr const char* S_help =
    R"(Folds the ticks that a file holds, keeps its last candle open, and goes on with what is appended to the file (or
comes through standard input): one line for each change. `changed` replaces the last candle, `new` begins one.
A half-written last line waits for its end; a file that is cut or replaced is read from its start again.
Ctrl-C ends.

Examples:
  kalvento live trades.csv --interval 1min
  kalvento live trades.csv -i 5min --history 10 --format jsonl
  feed | kalvento live - --interval 10s --format csv --idle-exit 60

)";

} // namespace

void AddLiveCommand(Command a_app, ToolContext& a_context)
{
    auto options = std::make_shared<LiveOptions>();
    Command command =
        a_app.AddCommand("live", "Follow a growing file of ticks and print candles as they change");
    command.AddOption("file", options->input, "File of ticks, or - for standard input").Required();
    command
        .AddOption(
            "-i,--interval",
            [options](const std::string& a_text) {
                options->interval = IntervalOption(a_text);
                if (options->interval.GetMultiplicity() > std::numeric_limits<unsigned short>::max())
                    RefuseOption("--interval", "at most 65535 ticks make a candle");
            },
            "Interval of the candles, as 1min, 30s, 100tick")
        .TypeName("INTERVAL")
        .Required();
    command
        .AddChoice<ELiveFormat>("-f,--format", options->format,
                                {{"text", ELiveText}, {"csv", ELiveCsv}, {"jsonl", ELiveJsonl}},
                                "text, csv, or jsonl: one JSON object a line (default: text)")
        .TypeName("FORMAT");
    command
        .AddChoice<bool>(
            "--stamp", options->stampedWithBegin, {{"begin", true}, {"last", false}},
            "Time of a candle: begin of its window, or last: its last row (default: begin; ticks always "
            "last)")
        .TypeName("TIME");
    command.AddOption("--history", options->history,
                      "Print only so many candles of what the file holds already (default: all)");
    command.AddFlag(
        "--no-follow", [options] { options->follow = false; }, "End at the end of the file");
    command.AddOption("--idle-exit", options->idleSeconds, "End when nothing has come for so many seconds")
        .Between(0, 100000000)
        .TypeName("SECONDS");
    AddReadOptions(command, options->read);
    AddSymbolOption(command, options->read);
    command.SetFooter(S_help + ExitCodesHelp());
    options->read.growing = true;
    command.OnRun([options, &a_context] { LiveRun(*options, a_context).Run(); });
}

} // namespace kalvento::tool
