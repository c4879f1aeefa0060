#include "folding/Proof.h"
#include "kalvento/AddReadOptions.h"
#include "kalvento/Commands.h"
#include "kalvento/OpenInput.h"
#include "kalvento/OptionValues.h"
#include "kalvento/OutputTarget.h"
#include "kalvento/Progress.h"
#include "kalvento/ReadNotes.h"
#include "kalvento/TextForms.h"
#include "text_rows/IntervalNotation.h"
#include "text_rows/RowReader.h"
#include "text_rows/RowSeries.h"
#include "text_rows/SeriesNames.h"
#include "time/KalventoException.h"

#include <boost/json.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <bit>
#include <chrono>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kalvento::tool {

namespace {

constexpr std::size_t S_rowsAtOnce = 65536;

struct ProveOptions {
    InputOptions read;
    std::string input;
    std::vector<IntervalAndMultiplicity> intervals;
    std::size_t samples = 0; // 0: as many as the proof chooses
    bool jsonl = false;
};

/// The ticks of one instrument.
struct Ticks {
    std::string symbol; // empty where the file has none
    DataSeriesSet rows{EIntervalTick, 1};
};

/// What a run on one interval showed.
struct Proved {
    const Ticks& ticks;
    IntervalAndMultiplicity interval;
    Proof::Result result;
    double seconds = 0.0;
};

// In the order of Proof::ERoad.
constexpr std::array<const char*, 4> S_roads = {"in one go", "row by row", "history handed over",
                                                "synchronization handed over"};

// In the order of EAggrType, the first one for the close.
constexpr std::array<const char*, 5> S_foldRules = {
    "close is the price of the candle's last row",
    "ohlcsum: each of open, high, low and close is the sum of the candle's rows, added in their order",
    "ohlclast: each of open, high, low and close is the price of the candle's last row",
    "sum: the values of the candle's rows, added in their order", "last: the value of the candle's last row"};

constexpr std::array<std::pair<ESeriesId, const char*>, 3> S_candleRules = {
    {{IntervalOpen, "open is the price of the candle's first row"},
     {IntervalMax, "high is the greatest price of the candle's rows"},
     {IntervalMin, "low is the least price of the candle's rows"}}};

std::string FoldRule(ESeriesId a_series, const RowLayout& a_layout)
{
    const auto* const ofCandle =
        std::ranges::find(S_candleRules, a_series, &std::pair<ESeriesId, const char*>::first);
    const bool isOfCandle = ofCandle != S_candleRules.end();
    EAggrType type = EAggrTypeLast;
    for (std::size_t place = 0; place < a_layout.series.size(); ++place)
        if (a_layout.series[place] == (isOfCandle ? Price : a_series))
            type = a_layout.folds[place];
    return isOfCandle && type == EAggrTypeOhlc ? ofCandle->second : S_foldRules[type];
}

std::string RuleBehind(const Proof::Finding& a_finding, IntervalAndMultiplicity a_interval,
                       const RowLayout& a_layout)
{
    // A candle doesn't say how many rows made it, so whoever continues it counts it as a first row.
    if (a_interval.IsNTick() && a_finding.road >= Proof::ERoadHandOver)
        return "a candle doesn't tell how many rows made it, so one of " +
               std::to_string(a_interval.GetMultiplicity()) +
               " ticks that is handed over counts as its first tick, and the rows behind it fall into other "
               "candles; in one go and row by row they agree, and whoever goes on with such a candle folds its "
               "rows again, as watch does";
    if (a_finding.difference.kind == CandleDifference::EKindValue)
        return FoldRule(a_finding.difference.series, a_layout);
    return a_interval.IsTick() ? "windows of ticks are counted anew from each change of the day"
                               : "windows of " + FormatInterval(a_interval) +
                                     " are anchored to the calendar, and a candle bears the time of its last "
                                     "row in time";
}

std::string BitsText(double a_value)
{
    return fmt::format("0x{:016x}", std::bit_cast<std::uint64_t>(a_value));
}

/// Prints what was found, as text or as one JSON object for each instrument and interval.
class ProofWriter {
public:
    ProofWriter(const ProveOptions& a_options, const RowLayout& a_layout, std::string a_name,
                ToolContext& a_context)
        : m_options(a_options), m_layout(a_layout), m_name(std::move(a_name)), m_target("", a_context)
    {}

    void Write(const Proved& a_proved)
    {
        m_target.Write(m_options.jsonl ? JsonOf(a_proved) : TextOf(a_proved));
    }
    void Finish() { m_target.Commit(); }

private:
    std::string TextOf(const Proved& a_proved) const
    {
        const Proof::Result& result = a_proved.result;
        const std::string& symbol = a_proved.ticks.symbol;
        std::string text =
            m_name + (symbol.empty() ? "" : ", " + symbol) + ", " + FormatInterval(a_proved.interval) + ": ";
        if (result.finding)
            return text + "different\n" + DifferenceText(a_proved);
        std::string series = "time with its counter";
        for (const ESeriesId column : CandleSeries())
            series += ", " + ColumnName(column, true);
        return text + "identical\n  " + ShownCount(result.rows) + " rows, " + ShownCount(result.candles) +
               (result.candles == 1 ? " candle" : " candles") + " in one go and row by row\n  " +
               ShownCount(result.handOvers) +
               (result.handOvers == result.rows ? " hand-overs, one at each row"
                                                : " hand-overs at chosen rows") +
               ", as a history" +
               (result.wholeHistories ? " from the first row" : " from two candles before") +
               " and as a synchronization\n  compared bit for bit: " + series + '\n' +
               fmt::format("  {:.2f} s\n", a_proved.seconds);
    }

    std::string DifferenceText(const Proved& a_proved) const
    {
        const Proof::Finding& finding = *a_proved.result.finding;
        const CandleDifference& difference = finding.difference;
        std::string text = "  candle " + std::to_string(difference.candle + 1) + ", " +
                           ShownTimeWithCounter(difference.expectedTime) + ": ";
        std::string expected;
        std::string found;
        switch (difference.kind) {
        case CandleDifference::EKindTime:
            text += "its time";
            expected = ShownTimeWithCounter(difference.expectedTime);
            found = ShownTimeWithCounter(difference.foundTime);
            break;
        case CandleDifference::EKindValue:
            text += ColumnName(difference.series, true);
            expected = FormatNumber(difference.expected) + "  " + BitsText(difference.expected);
            found = FormatNumber(difference.found) + "  " + BitsText(difference.found);
            break;
        case CandleDifference::EKindCount:
            text += "only one of both has it";
            expected = ShownCount(difference.expectedCount) + " candles";
            found = ShownCount(difference.foundCount) + " candles";
            break;
        case CandleDifference::EKindShape:
            text += "other series";
            break;
        }
        text += std::string("\n  ") + S_roads[Proof::ERoadHistory] + ": " + expected + "\n  " +
                S_roads[finding.road];
        if (finding.road >= Proof::ERoadHandOver)
            text += " after row " + std::to_string(finding.row + 1) + ", " +
                    ShownTimeWithCounter(a_proved.ticks.rows.TimeSeries()[finding.row]);
        return text + ": " + found + "\n  rule: " + RuleBehind(finding, a_proved.interval, m_layout) + '\n';
    }

    std::string JsonOf(const Proved& a_proved) const
    {
        const Proof::Result& result = a_proved.result;
        boost::json::object object{{"file", m_name}};
        if (!a_proved.ticks.symbol.empty())
            object["symbol"] = a_proved.ticks.symbol;
        object["interval"] = FormatInterval(a_proved.interval);
        object["identical"] = !result.finding.has_value();
        object["rows"] = result.rows;
        object["candles"] = result.candles;
        object["hand_overs"] = result.handOvers;
        object["seconds"] = a_proved.seconds;
        if (result.finding)
            object["difference"] = JsonOf(*result.finding, a_proved.interval);
        return boost::json::serialize(object) + '\n';
    }

    boost::json::object JsonOf(const Proof::Finding& a_finding, IntervalAndMultiplicity a_interval) const
    {
        const CandleDifference& difference = a_finding.difference;
        boost::json::object object{{"road", S_roads[a_finding.road]},
                                   {"candle", difference.candle + 1},
                                   {"time", ShownTimeWithCounter(difference.expectedTime)},
                                   {"found_time", ShownTimeWithCounter(difference.foundTime)},
                                   {"expected_candles", difference.expectedCount},
                                   {"found_candles", difference.foundCount}};
        if (a_finding.road >= Proof::ERoadHandOver)
            object["row"] = a_finding.row + 1;
        if (difference.kind == CandleDifference::EKindValue) {
            object["series"] = ColumnName(difference.series, true);
            // As text: JSON has no NaN, and the bits are what differs.
            object["expected"] = FormatNumber(difference.expected);
            object["expected_bits"] = BitsText(difference.expected);
            object["found"] = FormatNumber(difference.found);
            object["found_bits"] = BitsText(difference.found);
        }
        object["rule"] = RuleBehind(a_finding, a_interval, m_layout);
        return object;
    }

    std::vector<ESeriesId> CandleSeries() const
    {
        std::vector<ESeriesId> series{IntervalOpen, IntervalMax, IntervalMin};
        series.insert(series.end(), m_layout.series.begin(), m_layout.series.end());
        return series;
    }

    const ProveOptions& m_options;
    const RowLayout& m_layout;
    std::string m_name;
    OutputTarget m_target;
};

std::vector<Ticks> ReadTicks(RowReader& a_reader)
{
    RowBlock block;
    while (a_reader.Read(block, S_rowsAtOnce, block.rows)) {
    }
    a_reader.ExpectSymbol();
    const RowLayout& layout = a_reader.GetLayout();
    const std::size_t count = layout.hasSymbols ? a_reader.GetSymbols().size() : 1;
    std::vector<std::vector<std::size_t>> rowsOf(count);
    for (std::size_t row = 0; row < block.rows; ++row)
        rowsOf[layout.hasSymbols ? block.symbols[row] : 0].push_back(row);

    std::vector<Ticks> ticks(count);
    for (std::size_t symbol = 0; symbol < count; ++symbol) {
        if (layout.hasSymbols)
            ticks[symbol].symbol = a_reader.GetSymbols()[symbol];
        ticks[symbol].rows = SeriesOf(block, layout, rowsOf[symbol]);
    }
    return ticks;
}

Proved Prove(const Ticks& a_ticks, const RowLayout& a_layout, IntervalAndMultiplicity a_interval,
             std::size_t a_samples, ToolContext& a_context)
{
    if (a_interval.GetMultiplicity() > std::numeric_limits<unsigned short>::max())
        throw ToolError(EExitUsage, "at most 65535 ticks make a candle");
    const auto start = std::chrono::steady_clock::now();
    Proof proof(a_ticks.rows, PropertiesOf(a_layout), a_interval);
    constexpr std::size_t parts = 1000;
    Progress progress(a_context, parts);
    Proved proved{a_ticks, a_interval, {}};
    try {
        proved.result = proof.Run(a_samples, [&](std::size_t a_done, std::size_t a_total) {
            progress.Show(parts * a_done / a_total, a_ticks.rows.GetRecordsCount());
        });
    } catch (const KalventoException&) {
        throw ToolError(EExitFailure, "the rows can't be folded; the log says why");
    }
    proved.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return proved;
}

void RunProve(const ProveOptions& a_options, ToolContext& a_context)
{
    const auto source = OpenInput(a_options.input, a_context);
    ReadNotes notes(a_context, a_options.read);
    RowReader reader(*source, a_options.read, notes.HooksFor(*source));
    const RowLayout& layout = reader.GetLayout();
    if (!layout.interval.IsSingleTick())
        throw ToolError(EExitUsage, source->GetName() + ": holds candles of " +
                                        FormatInterval(layout.interval) +
                                        "; prove takes single ticks, the only rows that come live");
    const std::vector<Ticks> instruments = ReadTicks(reader);
    bool isEmpty = true;
    for (const Ticks& ticks : instruments)
        isEmpty = isEmpty && ticks.rows.IsEmpty();
    if (isEmpty)
        throw ToolError(EExitBadData, source->GetName() + ": holds no rows, so there is nothing to prove");
    ProofWriter writer(a_options, layout, source->GetName(), a_context);
    for (const Ticks& ticks : instruments)
        for (const IntervalAndMultiplicity interval : a_options.intervals) {
            const Proved proved = Prove(ticks, layout, interval, a_options.samples, a_context);
            if (proved.result.finding)
                a_context.exitCode = EExitDifferent;
            writer.Write(proved);
        }
    writer.Finish();
    notes.Finish(reader.GetCounts());
}

constexpr const char* S_help =
    R"(Folds the ticks in one go, row by row as live rows come, and with live rows taking over from a history and from a
synchronization at chosen rows, and compares the candles bit for bit: times with their counters, and every column.
Prints `identical` with what was compared, or the first difference with the rule behind it, and ends with 5 then.

Examples:
  kalvento prove trades.csv --interval 5min
  kalvento prove trades.csv -i 1min -i 1h -i 1d --samples 5000
  kalvento prove stocks.csv -i 1min --symbol PKO --format jsonl

)";

} // namespace

void AddProveCommand(Command a_app, ToolContext& a_context)
{
    const auto options = std::make_shared<ProveOptions>();
    Command command =
        a_app.AddCommand("prove", "Prove that ticks give the same candles on every road, bit for bit");
    command.AddOption("file", options->input, "File of ticks, or - for standard input").Required();
    command
        .AddList(
            "-i,--interval",
            [options](const std::vector<std::string>& a_texts) {
                for (const std::string& text : a_texts)
                    options->intervals.push_back(IntervalOption(text));
            },
            "Interval of the candles, as 1min, 30s, 1d; may be repeated")
        .TypeName("INTERVAL")
        .OneValueEach()
        .Required();
    command
        .AddOption("--samples", options->samples,
                   "Rows at which live rows take over (default: every row up to 2000 rows, else 200)")
        .Between(std::size_t{1}, std::size_t{1'000'000'000})
        .TypeName("N");
    command
        .AddChoice<bool>("-f,--format", options->jsonl, {{"text", false}, {"jsonl", true}},
                         "text, or jsonl: one JSON object for each instrument and interval (default: text)")
        .TypeName("FORMAT");
    AddReadOptions(command, options->read);
    AddSymbolOption(command, options->read);
    command.SetFooter(S_help + ExitCodesHelp());
    command.OnRun([options, &a_context] { RunProve(*options, a_context); });
}

} // namespace kalvento::tool
