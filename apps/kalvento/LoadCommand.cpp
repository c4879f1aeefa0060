#include "kalvento/AddReadOptions.h"
#include "kalvento/Commands.h"
#include "kalvento/DatabaseOption.h"
#include "kalvento/OpenInput.h"
#include "kalvento/Progress.h"
#include "kalvento/ReadNotes.h"
#include "kalvento/TextForms.h"
#include "kalvento/WordFault.h"
#include "platform/CodePage.h"
#include "provider_kit/StoreProvider.h"
#include "series/History.h"
#include "sql_store/SqlWriter.h"
#include "text_rows/IntervalNotation.h"
#include "text_rows/RowReader.h"
#include "text_rows/RowSeries.h"
#include "text_rows/SeriesNames.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace kalvento::tool {

namespace {

// Rows of one transaction: enough to spread its cost, and few enough that readers see a long load grow, about once a
// second.
constexpr std::size_t S_rowsAtOnce = 200'000;
// Rows of all instruments that wait for their transactions.
constexpr std::size_t S_waitingRows = 1'000'000;

struct LoadOptions {
    std::vector<std::string> files;
    std::string database;
    std::string symbol;
    InputOptions read;
};

/// What became of the rows of one instrument.
struct Tally {
    std::uint64_t added = 0;
    std::uint64_t there = 0;
    std::uint64_t count = 0; // in the database, when the last of them was checked
};

// The server's client explains itself in several lines; from "LINE" on they are about the text of a statement.
std::string OneLine(const std::string& a_text)
{
    std::istringstream lines(a_text);
    std::string all;
    for (std::string line; std::getline(lines >> std::ws, line) && !line.starts_with("LINE ");)
        all += (all.empty() ? "" : "; ") + line;
    return all;
}

std::string NamesOf(const std::vector<ESeriesId>& a_series, IntervalAndMultiplicity a_interval)
{
    std::string names = FormatInterval(a_interval) + " with ";
    for (const ESeriesId series : a_series)
        names += (series == a_series.front() ? "" : ", ") + ColumnName(series, !a_interval.IsSingleTick());
    return names;
}

/// The database; its refusals become those of the tool.
class Database {
public:
    explicit Database(const std::string& a_connection)
    {
        const SqlAddress address = DatabaseOption(a_connection);
        if (address.IsEmpty())
            throw ToolError(EExitUsage, "--database: names none");
        m_description = address.GetDescription();
        m_writer = std::make_unique<SqlWriter>(a_connection);
    }

    /// Calls that operation of the writer; SqlConflict passes through.
    template<class Operation, class... Arguments>
    auto Ask(Operation a_operation, const Arguments&... a_arguments)
    {
        try {
            return std::invoke(a_operation, *m_writer, a_arguments...);
        } catch (const SqlConflict&) {
            throw;
        } catch (const std::exception& failure) {
            throw ToolError(EExitFailure, "database " + m_description + ": " +
                                              OneLine(CodePage::Cp1250ToUtf8(failure.what())));
        }
    }

private:
    std::unique_ptr<SqlWriter> m_writer;
    std::string m_description;
};

/// The rows of one instrument out of one file.
class InstrumentLoad {
public:
    /// a_isin: UTF-8, as it stands in the file or was typed.
    InstrumentLoad(Database& a_database, const RowLayout& a_layout, std::string a_place,
                   const std::string& a_isin)
        : m_database(a_database),
          m_layout(a_layout),
          m_place(std::move(a_place)),
          m_isin(CodePage::WideToCp1250(CodePage::Utf8ToWide(a_isin)))
    {
        if (!CodePage::FitsCp1250(CodePage::Utf8ToWide(a_isin)))
            throw ToolError(EExitBadData,
                            m_place + ": found the symbol \"" + a_isin +
                                "\", expected letters of the code page CP1250; --symbol gives another one");
        if (!StoreProvider::IsServable(m_isin))
            throw ToolError(EExitBadData, m_place + ": found the symbol \"" + a_isin +
                                              "\", expected 1 to 120 letters without '/', '\\' and control "
                                              "characters; --symbol gives another one");
        Forget();
    }

    const std::string& GetIsin() const { return m_isin; }
    std::size_t GetWaiting() const { return m_times.size(); }

    void Add(const RowBlock& a_block, std::size_t a_row)
    {
        m_times.push_back(a_block.times[a_row]);
        for (std::size_t column = 0; column < m_columns.size(); ++column)
            m_columns[column].second.push_back(a_block.columns[column][a_row]);
    }

    /// Puts the waiting rows into the database; there must be some.
    void Flush(Tally& a_tally)
    {
        const std::size_t rows = m_times.size();
        const NDateTime first = m_times.front();
        History history(m_layout.interval.GetInterval(), m_layout.interval.GetMultiplicity(),
                        std::move(m_times), std::move(m_columns));
        Forget();
        try {
            if (!m_position) {
                CreateOrCompare(history);
                m_position = m_database.Ask(&SqlWriter::FindRow, m_isin, first);
            }
            const auto appended = m_database.Ask(&SqlWriter::AppendRows, m_isin, *m_position, history);
            *m_position += rows;
            a_tally.added += appended.added;
            a_tally.there += rows - appended.added;
            a_tally.count = appended.count;
        } catch (const SqlConflict& conflict) {
            if (!conflict.GetOtherRow())
                throw ToolError(EExitBadData, m_place + ": " + CodePage::Cp1250ToUtf8(conflict.what()));
            const auto row = static_cast<std::size_t>(*conflict.GetOtherRow() - *m_position);
            throw ToolError(
                EExitBadData,
                m_place + ": the database has another row in the place of the one of " +
                    ShownTimeWithCounter(history.TimeSeries().at(row)) +
                    "; a file repeats rows that are there without a gap, or goes on behind the last of them "
                    "from a new second on");
        }
    }

private:
    void Forget()
    {
        m_times.clear();
        m_columns.clear();
        for (const ESeriesId series : m_layout.series)
            m_columns.emplace_back(series, std::vector<double>());
    }

    // An instrument that exists keeps the names and groups that somebody gave it.
    void CreateOrCompare(const History& a_rows)
    {
        if (const auto there = m_database.Ask(&SqlWriter::FindInstrument, m_isin))
            return Compare(*there);
        StoreInstrument instrument;
        instrument.isin = m_isin;
        instrument.shortName = m_isin;
        instrument.longName = m_isin;
        instrument.market = "BAZA";
        instrument.groups = {L"Wszystkie"};
        instrument.series = PropertiesOf(m_layout);
        instrument.interval = m_layout.interval;
        instrument.live = m_layout.interval.IsSingleTick();
        unsigned int decimals = 0;
        for (const auto& [series, column] : a_rows)
            if (series == Price)
                for (const double price : column)
                    decimals = std::max(decimals, DecimalsOf(price));
        SetDecimals(instrument.series, decimals);
        m_database.Ask(&SqlWriter::CreateInstrument, instrument);
    }

    void Compare(const StoreInstrument& a_there) const
    {
        std::vector<ESeriesId> series;
        for (const DSProp& property : a_there.series)
            series.push_back(property.GetSeriesID());
        if (series != m_layout.series || !a_there.interval.Equals(m_layout.interval))
            throw ToolError(EExitBadData,
                            m_place + ": the file has " + NamesOf(m_layout.series, m_layout.interval) +
                                ", the instrument in the database " + NamesOf(series, a_there.interval));
    }

    Database& m_database;
    const RowLayout& m_layout;
    const std::string m_place;               // for refusals
    const std::string m_isin;                // CP1250
    std::optional<std::uint64_t> m_position; // of the next row; known from the first flush on
    std::vector<NDateTime> m_times;
    DataSeriesSet::Columns m_columns;
};

/// All files, one after the other.
class LoadRun {
public:
    LoadRun(const LoadOptions& a_options, ToolContext& a_context)
        : m_options(a_options), m_context(a_context), m_database(a_options.database)
    {}

    void Run();

private:
    void ExpectOrder(const std::string& a_path) const;
    void LoadFile(ByteSource& a_source, const std::string& a_path, std::uint64_t a_bytesBefore);
    std::string SymbolOf(const std::string& a_path, const RowReader& a_reader, std::size_t a_symbol) const;
    void Flush(InstrumentLoad& a_load);
    void PrintTallies();

    const LoadOptions& m_options;
    ToolContext& m_context;
    Database m_database;
    std::unique_ptr<ReadNotes> m_notes;
    std::unique_ptr<Progress> m_progress;
    RowCounts m_counts;
    std::vector<std::string> m_isins; // in the order of their first rows
    std::map<std::string, Tally> m_tallies;
};

void LoadRun::Run()
{
    const Inputs inputs = FindInputs(m_options.files, m_options.read.dropRepeated, m_context);
    m_notes = std::make_unique<ReadNotes>(m_context, m_options.read);
    m_progress = std::make_unique<Progress>(m_context, inputs.size);

    std::uint64_t bytes = 0;
    try {
        for (const std::string& path : inputs.paths)
            RaiseToolErrors([&] {
                const auto source = OpenInput(path, m_context);
                if (source->GetSize() > 0)
                    ExpectOrder(path);
                LoadFile(*source, path, bytes);
                bytes += source->GetSize();
            });
    } catch (...) {
        m_progress.reset();
        PrintTallies(); // what is in the database stays there
        throw;
    }
    m_progress.reset();
    m_notes->Finish(m_counts);
    PrintTallies();
}

std::string LoadRun::SymbolOf(const std::string& a_path, const RowReader& a_reader,
                              std::size_t a_symbol) const
{
    if (m_options.symbol.empty())
        return a_reader.GetLayout().hasSymbols ? a_reader.GetSymbols()[a_symbol]
                                               : std::filesystem::path(a_path).stem().string();
    if (a_symbol > 0)
        throw ToolError(EExitUsage, "--symbol: " + a_path + " holds several instruments, \"" +
                                        a_reader.GetSymbols()[0] + "\" and \"" + a_reader.GetSymbols()[1] +
                                        "\" at least; without it each gets its own name");
    return m_options.symbol;
}

// What is in the database stays there, so a file that turns out to be in no order must be refused beforehand.
void LoadRun::ExpectOrder(const std::string& a_path) const
{
    if (m_options.read.sort)
        return;
    const auto source = OpenInput(a_path, m_context);
    RowReader reader(*source, m_options.read);
    RowBlock block;
    while (reader.Read(block, S_blockRows)) {
    }
}

void LoadRun::LoadFile(ByteSource& a_source, const std::string& a_path, std::uint64_t a_bytesBefore)
{
    RowReader reader(a_source, m_options.read, m_notes->HooksFor(a_source));
    if (a_path == "-" && m_options.symbol.empty() && !reader.GetLayout().hasSymbols)
        throw ToolError(EExitUsage, "standard input has no name; --symbol gives one");
    std::vector<std::unique_ptr<InstrumentLoad>> loads; // by the reader's number of the symbol
    std::size_t waiting = 0;
    RowBlock block;
    while (reader.Read(block, S_blockRows)) {
        for (std::size_t row = 0; row < block.rows; ++row) {
            const std::size_t symbol = reader.GetLayout().hasSymbols ? block.symbols[row] : 0;
            for (std::size_t place = loads.size(); place <= symbol; ++place) {
                const std::string isin = SymbolOf(a_path, reader, place);
                loads.push_back(std::make_unique<InstrumentLoad>(m_database, reader.GetLayout(),
                                                                 a_source.GetName() + ": " + isin, isin));
            }
            loads[symbol]->Add(block, row);
            ++waiting;
            if (loads[symbol]->GetWaiting() == S_rowsAtOnce) {
                waiting -= S_rowsAtOnce;
                Flush(*loads[symbol]);
            }
        }
        if (waiting >= S_waitingRows) {
            for (const auto& load : loads)
                Flush(*load);
            waiting = 0;
        }
        m_progress->Show(a_bytesBefore + reader.GetBytesRead(), m_counts.rows + reader.GetCounts().rows);
    }
    for (const auto& load : loads)
        Flush(*load);
    m_counts.Add(reader.GetCounts());
}

void LoadRun::Flush(InstrumentLoad& a_load)
{
    if (a_load.GetWaiting() == 0)
        return;
    Tally& tally = m_tallies[a_load.GetIsin()];
    const bool isFirst = tally.added + tally.there == 0;
    a_load.Flush(tally);
    if (isFirst)
        m_isins.push_back(a_load.GetIsin());
}

void LoadRun::PrintTallies()
{
    if (m_isins.empty())
        return;
    TextTable table({"instrument", "rows added", "were there", "now in all"},
                    {TextTable::EColumnText, TextTable::EColumnNumber, TextTable::EColumnNumber,
                     TextTable::EColumnNumber});
    const auto add = [&table](const std::string& a_name, const Tally& a_tally) {
        table.Add({a_name, ShownCount(a_tally.added), ShownCount(a_tally.there), ShownCount(a_tally.count)});
    };
    Tally all;
    for (const std::string& isin : m_isins) {
        const Tally& tally = m_tallies[isin];
        add(CodePage::Cp1250ToUtf8(isin), tally);
        all.added += tally.added;
        all.there += tally.there;
        all.count += tally.count;
    }
    if (m_isins.size() > 1)
        add("(all " + std::to_string(m_isins.size()) + ")", all);
    m_context.out << table.ToText() << std::flush;
}

constexpr const char* S_help =
    "Rows that are in the database already are skipped, so that a file that has grown, or whose loading broke off, is\n"
    "loaded again as a whole. Rows are only added after the last one that is there: older ones are refused, and so is a\n"
    "file that says otherwise than the database. Several instruments in one file are told apart by a column of symbols.\n"
    "The tables are made where there are none.\n\n"
    "Examples:\n"
    "  kalvento load pko.csv --database \"host=serwer dbname=kursy user=jan\"\n"
    "  kalvento load 2024-*.csv --symbol PKO --database postgresql://jan@serwer/kursy\n"
    "  zcat ticks.csv.gz | kalvento load - --symbol-column Ticker --database dbname=kursy\n\n";

} // namespace

void AddLoadCommand(Command a_app, ToolContext& a_context)
{
    Command command = a_app.AddCommand("load", "Put rows of files into a PostgreSQL database");
    const auto options = std::make_shared<LoadOptions>();
    command.AddOption("files", options->files, "Text files or series blocks, - for standard input")
        .Required();
    command
        .AddOption(
            "--database", options->database,
            "How to connect: \"host=... dbname=... user=...\" or postgresql://user@host/name; a password "
            "is taken from ~/.pgpass")
        .Required()
        .TypeName("CONNECTION");
    command.AddOption(
        "--symbol", options->symbol,
        "Name of the instrument (default: that in the file, or the file's name without its ending)");
    AddReadOptions(command, options->read);
    command.SetFooter(S_help + ExitCodesHelp());
    command.OnRun([options, &a_context] { LoadRun(*options, a_context).Run(); });
}

} // namespace kalvento::tool
