#include "kalvento/AddReadOptions.h"
#include "kalvento/Commands.h"
#include "kalvento/FoldProof.h"
#include "kalvento/OpenInput.h"
#include "kalvento/OptionValues.h"
#include "kalvento/OutputTarget.h"
#include "kalvento/Progress.h"
#include "kalvento/ReadNotes.h"
#include "kalvento/TextForms.h"
#include "kalvento/Tool.h"
#include "text_rows/IntervalNotation.h"
#include "text_rows/RowReader.h"
#include "text_rows/RowSeries.h"
#include "text_rows/SeriesNames.h"

#include <boost/json.hpp>
#include <fmt/format.h>

#include <bit>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
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
    std::size_t samples = 0; // 0: every row of short files, else S_samples
    bool jsonl = false;
};

constexpr std::size_t S_samples = 200;
constexpr std::size_t S_everyRowUpTo = 2000;

/// The ticks of one instrument.
struct Ticks {
    std::string symbol; // empty where the file has none
    DataSeriesSet rows{EIntervalTick, 1};
};

/// What a run on one interval showed.
struct Proof {
    std::size_t rows = 0;
    std::size_t candles = 0;
    std::size_t handOvers = 0;
    bool wholeHistories = true;
    double seconds = 0.0;
    std::optional<FoldProof::Finding> finding;
};

std::string RoadText(FoldProof::ERoad a_road)
{
    switch (a_road) {
    case FoldProof::ERoadHistory:
        return "in one go";
    case FoldProof::ERoadLive:
        return "row by row";
    case FoldProof::ERoadHandOver:
        return "history handed over";
    case FoldProof::ERoadSynchronization:
        return "synchronization handed over";
    }
    return {};
}

std::string FoldRule(ESeriesId a_series, const RowLayout& a_layout)
{
    const bool ofCandle = a_series == IntervalOpen || a_series == IntervalMax || a_series == IntervalMin;
    EAggrType type = EAggrTypeLast;
    for (std::size_t place = 0; place < a_layout.series.size(); ++place)
        if (a_layout.series[place] == (ofCandle ? Price : a_series))
            type = a_layout.folds[place];
    switch (type) {
    case EAggrTypeOhlc:
        return a_series == IntervalOpen  ? "open is the price of the candle's first row"
               : a_series == IntervalMax ? "high is the greatest price of the candle's rows"
               : a_series == IntervalMin ? "low is the least price of the candle's rows"
                                         : "close is the price of the candle's last row";
    case EAggrTypeOhlcSum:
        return "ohlcsum: each of open, high, low and close is the sum of the candle's rows, added in their order";
    case EAggrTypeOhlcLast:
        return "ohlclast: each of open, high, low and close is the price of the candle's last row";
    case EAggrTypeSum:
        return "sum: the values of the candle's rows, added in their order";
    case EAggrTypeLast:
        return "last: the value of the candle's last row";
    }
    return {};
}

std::string RuleBehind(const FoldProof::Finding& a_finding, IntervalAndMultiplicity a_interval,
                       const RowLayout& a_layout)
{
    // A candle doesn't tell how many rows made it, so whoever goes on with it counts from it as from a first row.
    if (a_interval.IsNTick() && a_finding.road >= FoldProof::ERoadHandOver)
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

    void Write(const Ticks& a_ticks, IntervalAndMultiplicity a_interval, const Proof& a_proof)
    {
        m_target.Write(m_options.jsonl ? JsonOf(a_ticks, a_interval, a_proof)
                                       : TextOf(a_ticks, a_interval, a_proof));
    }
    void Finish() { m_target.Commit(); }

private:
    std::string TextOf(const Ticks& a_ticks, IntervalAndMultiplicity a_interval, const Proof& a_proof) const
    {
        std::string text = m_name + (a_ticks.symbol.empty() ? "" : ", " + a_ticks.symbol) + ", " +
                           FormatInterval(a_interval) + ": ";
        if (a_proof.finding)
            return text + "different\n" + DifferenceText(a_ticks, a_interval, *a_proof.finding);
        std::string series = "time with its counter";
        for (const ESeriesId column : CandleSeries())
            series += ", " + ColumnName(column, true);
        text += "identical\n  " + ShownCount(a_proof.rows) + " rows, " + ShownCount(a_proof.candles) +
                (a_proof.candles == 1 ? " candle" : " candles") + " in one go and row by row\n  " +
                ShownCount(a_proof.handOvers) +
                (a_proof.handOvers == a_proof.rows ? " hand-overs, one at each row"
                                                   : " hand-overs at chosen rows") +
                ", as a history" +
                (a_proof.wholeHistories ? " from the first row" : " from two candles before") +
                " and as a synchronization\n  compared bit for bit: " + series + '\n' +
                fmt::format("  {:.2f} s\n", a_proof.seconds);
        return text;
    }

    std::string DifferenceText(const Ticks& a_ticks, IntervalAndMultiplicity a_interval,
                               const FoldProof::Finding& a_finding) const
    {
        const CandleDifference& difference = a_finding.difference;
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
        const std::string road = RoadText(a_finding.road);
        text += "\n  " + RoadText(FoldProof::ERoadHistory) + ": " + expected + "\n  " + road;
        if (a_finding.road >= FoldProof::ERoadHandOver)
            text += " after row " + std::to_string(a_finding.row + 1) + ", " +
                    ShownTimeWithCounter(a_ticks.rows.TimeSeries()[a_finding.row]);
        return text + ": " + found + "\n  rule: " + RuleBehind(a_finding, a_interval, m_layout) + '\n';
    }

    std::string JsonOf(const Ticks& a_ticks, IntervalAndMultiplicity a_interval, const Proof& a_proof) const
    {
        boost::json::object object{{"file", m_name}};
        if (!a_ticks.symbol.empty())
            object["symbol"] = a_ticks.symbol;
        object["interval"] = FormatInterval(a_interval);
        object["identical"] = !a_proof.finding.has_value();
        object["rows"] = a_proof.rows;
        object["candles"] = a_proof.candles;
        object["hand_overs"] = a_proof.handOvers;
        object["seconds"] = a_proof.seconds;
        if (a_proof.finding)
            object["difference"] = JsonOf(*a_proof.finding, a_interval);
        return boost::json::serialize(object) + '\n';
    }

    boost::json::object JsonOf(const FoldProof::Finding& a_finding, IntervalAndMultiplicity a_interval) const
    {
        const CandleDifference& difference = a_finding.difference;
        boost::json::object object{{"road", RoadText(a_finding.road)},
                                   {"candle", difference.candle + 1},
                                   {"time", ShownTimeWithCounter(difference.expectedTime)},
                                   {"found_time", ShownTimeWithCounter(difference.foundTime)},
                                   {"expected_candles", difference.expectedCount},
                                   {"found_candles", difference.foundCount}};
        if (a_finding.road >= FoldProof::ERoadHandOver)
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
    const RowLayout& layout = a_reader.GetLayout();
    const std::size_t count = layout.hasSymbols ? a_reader.GetSymbols().size() : 1;
    std::vector<std::vector<std::size_t>> rowsOf(count);
    for (std::size_t row = 0; row < block.rows; ++row)
        rowsOf[layout.hasSymbols ? block.symbols[row] : 0].push_back(row);

    std::vector<Ticks> ticks(count);
    for (std::size_t symbol = 0; symbol < count; ++symbol) {
        std::vector<NDateTime> times;
        DataSeriesSet::Columns columns;
        for (const std::size_t row : rowsOf[symbol])
            times.push_back(block.times[row]);
        for (std::size_t place = 0; place < layout.series.size(); ++place) {
            std::vector<double>& values =
                columns.emplace_back(layout.series[place], std::vector<double>()).second;
            for (const std::size_t row : rowsOf[symbol])
                values.push_back(block.columns[place][row]);
        }
        if (layout.hasSymbols)
            ticks[symbol].symbol = a_reader.GetSymbols()[symbol];
        ticks[symbol].rows = DataSeriesSet(layout.interval.GetInterval(), layout.interval.GetMultiplicity(),
                                           std::move(times), std::move(columns));
    }
    return ticks;
}

Proof Prove(const Ticks& a_ticks, const RowLayout& a_layout, IntervalAndMultiplicity a_interval,
            std::size_t a_samples, ToolContext& a_context)
{
    const auto start = std::chrono::steady_clock::now();
    const std::set<DSProp> properties = PropertiesOf(a_layout);
    FoldProof fold(a_ticks.rows, properties, a_interval);
    Proof proof;
    proof.rows = a_ticks.rows.GetRecordsCount();
    const std::size_t samples = a_samples > 0                  ? a_samples
                                : proof.rows <= S_everyRowUpTo ? proof.rows
                                                               : S_samples;
    constexpr std::size_t parts = 1000;
    Progress progress(a_context, parts);
    proof.finding = fold.Run(samples, a_samples == 0, [&](std::size_t a_done, std::size_t a_total) {
        progress.Show(parts * a_done / a_total, proof.rows);
    });
    proof.candles = fold.GetCandleCount();
    proof.handOvers = fold.GetHandOverCount();
    proof.wholeHistories = fold.FoldsWholeHistories();
    proof.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return proof;
}

void RunProve(const ProveOptions& a_options, ToolContext& a_context)
{
    const auto source = OpenInput(a_options.input, a_context);
    RowReader reader(*source, a_options.read, ReadNotes(a_context).HooksFor(*source));
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
            const Proof proof = Prove(ticks, layout, interval, a_options.samples, a_context);
            if (proof.finding)
                a_context.exitCode = EExitDifferent;
            writer.Write(ticks, interval, proof);
        }
    writer.Finish();
}

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
    command.SetFooter(
        "Folds the ticks in one go, row by row as live rows come, and with live rows taking over "
        "from a history and from a\n"
        "synchronization at chosen rows, and compares the candles bit for bit: times with their "
        "counters, and every column.\n"
        "Prints `identical` with what was compared, or the first difference with the rule behind "
        "it, and ends with 5 then.\n\n"
        "Examples:\n"
        "  kalvento prove trades.csv --interval 5min\n"
        "  kalvento prove trades.csv -i 1min -i 1h -i 1d --samples 5000\n"
        "  kalvento prove stocks.csv -i 1min --symbol-column symbol --format jsonl\n\n" +
        ExitCodesHelp());
    command.OnRun([options, &a_context] { RunProve(*options, a_context); });
}

} // namespace kalvento::tool
