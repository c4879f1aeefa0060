#include "aggregation/AggrWindowsFactory.h"
#include "kalvento/AddReadOptions.h"
#include "kalvento/Commands.h"
#include "kalvento/OpenInput.h"
#include "kalvento/OptionValues.h"
#include "kalvento/OutputTarget.h"
#include "kalvento/ReadNotes.h"
#include "kalvento/RowFolding.h"
#include "kalvento/TextForms.h"
#include "kalvento/Tool.h"
#include "kalvento/WordFault.h"
#include "series/Series.h"
#include "text_rows/IntervalNotation.h"
#include "text_rows/RowReader.h"
#include "text_rows/SeriesNames.h"
#include "text_rows/TimeText.h"

#include <boost/json.hpp>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kalvento::tool {

namespace {

constexpr std::size_t S_rowsAtOnce = 65536;
constexpr std::int64_t S_daySeconds = 86400;

struct ExplainOptions {
    InputOptions read;
    std::string input;
    IntervalAndMultiplicity interval;
    std::string at;
    std::string symbol;
    std::optional<std::int64_t> day; // of a time of day alone, since 1970-01-01
    std::size_t rows = 20;
    bool json = false;
};

/// Rows of one instrument with the lines that they come from.
struct Rows {
    RowBlock block;
    std::vector<std::uint64_t> lines; // from 1; rows of a block count as well
    std::vector<NDateTime> written;   // their own times, where rows were raised
    std::vector<LineFate> others;     // lines that gave no row
    bool fromBlock = false;
};

/// Rows from `begin` to before `end` made one candle.
struct Span {
    std::size_t begin = 0;
    std::size_t end = 0;
};

NDateTime TimeOf(std::int64_t a_seconds)
{
    const std::int64_t ofDay = (a_seconds % S_daySeconds + S_daySeconds) % S_daySeconds;
    const std::chrono::year_month_day date{
        std::chrono::sys_days(std::chrono::days((a_seconds - ofDay) / S_daySeconds))};
    return {static_cast<unsigned long>(static_cast<int>(date.year())),
            static_cast<unsigned int>(date.month()),
            static_cast<unsigned int>(date.day()),
            static_cast<unsigned long>(ofDay / 3600),
            static_cast<unsigned long>(ofDay / 60 % 60),
            static_cast<unsigned long>(ofDay % 60),
            0};
}

NDateTime AtClock(const NDateTime& a_day, const NDateTime& a_clock)
{
    return {a_day.GetYear(),
            a_day.GetMonth(),
            a_day.GetDay(),
            a_clock.GetHour(),
            a_clock.GetMinute(),
            a_clock.GetSecond(),
            0};
}

/// Reads the rows of the symbol asked for, and what became of the lines that gave none.
Rows ReadRows(RowReader& a_reader, const std::string& a_symbol)
{
    Rows all;
    a_reader.WatchLines([&all](const LineFate& a_fate) {
        if (a_fate.fate > LineFate::EFateRaised) {
            all.others.push_back(a_fate);
            return;
        }
        all.lines.push_back(a_fate.line);
        all.written.push_back(a_fate.written);
    });
    while (a_reader.Read(all.block, S_rowsAtOnce, all.block.rows)) {
    }
    // A block has no lines; rows before --from count, for that is where they lie in it.
    all.fromBlock = all.lines.empty() && all.block.rows > 0;
    for (std::size_t row = all.lines.size(); row < all.block.rows; ++row) {
        all.lines.push_back(a_reader.GetCounts().outside + row + 1);
        all.written.push_back(all.block.times[row]);
    }
    if (!a_reader.GetLayout().hasSymbols)
        return all;

    const std::vector<std::string>& symbols = a_reader.GetSymbols();
    const auto found = std::find(symbols.begin(), symbols.end(), a_symbol);
    if (found == symbols.end()) {
        std::string names;
        for (std::size_t place = 0; place < std::min<std::size_t>(symbols.size(), 20); ++place)
            names += (place > 0 ? ", " : "") + symbols[place];
        throw ToolError(EExitUsage, (a_symbol.empty() ? std::string("--symbol is missing")
                                                      : "--symbol " + a_symbol + " is none of the file's") +
                                        "; expected one of " + names + (symbols.size() > 20 ? ", ..." : ""));
    }
    const auto symbol = static_cast<std::uint32_t>(found - symbols.begin());
    std::size_t kept = 0;
    for (std::size_t row = 0; row < all.block.rows; ++row) {
        if (all.block.symbols[row] != symbol)
            continue;
        all.block.times[kept] = all.block.times[row];
        for (std::vector<double>& column : all.block.columns)
            column[kept] = column[row];
        all.lines[kept] = all.lines[row];
        all.written[kept] = all.written[row];
        ++kept;
    }
    all.block.rows = kept;
    std::erase_if(all.others, [symbol](const LineFate& a_fate) {
        return a_fate.fate != LineFate::EFateBad && a_fate.symbol != symbol;
    });
    return all;
}

/// The windows of the interval asked for over the rows, and the one that a moment lies in.
class Windows {
public:
    Windows(const Rows& a_rows, IntervalAndMultiplicity a_interval)
        : m_rows(a_rows), m_ticks(a_interval.IsTick()), m_window(Make(a_interval))
    {
        // Rows come in order, so the engine asks nothing else than this to begin a candle.
        for (std::size_t row = 0; row < a_rows.block.rows; ++row) {
            if (!m_window->IsInCurrentWindow(a_rows.block.times[row]))
                m_candles.push_back({row, row});
            m_candles.back().end = row + 1;
        }
    }

    const std::vector<Span>& GetCandles() const { return m_candles; }
    bool AreTicks() const { return m_ticks; }
    const NDateTime& TimeOfRow(std::size_t a_row) const { return m_rows.block.times[a_row]; }

    /// Not for ticks.
    NDateTime BeginOf(const NDateTime& a_time) const
    {
        NDateTime begin;
        m_window->GetWindowLimits(a_time, &begin, nullptr);
        return begin;
    }

    /// The window's number as its class counts them: of the day, of the year, or of the years.
    int NumberOf(const NDateTime& a_time) const { return m_window->GetWindowNumber(a_time); }
    NDateTime BorderOf(const NDateTime& a_begin, int a_number) const
    {
        return m_window->GetBorderOfWindowTime(a_begin, a_number);
    }

    /// How many candles of the same day lie before; what counts candles of ticks.
    std::size_t PlaceInDay(std::size_t a_candle) const
    {
        std::size_t place = 0;
        while (place < a_candle &&
               TimeOfRow(m_candles[a_candle - place - 1].begin).SameDay(TimeOfRow(m_candles[a_candle].begin)))
            ++place;
        return place;
    }

    std::optional<std::size_t> Find(const NDateTime& a_at) const
    {
        if (m_ticks) {
            for (std::size_t candle = 0; candle < m_candles.size(); ++candle)
                if (!IsSecondBefore(a_at, TimeOfRow(m_candles[candle].begin)) &&
                    !IsSecondBefore(TimeOfRow(m_candles[candle].end - 1), a_at))
                    return candle;
            return std::nullopt;
        }
        const NDateTime begin = BeginOf(a_at);
        // From the first row not before the window on; a candle may hold rows of more than one (ExplainLines says when).
        const auto* first = m_rows.block.times.data();
        const auto* row = std::partition_point(first, first + m_rows.block.rows,
                                               [&](const NDateTime& a_time) { return a_time < begin; });
        if (row == first + m_rows.block.rows || BeginOf(*row) != begin)
            return std::nullopt;
        const auto place = static_cast<std::size_t>(row - first);
        const auto behind =
            std::partition_point(m_candles.begin(), m_candles.end(),
                                 [place](const Span& a_candle) { return a_candle.begin <= place; });
        return static_cast<std::size_t>(behind - m_candles.begin()) - 1;
    }

    /// Whether a time lies in the window of a_at.
    bool IsInWindow(const NDateTime& a_time, const NDateTime& a_at) const
    {
        return !m_ticks && BeginOf(a_time) == BeginOf(a_at);
    }

    static bool IsSecondBefore(const NDateTime& a_left, const NDateTime& a_right)
    {
        return std::pair(a_left.GetAbsoluteDay(), a_left.GetAbsoluteTime()) <
               std::pair(a_right.GetAbsoluteDay(), a_right.GetAbsoluteTime());
    }

private:
    static std::unique_ptr<AggrBase> Make(IntervalAndMultiplicity a_interval)
    {
        if (a_interval.GetMultiplicity() > std::numeric_limits<unsigned short>::max())
            throw ToolError(EExitUsage, "at most 65535 ticks make a candle");
        return AggrWindowsFactory::GetAggrWindowClass(
            a_interval.GetInterval(), static_cast<unsigned short>(a_interval.GetMultiplicity()),
            ELastRecordTime);
    }

    const Rows& m_rows;
    bool m_ticks;
    std::unique_ptr<AggrBase> m_window;
    std::vector<Span> m_candles;
};

/// One value of a candle with where it comes from.
struct Origin {
    std::string name;
    double value = 0.0;
    std::optional<std::size_t> row; // the row that gave it; empty for sums
    std::string how;                // where no row alone gave it
};

/// Everything that is told about one candle.
struct Explanation {
    NDateTime at;
    std::size_t candle = 0;
    Span span;
    std::vector<Origin> origins;
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
          m_reader(*m_source, a_options.read, ReadNotes(a_context).HooksFor(*m_source)),
          m_layout(m_reader.GetLayout()),
          m_folder(FolderOf(m_layout, a_options.interval, ELastRecordTime))
    {}

    void Run();

private:
    std::vector<NDateTime> Moments() const;
    void ExplainValues(Explanation& a_explanation);
    Origin OriginOf(ESeriesId a_series, double a_value, const Span& a_span) const;
    EAggrType FoldOf(ESeriesId a_series) const;
    void ExplainLines(Explanation& a_explanation) const;
    std::string WhyNoCandle(const NDateTime& a_at) const;
    std::string Place(std::size_t a_row) const;
    std::string CandleText(std::size_t a_candle) const;
    std::string WindowText(const Explanation& a_explanation) const;
    std::string Text(const Explanation& a_explanation) const;
    std::string Json(const Explanation& a_explanation) const;
    std::string RowTable(const Span& a_span) const;
    std::string Title() const;
    const std::vector<double>* Column(ESeriesId a_series) const;
    const NDateTime& TimeOfRow(std::size_t a_row) const { return m_rows.block.times[a_row]; }

    const ExplainOptions& m_options;
    ToolContext& m_context;
    std::unique_ptr<ByteSource> m_source;
    RowReader m_reader;
    const RowLayout& m_layout;
    PieceFolder m_folder;
    Rows m_rows;
    std::unique_ptr<Windows> m_windows;
};

std::string ExplainRun::Title() const
{
    return m_source->GetName() + (m_options.symbol.empty() ? "" : ", " + m_options.symbol) + ", " +
           FormatInterval(m_options.interval);
}

std::string ExplainRun::Place(std::size_t a_row) const
{
    return (m_rows.fromBlock ? "row " : "line ") + std::to_string(m_rows.lines[a_row]) + ", " +
           ShownTimeWithCounter(TimeOfRow(a_row));
}

std::string ExplainRun::CandleText(std::size_t a_candle) const
{
    const NDateTime& first = TimeOfRow(m_windows->GetCandles()[a_candle].begin);
    return FormatTime(m_windows->AreTicks() ? first : m_windows->BeginOf(first));
}

const std::vector<double>* ExplainRun::Column(ESeriesId a_series) const
{
    const auto found = std::find(m_layout.series.begin(), m_layout.series.end(), a_series);
    return found == m_layout.series.end()
               ? nullptr
               : &m_rows.block.columns[static_cast<std::size_t>(found - m_layout.series.begin())];
}

// The moments that --at may mean, in the order in which they are tried.
std::vector<NDateTime> ExplainRun::Moments() const
{
    if (const auto clock = ParseClockText(m_options.at)) {
        const NDateTime time = TimeOf(clock->seconds);
        if (m_options.day)
            return {TimeOf(*m_options.day * S_daySeconds + clock->seconds)};
        std::vector<NDateTime> moments;
        for (std::size_t row = 0; row < m_rows.block.rows; ++row)
            if (row == 0 || !TimeOfRow(row).SameDay(TimeOfRow(row - 1)))
                moments.push_back(AtClock(TimeOfRow(row), time));
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
    return {TimeOf(whole->seconds)};
}

void ExplainRun::Run()
{
    if (!m_layout.hasSymbols && !m_options.symbol.empty())
        throw ToolError(EExitUsage, "--symbol needs --symbol-column");
    m_rows = ReadRows(m_reader, m_options.symbol);
    m_windows = std::make_unique<Windows>(m_rows, m_options.interval);

    OutputTarget target("", m_context);
    const std::vector<NDateTime> moments = Moments();
    for (const NDateTime& at : moments) {
        const auto candle = m_windows->Find(at);
        if (!candle)
            continue;
        Explanation explanation{at, *candle, m_windows->GetCandles()[*candle], {}, {}, {}};
        if (moments.size() > 1)
            explanation.notes.push_back(FormatTime(at, true) + " is the first of " +
                                        std::to_string(moments.size()) +
                                        " days that has a candle then; --day gives another");
        ExplainValues(explanation);
        ExplainLines(explanation);
        target.Write(m_options.json ? Json(explanation) : Text(explanation));
        target.Commit();
        return;
    }
    target.Write(WhyNoCandle(moments.empty() ? NDateTime() : moments.front()));
    target.Commit();
    m_context.exitCode = EExitDifferent;
}

EAggrType ExplainRun::FoldOf(ESeriesId a_series) const
{
    const bool ofCandle = a_series == IntervalOpen || a_series == IntervalMax || a_series == IntervalMin;
    const auto found = std::find(m_layout.series.begin(), m_layout.series.end(), ofCandle ? Price : a_series);
    return m_layout.folds[static_cast<std::size_t>(found - m_layout.series.begin())];
}

Origin ExplainRun::OriginOf(ESeriesId a_series, double a_value, const Span& a_span) const
{
    Origin origin{ColumnName(a_series, !m_options.interval.IsSingleTick()), a_value, a_span.end - 1, {}};
    const EAggrType type = FoldOf(a_series);
    if (type == EAggrTypeOhlcSum || type == EAggrTypeSum) {
        origin.row.reset();
        const std::size_t count = a_span.end - a_span.begin;
        origin.how = "the sum of " + ShownCount(count) + (count == 1 ? " row" : " rows");
    } else if (type == EAggrTypeOhlc && a_series == IntervalOpen) {
        origin.row = a_span.begin;
    } else if (type == EAggrTypeOhlc && a_series != Price) {
        const std::vector<double>* column = Column(a_series);
        column = column != nullptr ? column : Column(Price);
        const auto begin = column->begin() + static_cast<std::ptrdiff_t>(a_span.begin);
        const auto end = column->begin() + static_cast<std::ptrdiff_t>(a_span.end);
        const auto found = std::find(begin, end, a_value);
        // A value that isn't a number equals none, not even itself.
        origin.row =
            found == end ? std::nullopt : std::optional(static_cast<std::size_t>(found - column->begin()));
        origin.how = found == end ? "of no single row" : "";
    }
    return origin;
}

// The values come from the engine; where they come from is looked up in the rows.
void ExplainRun::ExplainValues(Explanation& a_explanation)
{
    const Span& span = a_explanation.span;
    const auto begin = static_cast<std::ptrdiff_t>(span.begin);
    const auto end = static_cast<std::ptrdiff_t>(span.end);
    RowBlock rows;
    rows.rows = span.end - span.begin;
    rows.times.assign(m_rows.block.times.begin() + begin, m_rows.block.times.begin() + end);
    for (const std::vector<double>& column : m_rows.block.columns)
        rows.columns.emplace_back(column.begin() + begin, column.begin() + end);
    RowBlock candles;
    m_folder.Fold(rows, true, candles);

    const std::vector<ESeriesId>& series = m_folder.GetSeries();
    for (const std::size_t place : VeloTools::Series::ReadingOrder(series))
        a_explanation.origins.push_back(OriginOf(series[place], candles.columns[place].front(), span));
}

void ExplainRun::ExplainLines(Explanation& a_explanation) const
{
    const Span& span = a_explanation.span;
    const std::uint64_t before = span.begin > 0 ? m_rows.lines[span.begin - 1] : 0;
    const std::uint64_t behind =
        span.end < m_rows.lines.size() ? m_rows.lines[span.end] : std::numeric_limits<std::uint64_t>::max();
    for (const LineFate& line : m_rows.others) {
        const bool isBetween = line.line > before && line.line < behind;
        const std::string place = "line " + std::to_string(line.line);
        const bool isOfWindow =
            m_windows->AreTicks() ? isBetween : m_windows->IsInWindow(line.written, a_explanation.at);
        if (line.fate == LineFate::EFateBad && isBetween)
            a_explanation.refused.push_back(place + ": " + WordFault(*line.fault));
        else if (line.fate == LineFate::EFateDropped && isOfWindow)
            a_explanation.refused.push_back(place + ": its time " + FormatTime(line.written) +
                                            " isn't later than the one before (--order drop)");
        else if (line.fate == LineFate::EFateOutside && isOfWindow)
            a_explanation.refused.push_back(place + ": its time " + FormatTime(line.written) +
                                            " lies outside of --from and --to");
    }
    for (std::size_t row = 0; row < m_rows.block.rows; ++row) {
        if (!Windows::IsSecondBefore(m_rows.written[row], TimeOfRow(row)))
            continue;
        const bool isHere = row >= span.begin && row < span.end;
        const std::string text =
            "line " + std::to_string(m_rows.lines[row]) + ": its time " + FormatTime(m_rows.written[row]) +
            " falls behind the row before; it counts as " + ShownTimeWithCounter(TimeOfRow(row));
        if (isHere)
            a_explanation.notes.push_back(text);
        else if (m_windows->IsInWindow(m_rows.written[row], a_explanation.at))
            a_explanation.refused.push_back(text + ", in another candle");
    }
    // A window is known by its number and the day of the year alone, as in every chart that was stored so far.
    if (!m_windows->AreTicks() &&
        m_windows->BeginOf(TimeOfRow(span.begin)) != m_windows->BeginOf(TimeOfRow(span.end - 1)))
        a_explanation.notes.push_back("the candle holds rows of " + FormatTime(TimeOfRow(span.begin), true) +
                                      " and of " + FormatTime(TimeOfRow(span.end - 1), true) +
                                      ": with no row between them, windows of one number on the same "
                                      "day of the year aren't told apart");
}

std::string ExplainRun::WhyNoCandle(const NDateTime& a_at) const
{
    const std::vector<Span>& candles = m_windows->GetCandles();
    const auto behind = static_cast<std::size_t>(
        std::partition_point(candles.begin(), candles.end(),
                             [&](const Span& a_span) { return TimeOfRow(a_span.begin) < a_at; }) -
        candles.begin());
    const std::string before = behind > 0 ? CandleText(behind - 1) : "";
    const std::string after = behind < candles.size() ? CandleText(behind) : "";
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

std::string ExplainRun::WindowText(const Explanation& a_explanation) const
{
    if (m_windows->AreTicks())
        return "number " + std::to_string(m_windows->PlaceInDay(a_explanation.candle)) +
               " of the day (from 0), " + ShownCount(m_options.interval.GetMultiplicity()) +
               " ticks at most, counted anew each day";
    const NDateTime begin = m_windows->BeginOf(a_explanation.at);
    const int number = m_windows->NumberOf(begin);
    std::string text = "number " + std::to_string(number);
    if (m_options.interval.GetInterval() < EIntervalDay)
        text += " of the day";
    else
        text += m_options.interval.GetInterval() < EIntervalYear ? " of the year" : " of the years";
    return text + " (from 0), begin " + FormatTime(begin) + ", border " +
           FormatTime(m_windows->BorderOf(begin, number));
}

std::string ExplainRun::RowTable(const Span& a_span) const
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
    for (std::size_t place = 0; place < count; ++place) {
        if (place == head && count > head + tail) {
            table.Add({"...", ShownCount(count - head - tail) + " more"});
            place = count - tail;
        }
        if (place >= count)
            break;
        const std::size_t row = a_span.begin + place;
        std::vector<std::string> cells{std::to_string(m_rows.lines[row]),
                                       ShownTimeWithCounter(TimeOfRow(row))};
        for (const std::vector<double>& column : m_rows.block.columns)
            cells.push_back(FormatNumber(column[row]));
        table.Add(std::move(cells));
    }
    return table.ToText(2);
}

std::string ExplainRun::Text(const Explanation& a_explanation) const
{
    const Span& span = a_explanation.span;
    std::string text = Title() + ": the candle of " + CandleText(a_explanation.candle) + '\n';
    text += "  window: " + WindowText(a_explanation) + '\n';
    text += "  rows:   " + ShownCount(span.end - span.begin) + ", from " + Place(span.begin) + " to " +
            Place(span.end - 1) + "\n\n";
    TextTable values({"value", "", "from"},
                     {TextTable::EColumnText, TextTable::EColumnNumber, TextTable::EColumnText});
    for (const Origin& origin : a_explanation.origins)
        values.Add({origin.name, FormatNumber(origin.value), origin.row ? Place(*origin.row) : origin.how});
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
    list("refused", a_explanation.refused);
    list("notes", a_explanation.notes);
    return text;
}

std::string ExplainRun::Json(const Explanation& a_explanation) const
{
    const Span& span = a_explanation.span;
    const auto rowObject = [&](std::size_t a_row) {
        return boost::json::object{{m_rows.fromBlock ? "row" : "line", m_rows.lines[a_row]},
                                   {"time", ShownTimeWithCounter(TimeOfRow(a_row))}};
    };
    boost::json::object object{{"file", m_source->GetName()}};
    if (!m_options.symbol.empty())
        object["symbol"] = m_options.symbol;
    object["interval"] = FormatInterval(m_options.interval);
    object["candle"] = CandleText(a_explanation.candle);
    boost::json::object window;
    if (m_windows->AreTicks()) {
        window["number"] = m_windows->PlaceInDay(a_explanation.candle);
    } else {
        const NDateTime begin = m_windows->BeginOf(a_explanation.at);
        window["begin"] = FormatTime(begin);
        const int number = m_windows->NumberOf(begin);
        window["number"] = number;
        window["border"] = FormatTime(m_windows->BorderOf(begin, number));
    }
    object["window"] = std::move(window);
    object["row_count"] = span.end - span.begin;
    object["first_row"] = rowObject(span.begin);
    object["last_row"] = rowObject(span.end - 1);
    boost::json::object values;
    for (const Origin& origin : a_explanation.origins) {
        boost::json::object value = origin.row ? rowObject(*origin.row) : boost::json::object();
        if (!origin.row)
            value["how"] = origin.how;
        value["value"] =
            std::isfinite(origin.value) ? boost::json::value(origin.value) : boost::json::value();
        values[origin.name] = std::move(value);
    }
    object["values"] = std::move(values);
    boost::json::array rows;
    for (std::size_t row = span.begin; row < std::min(span.end, span.begin + m_options.rows); ++row)
        rows.push_back(rowObject(row));
    object["rows"] = std::move(rows);
    object["refused"] = boost::json::value_from(a_explanation.refused);
    object["notes"] = boost::json::value_from(a_explanation.notes);
    return boost::json::serialize(object) + '\n';
}

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
    command.AddOption("--symbol", options->symbol, "The instrument (with --symbol-column)").TypeName("NAME");
    command.AddOption("--rows", options->rows, "How many rows are listed at most (default: 20)")
        .TypeName("N");
    command
        .AddChoice<bool>("-f,--format", options->json, {{"text", false}, {"json", true}},
                         "text, or json: one object (default: text)")
        .TypeName("FORMAT");
    // Lines that can't be read are part of the answer, not its end.
    options->read.badLines = EBadLinesReject;
    AddReadOptions(command, options->read);
    command.SetFooter(
        "Shows the rows of one candle, the row that each value comes from, the window, and the rows "
        "that were refused and why.\n"
        "Lines that can't be read are set aside unless --bad-lines stop is given. Ends with 5 where "
        "no candle is.\n\n"
        "Examples:\n"
        "  kalvento explain trades.csv --interval 5min --at 10:05\n"
        "  kalvento explain trades.csv -i 1h --at \"2024-01-02 10:00\" --rows 100\n"
        "  kalvento explain stocks.csv -i 1min --at 16:00 --symbol-column symbol --symbol TSLA -f "
        "json\n\n" +
        ExitCodesHelp());
    command.OnRun([options, &a_context] { ExplainRun(*options, a_context).Run(); });
}

} // namespace kalvento::tool
