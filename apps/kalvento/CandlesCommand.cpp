#include "kalvento/AddReadOptions.h"
#include "kalvento/Commands.h"
#include "kalvento/Note.h"
#include "kalvento/OpenInput.h"
#include "kalvento/OperationsFile.h"
#include "kalvento/OutputOptions.h"
#include "kalvento/OutputTarget.h"
#include "kalvento/Progress.h"
#include "kalvento/ReadNotes.h"
#include "kalvento/RowAdjuster.h"
#include "kalvento/RowFolding.h"
#include "kalvento/RowWriter.h"
#include "kalvento/WordFault.h"
#include "platform/Interruption.h"
#include "text_rows/IntervalNotation.h"
#include "text_rows/RowReader.h"

#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace kalvento::tool {

namespace {

struct CandlesOptions {
    std::vector<std::string> files;
    std::string interval;
    std::optional<EAggrTimeResult> stamp;
    EOutputFormat format = EOutputCsv;
    std::string output;
    std::string splitFolder;
    std::string outFolder;
    std::string operations;
    unsigned int jobs = 1;
    InputOptions read;
};

// Rows of a symbol wait until they are so many: most files of very many symbols have only a few rows of each, and a
// folder takes more memory than they do.
constexpr std::size_t S_waitingRows = 64;

/// One symbol's way from rows to candles.
struct SymbolFold {
    std::unique_ptr<PieceFolder> folder; // null as long as no rows were folded
    RowBlock rows;
    std::unique_ptr<RowBlock>
        candles; // all of them, since the output goes symbol by symbol; null where there are none
};

/// A symbol as a file's name: what a path or a shell could take for something else is written as %XX.
std::string FileNameOf(std::string_view a_symbol)
{
    std::string name;
    for (const char sign : a_symbol) {
        const auto byte = static_cast<unsigned char>(sign);
        const bool plain = (sign >= '0' && sign <= '9') || (sign >= 'A' && sign <= 'Z') ||
                           (sign >= 'a' && sign <= 'z') || sign == '-' || sign == '_' ||
                           (sign == '.' && !name.empty()) || byte >= 0x80;
        name += plain ? std::string(1, sign) : fmt::format("%{:02X}", byte);
    }
    return name;
}

std::string OutputPath(const std::string& a_folder, const std::string& a_name, EOutputFormat a_format)
{
    return (std::filesystem::path(a_folder) / (a_name + std::string(OutputExtension(a_format)))).string();
}

void MakeFolder(const std::string& a_path)
{
    std::error_code failure;
    std::filesystem::create_directories(a_path, failure);
    if (failure || !std::filesystem::is_directory(a_path))
        throw ToolError(EExitFailure, a_path + ": the folder can't be made: " + failure.message());
}

/// Folds the files as one series, one after the other.
class CandlesRun {
public:
    CandlesRun(const CandlesOptions& a_options, const std::vector<std::string>& a_files, std::string a_output,
               ToolContext& a_context)
        : m_options(a_options), m_files(a_files), m_output(std::move(a_output)), m_context(a_context)
    {}

    void Run();

private:
    void Start(const RowReader& a_reader, const std::string& a_file);
    void Open(const RowLayout& a_layout, const std::string& a_path);
    void Close(const std::string& a_path, const ReadNotes& a_notes);
    bool ShowsDatesOnly() const;
    void FoldFile(RowReader& a_reader, std::uint64_t a_bytesBefore, Progress& a_progress);
    void FoldSymbols(const RowBlock& a_rows);
    void FinishSymbols(const std::vector<std::string>& a_symbols, const ReadNotes& a_notes);
    void WriteSymbol(SymbolFold& a_fold, const std::string& a_symbol);

    const CandlesOptions& m_options;
    InputOptions m_read; // the options for reading, with what the others imply
    const std::vector<std::string>& m_files;
    std::string m_output;
    ToolContext& m_context;
    IntervalAndMultiplicity m_interval;
    EAggrTimeResult m_stamp = EWindowBegin;
    RowLayout m_input;
    std::optional<HistoryOperations> m_operations;
    std::unique_ptr<RowAdjuster> m_adjuster; // null without operations
    std::optional<PieceFolder> m_folder;
    RowBlock m_rows;
    RowBlock m_candles;
    std::size_t m_kept = 0;
    std::vector<SymbolFold> m_symbols;
    std::unique_ptr<OutputTarget> m_target;
    std::unique_ptr<RowWriter> m_writer;
    RowCounts m_counts;
};

void CandlesRun::Run()
{
    std::string reason;
    const auto interval = ParseInterval(m_options.interval, &reason);
    if (!interval)
        throw ToolError(EExitUsage, "--interval: " + reason);
    m_interval = *interval;
    // Charts and exchanges stamp a candle with its window's begin; ticks have no window in time.
    m_stamp = m_options.stamp.value_or(m_interval.IsTick() ? ELastRecordTime : EWindowBegin);
    m_read = m_options.read;
    m_read.fractions = m_interval.IsSingleTick();
    if (!m_options.operations.empty()) {
        m_operations = ReadOperationsForRows(m_options.operations, m_context);
        m_read.oneSymbol = true;
    }

    const Inputs inputs = FindInputs(m_files, m_read.dropRepeated, m_context);
    ReadNotes notes(m_context, m_options.read);
    Progress progress(m_context, inputs.size);
    std::unique_ptr<ByteSource> sourceBefore; // outlives its reader
    std::unique_ptr<RowReader> before;
    std::uint64_t bytes = 0;
    for (const std::string& path : inputs.paths) {
        auto source = OpenInput(path, m_context);
        auto reader = std::make_unique<RowReader>(*source, m_read, notes.HooksFor(*source));
        if (before)
            reader->ContinueFrom(*before);
        Start(*reader, path);
        // Files that are sorted come out together.
        if (m_read.sort && &path != &inputs.paths.back())
            reader->Collect();
        else
            FoldFile(*reader, bytes, progress);
        m_counts.Add(reader->GetCounts());
        bytes += reader->GetBytesRead();
        before = std::move(reader);
        sourceBefore = std::move(source);
    }
    before->ExpectSymbol();
    if (m_input.hasSymbols) {
        FinishSymbols(before->GetSymbols(), notes);
    } else {
        m_rows.rows = m_kept;
        m_folder->Fold(m_rows, true, m_candles);
        m_writer->Write(m_candles, {});
        Close(m_output, notes);
    }
    notes.Finish(m_counts);
}

void CandlesRun::Start(const RowReader& a_reader, const std::string& a_file)
{
    const RowLayout& layout = a_reader.GetLayout();
    if (m_folder) {
        if (layout.series != m_input.series || layout.hasSymbols != m_input.hasSymbols)
            throw ToolError(EExitBadData,
                            a_file + ": has other columns than " + m_files.front() +
                                "; files of one series need the same, others go with --out-dir");
        return;
    }
    m_input = layout;
    m_folder.emplace(FolderOf(layout, m_interval, m_stamp));
    if (m_operations)
        m_adjuster = std::make_unique<RowAdjuster>(*m_operations, layout);
    if (!layout.hasSymbols) {
        if (!m_options.splitFolder.empty())
            throw ToolError(EExitUsage, "--split needs a column of symbols; --symbol-column names one");
        Open(CandleLayout(layout, m_interval, *m_folder), m_output);
    }
}

bool CandlesRun::ShowsDatesOnly() const
{
    const bool ofWindow = m_stamp == EWindowBegin || m_stamp == EWindowBorder;
    return m_interval.IsEod() && (ofWindow || m_input.interval.IsEod());
}

void CandlesRun::Open(const RowLayout& a_layout, const std::string& a_path)
{
    m_target = std::make_unique<OutputTarget>(a_path, m_context);
    m_writer = RowWriter::Make(m_options.format, a_layout, ShowsDatesOnly(), *m_target);
}

void CandlesRun::Close(const std::string& a_path, const ReadNotes& a_notes)
{
    m_writer->Finish();
    m_target->Commit();
    a_notes.Say(a_path, m_writer->GetNote());
    m_writer.reset();
    m_target.reset();
}

void CandlesRun::FoldFile(RowReader& a_reader, std::uint64_t a_bytesBefore, Progress& a_progress)
{
    while (a_reader.Read(m_rows, S_blockRows, m_kept)) {
        if (m_adjuster)
            m_adjuster->Adjust(m_rows, m_kept);
        if (m_input.hasSymbols) {
            FoldSymbols(m_rows);
        } else if (m_interval.IsSingleTick()) {
            m_writer->Write(m_rows, {});
        } else {
            m_kept = m_folder->Fold(m_rows, false, m_candles);
            m_writer->Write(m_candles, {});
        }
        a_progress.Show(a_bytesBefore + a_reader.GetBytesRead(), m_counts.rows + a_reader.GetCounts().rows);
    }
}

void CandlesRun::FoldSymbols(const RowBlock& a_rows)
{
    std::size_t begin = 0;
    std::vector<std::uint32_t> touched;
    while (begin < a_rows.rows) {
        const std::uint32_t symbol = a_rows.symbols[begin];
        std::size_t end = begin + 1;
        while (end < a_rows.rows && a_rows.symbols[end] == symbol)
            ++end;
        if (symbol >= m_symbols.size())
            m_symbols.resize(symbol + 1);
        m_symbols[symbol].rows.AppendRows(a_rows, begin, end);
        touched.push_back(symbol);
        begin = end;
    }
    std::sort(touched.begin(), touched.end());
    touched.erase(std::unique(touched.begin(), touched.end()), touched.end());
    for (const std::uint32_t symbol : touched) {
        SymbolFold& fold = m_symbols[symbol];
        if (m_interval.IsSingleTick() || fold.rows.rows < S_waitingRows)
            continue; // ticks pass as they are
        if (!fold.folder)
            fold.folder = std::make_unique<PieceFolder>(FolderOf(m_input, m_interval, m_stamp));
        fold.rows.rows = fold.folder->Fold(fold.rows, false, m_candles);
        if (!fold.candles)
            fold.candles = std::make_unique<RowBlock>();
        fold.candles->Append(m_candles, 0, m_candles.rows);
    }
}

void CandlesRun::FinishSymbols(const std::vector<std::string>& a_symbols, const ReadNotes& a_notes)
{
    RowLayout layout = CandleLayout(m_input, m_interval, *m_folder);
    const bool split = !m_options.splitFolder.empty();
    const bool isBlock = m_options.format == EOutputBlock;
    if (isBlock && !split && a_symbols.size() > 1)
        throw ToolError(EExitBadData,
                        m_files.front() + ": holds several instruments, \"" + a_symbols[0] + "\" and \"" +
                            a_symbols[1] +
                            "\" at least, and a series block one; --symbol NAME takes one, --split "
                            "DIR writes one file a symbol");
    // A column that nobody asked for and that holds one name says nothing about the rows.
    layout.hasSymbols = !split && !isBlock && (!m_input.symbolsFound || a_symbols.size() > 1);
    if (split)
        MakeFolder(m_options.splitFolder);
    else
        Open(layout, m_output);
    for (std::size_t symbol = 0; symbol < m_symbols.size(); ++symbol) {
        SymbolFold& fold = m_symbols[symbol];
        if (fold.rows.rows == 0)
            continue;
        const std::string path =
            split ? OutputPath(m_options.splitFolder, FileNameOf(a_symbols[symbol]), m_options.format)
                  : m_output;
        if (split)
            Open(layout, path);
        WriteSymbol(fold, a_symbols[symbol]);
        if (split)
            Close(path, a_notes);
        fold = SymbolFold();
    }
    if (!split)
        Close(m_output, a_notes);
}

void CandlesRun::WriteSymbol(SymbolFold& a_fold, const std::string& a_symbol)
{
    if (m_interval.IsSingleTick())
        return m_writer->Write(a_fold.rows, a_symbol);
    if (!a_fold.folder)
        a_fold.folder = std::make_unique<PieceFolder>(FolderOf(m_input, m_interval, m_stamp));
    a_fold.folder->Fold(a_fold.rows, true, m_candles);
    if (a_fold.candles)
        m_writer->Write(*a_fold.candles, a_symbol);
    m_writer->Write(m_candles, a_symbol);
}

/// Folds one file of --out-dir with streams of its own, since several run at once.
struct FileJob {
    std::string file;
    std::string output;
    std::ostringstream notes;
    std::ostringstream nothing;
    int exitCode = EExitOk;

    void Run(const CandlesOptions& a_options, ToolContext& a_context)
    {
        ToolContext context{a_context.in, nothing, notes};
        context.quiet = a_context.quiet;
        try {
            RaiseToolErrors(
                [&] { CandlesRun(a_options, std::vector<std::string>{file}, output, context).Run(); });
        } catch (const internal::Interrupted&) { // told once, for all files
            exitCode = EExitFailure;
        } catch (const ToolError& failure) {
            exitCode = failure.GetExitCode();
            Note(context, failure.what());
        } catch (const std::exception& failure) {
            exitCode = EExitFailure;
            Note(context, file + ": " + failure.what());
        }
    }
};

int RunEachFile(const CandlesOptions& a_options, ToolContext& a_context)
{
    std::vector<FileJob> jobs(a_options.files.size());
    std::set<std::string> outputs;
    for (std::size_t place = 0; place < jobs.size(); ++place) {
        jobs[place].file = a_options.files[place];
        if (jobs[place].file == "-")
            throw ToolError(EExitUsage, "--out-dir takes files, not standard input");
        jobs[place].output = OutputPath(
            a_options.outFolder, std::filesystem::path(jobs[place].file).stem().string(), a_options.format);
        if (!outputs.insert(jobs[place].output).second)
            throw ToolError(EExitUsage, "--out-dir: two files would become " + jobs[place].output);
    }
    MakeFolder(a_options.outFolder);
    std::atomic<std::size_t> next = 0;
    const auto work = [&] {
        for (std::size_t place = next++; place < jobs.size(); place = next++)
            jobs[place].Run(a_options, a_context);
    };
    std::vector<std::jthread> helpers; // joined even where the next one can't be started
    for (std::size_t count = 1; count < std::min<std::size_t>(a_options.jobs, jobs.size()); ++count)
        helpers.emplace_back(work);
    work();
    for (std::jthread& helper : helpers)
        helper.join();

    int exitCode = EExitOk;
    for (const FileJob& job : jobs) {
        a_context.err << job.notes.str();
        exitCode = exitCode == EExitOk ? job.exitCode : exitCode;
    }
    internal::Interruption::Check();
    return exitCode;
}

void RunCandles(const CandlesOptions& a_options, ToolContext& a_context)
{
    if (std::count(a_options.files.begin(), a_options.files.end(), "-") + (a_options.operations == "-") > 1)
        throw ToolError(EExitUsage, "standard input can be read only once");
    RefuseOtherForm(a_options.output, a_options.format);
    if (!a_options.splitFolder.empty() && (!a_options.output.empty() || !a_options.outFolder.empty()))
        throw ToolError(EExitUsage, "--split names its own files; leave --output and --out-dir out");
    if (a_options.outFolder.empty()) {
        CandlesRun(a_options, a_options.files, a_options.output, a_context).Run();
        return;
    }
    if (!a_options.output.empty() || !a_options.read.rejectFile.empty())
        throw ToolError(EExitUsage, "--out-dir names its own files; leave --output and --reject-file out");
    if (!a_options.operations.empty())
        throw ToolError(EExitUsage, "--operations: a list is that of one instrument; leave --out-dir out");
    a_context.exitCode = RunEachFile(a_options, a_context);
}

constexpr const char* S_examples = R"(Examples:
  kalvento candles ticks.csv --interval 5min
      five-minute candles of ticks with the columns time,price,volume, to standard output
  kalvento candles minutes.csv -i 1h -o hours.csv --input-stamp end
      hours from minutes that bear their window's end
  kalvento candles export.csv -i 1d --columns time=Date,price=Last --zone UTC --output-zone Europe/Warsaw
      Warsaw days from other column names and times in UTC
  kalvento candles stocks.csv -i 1min --split candles/
      one file for each instrument of the column symbol
  kalvento candles stocks.csv -i 1min --symbol PKO
      one of them
  kalvento candles shares.csv -i 1week --operations operations.txt
      weeks on the scale of the present, corrected for splits and dividends
  zcat ticks.csv.gz | kalvento candles - -i 30s --format jsonl
  kalvento candles 2024-*.csv -i 1h --out-dir hours/ --jobs 4
      every file on its own, four at once; without --out-dir the files are one series, in the order given
)";

} // namespace

void AddCandlesCommand(Command a_app, ToolContext& a_context)
{
    Command command = a_app.AddCommand(
        "candles", "Fold rows (ticks or candles) of CSV files or series blocks into candles");
    const auto options = std::make_shared<CandlesOptions>();
    command.AddOption("FILES", options->files, "CSV files or binary series blocks, - for standard input")
        .Required()
        .TypeName("");
    command
        .AddOption("--interval,-i", options->interval,
                   "Interval of the candles: " + std::string(IntervalNotationHelp()))
        .Required()
        .TypeName("INTERVAL");
    command
        .AddChoice<EAggrTimeResult>(
            "--stamp", options->stamp,
            {{"first", EFirstRecordTime},
             {"last", ELastRecordTime},
             {"begin", EWindowBegin},
             {"end", EMetaStockWindowEnd},
             {"border", EWindowBorder}},
            "Time that a candle bears: of its first or last row, the window's begin, the end (first instant behind, "
            "below a day only) or the border (last instant inside); default: begin, for ticks last")
        .TypeName("TIME");
    AddOutputOptions(command, options->format, options->output);
    command
        .AddOption("--split", options->splitFolder,
                   "Folder for one file a symbol (where the files have symbols)")
        .TypeName("DIR");
    command.AddOption("--out-dir", options->outFolder, "Folder for one output a file, each folded on its own")
        .TypeName("DIR");
    command.AddOption("--jobs,-j", options->jobs, "Files folded at once with --out-dir (default: 1)")
        .Between(1U, 256U)
        .TypeName("N");
    command
        .AddOption("--operations", options->operations,
                   "List of corporate operations to correct the rows by before they are folded")
        .TypeName("FILE");
    AddReadOptions(command, options->read);
    AddSymbolOption(command, options->read);
    command.SetFooter(S_examples + ExitCodesHelp());
    command.OnRun([options, &a_context] { RunCandles(*options, a_context); });
}

} // namespace kalvento::tool
