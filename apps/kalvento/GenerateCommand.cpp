#include "kalvento/BlockFile.h"
#include "kalvento/Commands.h"
#include "kalvento/OptionValues.h"
#include "kalvento/SessionGenerator.h"
#include "platform/Interruption.h"
#include "time/DateTimeTools.h"
#include "time/TimeParts.h"

#include <fmt/compile.h>

#include <chrono>
#include <cmath>
#include <filesystem>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kalvento::tool {

namespace {

struct GenerateOptions {
    GeneratorOptions market;
    std::string symbol;
    std::string format = "csv";
    std::string output;
    bool book = false;
};

/// Text that grows line by line. Millions of lines are wanted in seconds, so their form is known at compile time.
class LineWriter {
public:
    LineWriter(OutputTarget& a_target, Decimal a_tick, std::string_view a_header)
        : m_target(a_target), m_tick(a_tick), m_buffer(a_header)
    {
        for (unsigned int place = 0; place < m_tick.scale; ++place)
            m_unit *= 10;
    }

    void AddTime(std::chrono::sys_days a_day, std::uint32_t a_second)
    {
        if (a_day != m_day) {
            m_day = a_day;
            const std::chrono::year_month_day date(m_day);
            m_date =
                fmt::format("{:04}-{:02}-{:02}", static_cast<int>(date.year()),
                            static_cast<unsigned int>(date.month()), static_cast<unsigned int>(date.day()));
        }
        const auto clock = TimeParts::ClockOf(a_second);
        fmt::format_to(std::back_inserter(m_buffer), FMT_COMPILE("{} {:02}:{:02}:{:02}"), m_date, clock.hour,
                       clock.minute, clock.second);
    }
    void AddText(std::string_view a_text) { m_buffer += a_text; }
    void AddNumber(std::int64_t a_number)
    {
        fmt::format_to(std::back_inserter(m_buffer), FMT_COMPILE(",{}"), a_number);
    }
    void AddPrice(std::int64_t a_priceInTicks)
    {
        const std::int64_t price = a_priceInTicks * m_tick.digits;
        AddNumber(price / m_unit);
        if (m_tick.scale > 0)
            fmt::format_to(std::back_inserter(m_buffer), FMT_COMPILE(".{:0{}}"), price % m_unit,
                           m_tick.scale);
    }
    void EndLine()
    {
        m_buffer += '\n';
        if (m_buffer.size() > S_flushAt)
            Flush();
    }
    void Flush()
    {
        internal::Interruption::Check();
        m_target.Write(m_buffer);
        m_buffer.clear();
    }

private:
    static constexpr std::size_t S_flushAt = 1 << 20;

    OutputTarget& m_target;
    Decimal m_tick;
    std::int64_t m_unit = 1; // 10^scale of the tick
    std::string m_buffer;
    std::string m_date;
    std::chrono::sys_days m_day{std::chrono::days(-1'000'000)};
};

/// Trades, a line each.
class TradeWriter {
public:
    TradeWriter(OutputTarget& a_target, const GenerateOptions& a_options)
        : m_lines(a_target, a_options.market.tickSize,
                  a_options.symbol.empty() ? "time,price,volume\n" : "time,symbol,price,volume\n")
    {
        if (!a_options.symbol.empty())
            m_symbol = ',' + a_options.symbol;
    }

    void Add(const GeneratedTrade& a_trade)
    {
        m_lines.AddTime(a_trade.day, a_trade.second);
        m_lines.AddText(m_symbol);
        m_lines.AddPrice(a_trade.priceInTicks);
        m_lines.AddNumber(a_trade.volume);
        m_lines.EndLine();
    }
    void Flush() { m_lines.Flush(); }

private:
    LineWriter m_lines;
    std::string m_symbol;
};

std::string BookHeader()
{
    std::string header = "time";
    for (std::size_t level = 1; level <= GeneratedBook::S_levels; ++level)
        for (const char* const side : {"bid", "ask"})
            header += fmt::format(",{0}{1},{0}_volume{1},{0}_orders{1}", side, level);
    return header + '\n';
}

/// The book at the end of each second that had trades, a line each, for the provider of files.
class BookWriter {
public:
    BookWriter(OutputTarget& a_target, const GenerateOptions& a_options)
        : m_lines(a_target, a_options.market.tickSize, BookHeader())
    {}

    void Add(const GeneratedTrade& a_trade, const GeneratedBook& a_book)
    {
        if (m_last && (m_last->day != a_trade.day || m_last->second != a_trade.second))
            WriteLine();
        m_last = a_trade;
        m_book = a_book;
    }
    void Flush()
    {
        WriteLine();
        m_lines.Flush();
    }

private:
    void WriteLine()
    {
        m_lines.AddTime(m_last->day, m_last->second);
        for (std::size_t level = 0; level < GeneratedBook::S_levels; ++level)
            for (const GeneratedBook::Level& offered : {m_book.bids[level], m_book.asks[level]}) {
                m_lines.AddPrice(offered.priceInTicks);
                m_lines.AddNumber(offered.volume);
                m_lines.AddNumber(offered.orders);
            }
        m_lines.EndLine();
    }

    LineWriter m_lines;
    std::optional<GeneratedTrade> m_last;
    GeneratedBook m_book;
};

void WriteText(SessionGenerator& a_generator, const GenerateOptions& a_options, OutputTarget& a_target)
{
    TradeWriter writer(a_target, a_options);
    GeneratedTrade trade;
    while (a_generator.Next(trade))
        writer.Add(trade);
    writer.Flush();
}

/// "ticks.book.csv" for "ticks.csv", where the provider of files looks for it.
std::string BookPath(const std::string& a_output)
{
    std::filesystem::path path(a_output);
    const std::string ending = path.extension().string();
    return path.replace_extension(".book" + (ending.empty() ? ".csv" : ending)).string();
}

void WriteTextAndBook(SessionGenerator& a_generator, const GenerateOptions& a_options, OutputTarget& a_target,
                      ToolContext& a_context)
{
    OutputTarget bookTarget(BookPath(a_options.output), a_context);
    TradeWriter writer(a_target, a_options);
    BookWriter bookWriter(bookTarget, a_options);
    GeneratedTrade trade;
    while (a_generator.Next(trade)) {
        writer.Add(trade);
        bookWriter.Add(trade, a_generator.GetBook(trade));
    }
    writer.Flush();
    bookWriter.Flush();
    bookTarget.Commit();
}

void WriteBlock(SessionGenerator& a_generator, const GenerateOptions& a_options, OutputTarget& a_target)
{
    std::vector<NDateTime> times;
    std::vector<double> prices;
    std::vector<double> volumes;
    times.reserve(a_options.market.rows);
    prices.reserve(a_options.market.rows);
    volumes.reserve(a_options.market.rows);
    const double unit = std::pow(10.0, a_options.market.tickSize.scale);

    GeneratedTrade trade;
    while (a_generator.Next(trade)) {
        NDateTime time = TimeParts::TimeOf(trade.day, trade.second);
        // Times of a block run strictly upward: trades of one second are told apart by the ordering counter.
        if (!times.empty())
            DateTimeTools::ShiftTimeIfNeed(times.back(), time);
        times.push_back(time);
        internal::Interruption::Check();
        // One division of whole numbers gives the same double as reading the decimal text would.
        prices.push_back(static_cast<double>(trade.priceInTicks * a_options.market.tickSize.digits) / unit);
        volumes.push_back(static_cast<double>(trade.volume));
    }
    DataSeriesSet::Columns columns;
    columns.emplace_back(Price, std::move(prices));
    columns.emplace_back(Volume, std::move(volumes));
    WriteBlock(DataSeriesSet(EIntervalTick, 1, std::move(times), std::move(columns)), a_target);
}

void RunGenerate(const GenerateOptions& a_options, ToolContext& a_context)
{
    const bool isBlock = a_options.format == "block";
    if (isBlock && a_options.output.empty() && a_context.outIsTerminal)
        throw ToolError(EExitUsage, "generate: a block is no text for a terminal; name a file with --output");
    if (isBlock && !a_options.symbol.empty())
        throw ToolError(EExitUsage,
                        "generate: a block holds one instrument without its name; leave --symbol out");
    if (a_options.book && (isBlock || a_options.output.empty() || a_options.output == "-"))
        throw ToolError(EExitUsage,
                        "generate: --book writes text beside that of the trades; name a file with "
                        "--output, and leave --format block out");
    if (a_options.book && !a_options.symbol.empty())
        throw ToolError(EExitUsage,
                        "generate: a book belongs to a file of one instrument; leave --symbol out");
    if (a_options.symbol.find_first_of(",;\t\"\r\n") != std::string::npos)
        throw ToolError(EExitUsage,
                        "generate: --symbol may hold no comma, semicolon, tab, quote or line end");

    std::unique_ptr<SessionGenerator> generator;
    try {
        generator = std::make_unique<SessionGenerator>(a_options.market);
    } catch (const std::invalid_argument& failure) {
        throw ToolError(EExitUsage, std::string("generate: ") + failure.what());
    }

    OutputTarget target(a_options.output, a_context);
    if (isBlock) {
        WriteBlock(*generator, a_options, target);
    } else if (a_options.book) {
        WriteTextAndBook(*generator, a_options, target, a_context);
    } else {
        WriteText(*generator, a_options, target);
    }
    target.Commit();
}

} // namespace

void AddGenerateCommand(Command a_app, ToolContext& a_context)
{
    auto options = std::make_shared<GenerateOptions>();
    GeneratorOptions& market = options->market;
    Command command = a_app.AddCommand("generate", "Write invented but lifelike trades");
    command.AddOption("-n,--rows", market.rows, "Trades over all sessions").ShowDefault();
    command.AddOption("--sessions", market.sessions, "Days of trading").ShowDefault();
    command.AddOption("--seed", market.seed, "Another number, another market").ShowDefault();
    const auto addDecimal = [command](const char* a_name, Decimal& a_target, const char* a_default,
                                      const char* a_help) {
        command
            .AddOption(
                a_name,
                [a_name, &a_target](const std::string& a_text) {
                    const auto number = Decimal::Parse(a_text);
                    if (!number || number->digits == 0)
                        RefuseOption(a_name, "found \"" + a_text +
                                                 "\", expected a number above 0 with a "
                                                 "decimal point, at most 9 places after it, as 0.05");
                    a_target = *number;
                },
                a_help)
            .DefaultText(a_default)
            .TypeName("NUMBER");
    };
    addDecimal("--start-price", market.startPrice, "100", "First price, rounded to a whole number of ticks");
    addDecimal("--tick-size", market.tickSize, "0.01", "Smallest step of the price");
    command
        .AddOption(
            "--from",
            [&market](const std::string& a_text) {
                market.from = std::chrono::sys_days(std::chrono::days(DayOption(a_text, "--from")));
            },
            "First day; a weekend means the Monday after it")
        .DefaultText("2024-01-02")
        .TypeName("DAY");
    command.AddOption("--symbol", options->symbol, "Adds a column with this name of an instrument");
    command.AddOption("-f,--format", options->format, "csv, or block: the binary form of a series set")
        .OneOf({"csv", "block"})
        .ShowDefault();
    command.AddOption("-o,--output", options->output,
                      "File to write, whole or not at all (default: standard output)");
    command.AddFlag("--book", options->book,
                    "Writes the order book as well, beside --output: NAME.book.csv for NAME.csv");
    command.SetFooter(
        "Writes trades of an invented exchange: an opening auction at 9:00, continuous trading to 16:50, busy at\n"
        "both ends of the day and in bursts, a closing auction at 17:00. Several trades share a second; weekends\n"
        "are skipped. The same options give the same bytes on every machine.\n\n"
        "Examples:\n"
        "  kalvento generate --rows 5000 | kalvento candles - --interval 15min\n"
        "  kalvento generate --rows 5000000 --sessions 20 --seed 7 --output month.csv\n"
        "  kalvento generate --start-price 2450 --tick-size 0.25 --format block --output future.block\n\n" +
        ExitCodesHelp());
    command.OnRun([options, &a_context] { RunGenerate(*options, a_context); });
}

} // namespace kalvento::tool
