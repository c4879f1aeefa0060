#include "text_rows/TextShape.h"

#include "series/ESeriesId.h"
#include "text_rows/ByteSource.h"
#include "text_rows/IntervalNotation.h"
#include "text_rows/LineBuffer.h"
#include "text_rows/ReadHooks.h"
#include "text_rows/ReadOptions.h"
#include "text_rows/SeriesNames.h"
#include "text_rows/TextFields.h"
#include "text_rows/TimeText.h"
#include "time/TimeParts.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <initializer_list>
#include <limits>
#include <optional>
#include <set>
#include <unordered_map>
#include <utility>

namespace kalvento::rows {

namespace {

constexpr std::size_t S_peekedRows = 2000;

std::string_view ExpectedOf(EColumnKind a_kind)
{
    switch (a_kind) {
    case EWholeTime:
        return "a time such as 2024-08-08 23:54:15.342, 2024-08-08T23:54:15Z, 20240808, 20240808235415 or seconds "
               "since 1970";
    case EDatePart:
        return "a date such as 2024-08-08, 20240808 or 08.08.2024";
    case EClockPart:
        return "a time of day such as 23:54:15, 235415 or 23:54";
    case ESymbol:
        return "a symbol";
    default:
        return "a number such as 1234.5";
    }
}

/// The interval of candles whose times are that many seconds apart.
IntervalAndMultiplicity IntervalOfStep(std::int64_t a_seconds)
{
    constexpr std::array<std::pair<std::int64_t, EInterval>, 7> units = {
        {{365 * TimeParts::S_secondsOfDay, EIntervalYear},
         {28 * TimeParts::S_secondsOfDay, EIntervalMonth},
         {7 * TimeParts::S_secondsOfDay, EIntervalWeek},
         {TimeParts::S_secondsOfDay, EIntervalDay},
         {TimeParts::S_secondsOfHour, EIntervalHour},
         {60, EIntervalMinute},
         {1, EIntervalSecond}}};
    for (const auto& [seconds, interval] : units) {
        // Months and years differ in length; of the shorter units only one that divides evenly is meant.
        const bool uneven = interval == EIntervalMonth || interval == EIntervalYear;
        if (a_seconds < seconds || (!uneven && a_seconds % seconds != 0))
            continue;
        const IntervalAndMultiplicity found(interval, static_cast<unsigned int>(a_seconds / seconds));
        if (found.IsValid())
            return found;
    }
    return {EIntervalSecond, 1};
}

/// What a name on our side of --columns stands for.
struct Role {
    EColumnKind kind = ESkip;
    ESeriesId series = static_cast<ESeriesId>(0);
};

Role RoleOf(const std::string& a_name)
{
    constexpr std::array<std::pair<std::string_view, EColumnKind>, 3> kinds = {
        {{"date", EDatePart}, {"clock", EClockPart}, {"symbol", ESymbol}}};
    for (const auto& [name, kind] : kinds) {
        if (name == a_name)
            return {kind};
    }
    const auto series = SeriesFromName(a_name);
    if (!series)
        RefuseOption(EOptionColumns,
                     Quote(a_name) +
                         " is none of ours; accepted are time, date, clock, symbol, price, volume, open, "
                         "high, low, close and the series keys (kurs, wolumen, lop, kupi, ...)");
    return *series == Time ? Role{EWholeTime} : Role{ESeries, *series};
}

bool IsNamed(const std::string& a_header, std::initializer_list<std::string_view> a_names)
{
    return std::ranges::find(a_names, LowerCase(a_header)) != a_names.end();
}

bool IsDateColumn(const ColumnPlan& a_column)
{
    return IsNamed(a_column.header, {"date", "data", "<date>"});
}

bool IsClockColumn(const ColumnPlan& a_column)
{
    return IsNamed(a_column.header, {"time", "czas", "<time>", "clock"});
}

/// The steps of TextShape::Find.
class ShapeFinder {
public:
    ShapeFinder(LineBuffer& a_lines, const ReadOptions& a_options, const ReadHooks& a_hooks)
        : m_lines(a_lines), m_options(a_options), m_hooks(a_hooks)
    {}
    void ReadShape();
    TextShape TakeShape() { return std::move(m_shape); }

private:
    void FindDelimiter(std::string_view a_line);
    void PlanColumns(const std::vector<Field>& a_header);
    void TakeChosenColumns();
    void PlanTimeColumn(ColumnPlan& a_column);
    void PlanSymbols();
    void FindSymbolColumn();
    [[noreturn]] void FailNoColumn(EReadOption a_option, const std::string& a_header) const;
    std::string InTheHeader() const;
    void PlanByPlaces(std::size_t a_count);
    void AddSeriesColumn(ColumnPlan& a_plan, ESeriesId a_series);
    void TakeSessionCandles();
    void SortSeries();
    void Peek();
    std::optional<WallTime> PeekTime(bool& a_comma) const;
    void PlanInterval(std::int64_t a_smallestStep);

    LineBuffer& m_lines;
    const ReadOptions& m_options;
    const ReadHooks& m_hooks;
    TextShape m_shape;
    std::vector<Field> m_fields;
    std::set<ESeriesId> m_chosen; // series that the options give a column
};

void ShapeFinder::ReadShape()
{
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (m_lines.GetBytes().starts_with(byteOrderMark))
        m_lines.Skip(byteOrderMark.size());
    while (m_lines.HaveLine()) {
        const std::string_view text = m_lines.LineAt(m_lines.GetPlace());
        if (text.find('\0') != std::string_view::npos)
            m_lines.Fail({.found = "found a zero byte",
                          .expected = "lines of text or a binary series block of version 1"});
        if (!text.empty() && text.front() != '#') {
            FindDelimiter(text);
            if (!SplitLine(text, m_shape.delimiter, m_fields))
                m_lines.Fail(
                    {.found = "a quote is left open in the header line", .column = m_fields.back().column});
            if (m_options.header) {
                m_shape.header = text;
                PlanColumns(m_fields);
                m_lines.Advance(LineBuffer::After(text));
            } else {
                PlanByPlaces(m_fields.size());
            }
            SortSeries();
            m_shape.layout.PlanFolds(m_options.folds, m_lines.GetSource().GetName());
            Peek();
            return;
        }
        m_lines.Advance(LineBuffer::After(text));
    }
    m_lines.Fail({.found = "the input is empty", .expected = "a header line such as time,price,volume"});
}

void ShapeFinder::FindDelimiter(std::string_view a_line)
{
    m_shape.delimiter = m_options.delimiter;
    if (m_shape.delimiter != 0)
        return;
    std::size_t most = 0;
    m_shape.delimiter = ',';
    // A semicolon goes before a comma, which may be a decimal sign where there is no header.
    for (const char sign : {';', '\t', ',', '|'}) {
        const auto count = static_cast<std::size_t>(std::count(a_line.begin(), a_line.end(), sign));
        if (count > most) {
            most = count;
            m_shape.delimiter = sign;
        }
        if (count > 0 && sign == ';')
            return;
    }
}

void ShapeFinder::AddSeriesColumn(ColumnPlan& a_plan, ESeriesId a_series)
{
    if (m_shape.Has(a_series))
        m_lines.Fail({.help = EOptionColumns,
                      .found = "two columns mean " + ColumnName(a_series, false) + ", the second is " +
                               Quote(a_plan.header),
                      .value = ColumnName(a_series, false)});
    a_plan.kind = ESeries;
    a_plan.place = m_shape.layout.series.size();
    m_shape.layout.series.push_back(a_series);
}

std::string ShapeFinder::InTheHeader() const
{
    return m_shape.header.empty() ? "" : " in the header " + Quote(m_shape.header);
}

void ShapeFinder::FailNoColumn(EReadOption a_option, const std::string& a_header) const
{
    m_lines.Fail({.wrong = a_option, .found = "there is no column " + Quote(a_header) + InTheHeader()});
}

// What the user said comes first and takes its names away from the rest.
void ShapeFinder::TakeChosenColumns()
{
    for (const auto& [ours, theirs] : m_options.columns) {
        const Role role = RoleOf(ours);
        const auto found =
            std::find_if(m_shape.columns.begin(), m_shape.columns.end(),
                         [&name = theirs](const ColumnPlan& a_plan) { return a_plan.header == name; });
        if (found == m_shape.columns.end())
            FailNoColumn(EOptionColumns, theirs);
        found->kind = role.kind;
        if (role.kind == ESeries)
            AddSeriesColumn(*found, role.series);
        if (const auto series = SeriesFromName(ours))
            m_chosen.insert(*series);
    }
    for (ColumnPlan& column : m_shape.columns) {
        const auto series = SeriesFromName(column.header);
        if (!series || !m_options.pricesFrom.contains(*series))
            continue;
        m_shape.layout.priceMeans = *series;
        AddSeriesColumn(column, Price);
        m_chosen.insert(Price);
        return;
    }
}

void ShapeFinder::FindSymbolColumn()
{
    if (m_options.symbolColumn.empty() && (!m_options.findSymbols || m_shape.Has(ESymbol)))
        return;
    const auto take = [this](const std::string& a_name, bool a_asWritten) {
        const auto found = std::ranges::find_if(m_shape.columns, [&](const ColumnPlan& a_plan) {
            return a_plan.kind == ESkip && (a_asWritten ? a_plan.header : PlainName(a_plan.header)) == a_name;
        });
        if (found == m_shape.columns.end())
            return false;
        found->kind = ESymbol;
        return true;
    };
    if (!m_options.symbolColumn.empty()) {
        if (!take(m_options.symbolColumn, true))
            FailNoColumn(EOptionSymbolColumn, m_options.symbolColumn);
        return;
    }
    // The likeliest first: a file may have a name and an ISIN.
    for (const char* name : {"symbol", "ticker", "instrument", "papier", "walor", "nazwa", "name", "isin"}) {
        if (take(name, false)) {
            m_shape.layout.symbolsFound = true;
            return;
        }
    }
}

void ShapeFinder::PlanSymbols()
{
    m_shape.hasSymbolColumn = m_shape.Has(ESymbol);
    m_shape.layout.hasSymbols = m_shape.hasSymbolColumn && m_options.symbol.empty() && !m_options.oneSymbol;
    if (!m_options.symbol.empty() && !m_shape.hasSymbolColumn)
        m_lines.Fail({.kind = EFaultOptions,
                      .wrong = EOptionSymbol,
                      .help = EOptionSymbolColumn,
                      .found = "there is no column of symbols" + InTheHeader()});
}

void ShapeFinder::PlanTimeColumn(ColumnPlan& a_column)
{
    const auto isSomeColumn = [this](bool (*a_isIt)(const ColumnPlan&)) {
        return std::any_of(m_shape.columns.begin(), m_shape.columns.end(), a_isIt);
    };
    const bool isDate = IsDateColumn(a_column);
    if ((isDate || IsClockColumn(a_column)) && isSomeColumn(IsDateColumn) && isSomeColumn(IsClockColumn))
        a_column.kind = isDate ? EDatePart : EClockPart;
    else if (!m_shape.Has(EWholeTime))
        a_column.kind = EWholeTime;
}

void ShapeFinder::PlanColumns(const std::vector<Field>& a_header)
{
    m_shape.columns.resize(a_header.size());
    for (std::size_t place = 0; place < m_shape.columns.size(); ++place)
        m_shape.columns[place].header = a_header[place].text;
    TakeChosenColumns();
    FindSymbolColumn();
    const bool timeGiven = m_shape.Has(EWholeTime) || m_shape.Has(EDatePart);
    std::string skipped;
    for (ColumnPlan& column : m_shape.columns) {
        if (column.kind != ESkip)
            continue;
        const auto series = SeriesFromName(column.header);
        if (series == Time) {
            if (!timeGiven)
                PlanTimeColumn(column);
        } else if (series && !(m_shape.Has(*series) && m_chosen.contains(*series))) {
            // A series that the user gave to another column stays there.
            AddSeriesColumn(column, *series);
        } else {
            skipped += (skipped.empty() ? "" : ", ") + column.header;
        }
    }
    if (!m_shape.Has(EWholeTime) && !m_shape.Has(EDatePart))
        m_lines.Fail({.help = EOptionColumns,
                      .found = "no column of times" + InTheHeader(),
                      .expected = "a name such as time, date, timestamp or czas",
                      .value = "time"});
    if (m_options.strict && !skipped.empty())
        m_lines.Fail({.help = EOptionStrict, .found = "columns that mean nothing: " + skipped});
    if (!skipped.empty() && m_hooks.passedOver)
        m_hooks.passedOver(skipped);
}

void ShapeFinder::PlanByPlaces(std::size_t a_count)
{
    m_shape.columns.resize(a_count);
    bool timed = false;
    if (m_options.columns.empty())
        RefuseOption(EOptionHeader, "without a header line",
                     "columns with places, such as time=1,price=2,volume=3");
    for (const auto& [ours, theirs] : m_options.columns) {
        const Role role = RoleOf(ours);
        std::size_t place = 0;
        const auto [rest, error] = std::from_chars(theirs.data(), theirs.data() + theirs.size(), place);
        if (error != std::errc() || rest != theirs.data() + theirs.size() || place == 0 || place > a_count)
            RefuseOption(EOptionColumns, "found " + Quote(std::string(ours).append("=").append(theirs)),
                         "a place from 1 to " + std::to_string(a_count) + ", since the input has no header");
        ColumnPlan& column = m_shape.columns[place - 1];
        if (column.kind != ESkip)
            RefuseOption(EOptionColumns, "the place " + theirs + " is given twice");
        column.header = ours;
        column.kind = role.kind;
        timed = timed || role.kind == EWholeTime || role.kind == EDatePart;
        if (role.kind == ESeries)
            AddSeriesColumn(column, role.series);
    }
    if (!timed)
        RefuseOption(EOptionColumns, "needs the place of the time, such as time=1");
}

// A daily file holds the values of the session; where there is no other price they make the candle.
void ShapeFinder::TakeSessionCandles()
{
    constexpr std::array<std::pair<ESeriesId, ESeriesId>, 4> pairs = {
        {{Open, IntervalOpen}, {Max, IntervalMax}, {Min, IntervalMin}, {Close, Price}}};
    for (const auto& [session, candle] : pairs) {
        if (!m_shape.Has(session) || m_shape.Has(candle))
            return;
    }
    for (const auto& [session, candle] : pairs)
        std::replace(m_shape.layout.series.begin(), m_shape.layout.series.end(), session, candle);
}

void ShapeFinder::SortSeries()
{
    TakeSessionCandles();
    const std::vector<ESeriesId> found = m_shape.layout.series;
    std::sort(m_shape.layout.series.begin(), m_shape.layout.series.end());
    if (!m_shape.Has(Price))
        m_lines.Fail({.help = EOptionColumns,
                      .found = "no column of prices" + InTheHeader(),
                      .expected = "a name such as price, close, last or kurs",
                      .value = "price"});
    const int candleColumns =
        int{m_shape.Has(IntervalOpen)} + int{m_shape.Has(IntervalMax)} + int{m_shape.Has(IntervalMin)};
    if (candleColumns != 0 && candleColumns != 3)
        m_lines.Fail({.found = "candles need all of open, high, low and close; found only some of them" +
                               InTheHeader()});
    m_shape.layout.interval = {EIntervalTick, 1};
    for (std::size_t place = 0; place < m_shape.columns.size(); ++place) {
        ColumnPlan& column = m_shape.columns[place];
        if (column.kind == ESeries)
            column.place =
                static_cast<std::size_t>(std::lower_bound(m_shape.layout.series.begin(),
                                                          m_shape.layout.series.end(), found[column.place]) -
                                         m_shape.layout.series.begin());
        column.expected = ExpectedOf(column.kind);
        if (column.kind != ESkip)
            m_shape.columnsNeeded = place + 1;
    }
    PlanSymbols();
}

/// In which direction the times of the first rows run, each symbol for itself, and their smallest step.
class Direction {
public:
    void Add(const std::string& a_symbol, const WallTime& a_time)
    {
        const auto [place, isFirst] = m_last.try_emplace(a_symbol, a_time);
        if (isFirst)
            return;
        const WallTime before = std::exchange(place->second, a_time);
        const std::int64_t step = a_time.seconds - before.seconds;
        if (step > 0)
            m_smallestRise = std::min(m_smallestRise, step);
        else if (step < 0)
            m_smallestFall = std::min(m_smallestFall, -step);
        m_rises += step > 0 || (step == 0 && a_time.nanoseconds > before.nanoseconds) ? 1 : 0;
        m_falls += step < 0 || (step == 0 && a_time.nanoseconds < before.nanoseconds) ? 1 : 0;
    }
    /// A few rows may be out of place.
    bool IsNewestFirst() const { return m_falls > 100 * m_rises; }
    /// In seconds; the greatest number where there is none.
    std::int64_t GetSmallestStep() const { return IsNewestFirst() ? m_smallestFall : m_smallestRise; }

private:
    std::unordered_map<std::string, WallTime> m_last;
    std::size_t m_rises = 0;
    std::size_t m_falls = 0;
    std::int64_t m_smallestRise = std::numeric_limits<std::int64_t>::max();
    std::int64_t m_smallestFall = std::numeric_limits<std::int64_t>::max();
};

// The time of the row in m_fields, as far as its columns show it; the decimal sign is found on the way.
std::optional<WallTime> ShapeFinder::PeekTime(bool& a_comma) const
{
    WallTime time;
    bool timed = true;
    const auto add = [&](const std::optional<WallTime>& a_part) {
        timed = timed && a_part;
        time.seconds += a_part.value_or(WallTime()).seconds;
        time.nanoseconds += a_part.value_or(WallTime()).nanoseconds;
    };
    for (std::size_t column = 0; column < m_shape.columnsNeeded; ++column) {
        const std::string& field = m_fields[column].text;
        switch (m_shape.columns[column].kind) {
        case ESeries:
            if (field.find('.') == std::string::npos)
                a_comma = a_comma || std::count(field.begin(), field.end(), ',') == 1;
            break;
        case EDatePart: {
            const auto days = ParseDateText(field);
            add(days ? std::optional(WallTime{*days * TimeParts::S_secondsOfDay}) : std::nullopt);
            break;
        }
        case EClockPart:
            add(ParseClockText(field));
            break;
        case EWholeTime:
            add(m_options.timeFormat.empty() ? ParseTimeText(field)
                                             : ParseTimeByFormat(field, m_options.timeFormat));
            break;
        default:
            break;
        }
    }
    return timed ? std::optional(time) : std::nullopt;
}

// Looks through the first rows without taking them: the decimal sign, the order of the rows and the step of candles
// show there.
void ShapeFinder::Peek()
{
    bool comma = false;
    Direction direction;
    const auto symbolColumn = static_cast<std::size_t>(
        std::ranges::find(m_shape.columns, ESymbol, &ColumnPlan::kind) - m_shape.columns.begin());
    m_lines.HaveLine();
    const char* place = m_lines.GetPlace();
    for (std::size_t row = 0; row < S_peekedRows && place < m_lines.GetEnd(); ++row) {
        const std::string_view text = m_lines.LineAt(place);
        place = LineBuffer::After(text);
        if (text.empty() || text.front() == '#' || !SplitLine(text, m_shape.delimiter, m_fields) ||
            m_fields.size() < m_shape.columnsNeeded)
            continue;
        const auto time = PeekTime(comma);
        if (!time)
            continue;
        m_shape.layout.fractionDigits =
            std::max(m_shape.layout.fractionDigits, FractionDigits(time->nanoseconds));
        direction.Add(m_shape.hasSymbolColumn ? m_fields[symbolColumn].text : std::string(), *time);
    }
    m_shape.decimal = m_options.decimal;
    if (m_shape.decimal == 0)
        m_shape.decimal = comma && m_shape.delimiter != ',' ? ',' : '.';
    if (m_shape.decimal == m_shape.delimiter)
        throw RowsFault({.kind = EFaultOptions,
                         .help = EOptionDelimiter,
                         .found = "the comma can't be both decimal sign and delimiter"});
    m_shape.newestFirst = direction.IsNewestFirst();
    PlanInterval(direction.GetSmallestStep());
}

void ShapeFinder::PlanInterval(std::int64_t a_smallestStep)
{
    const bool candles = m_shape.Has(IntervalOpen);
    if (!m_options.inputInterval.empty()) {
        std::string reason;
        const auto given = ParseInterval(m_options.inputInterval, &reason);
        if (!given)
            RefuseOption(EOptionInputInterval, reason);
        if (candles == given->IsSingleTick())
            throw RowsFault(
                {.kind = EFaultOptions,
                 .wrong = EOptionInputInterval,
                 .help = EOptionInputInterval,
                 .found = candles ? "holds candles" : "holds ticks",
                 .expected = candles ? "an interval of candles such as 1min" : "an interval of tick",
                 .value = m_options.inputInterval,
                 .file = m_lines.GetSource().GetName()});
        m_shape.layout.interval = *given;
    } else if (candles) {
        m_shape.layout.interval = a_smallestStep == std::numeric_limits<std::int64_t>::max()
                                      ? IntervalAndMultiplicity(EIntervalSecond, 1)
                                      : IntervalOfStep(a_smallestStep);
    }
    if (!m_options.stampedWithEnd)
        return;
    m_shape.stampShift = TimeParts::SecondsOfUnit(m_shape.layout.interval.GetInterval()) *
                         m_shape.layout.interval.GetMultiplicity();
    if (m_shape.stampShift == 0)
        RefuseOption(EOptionStampedWithEnd, "needs candles of seconds, minutes or hours, found " +
                                                FormatInterval(m_shape.layout.interval));
}

} // namespace

bool TextShape::Has(EColumnKind a_kind) const
{
    return std::any_of(columns.begin(), columns.end(),
                       [a_kind](const ColumnPlan& a_plan) { return a_plan.kind == a_kind; });
}

TextShape TextShape::Find(LineBuffer& a_lines, const ReadOptions& a_options, const ReadHooks& a_hooks)
{
    ShapeFinder finder(a_lines, a_options, a_hooks);
    finder.ReadShape();
    return finder.TakeShape();
}

} // namespace kalvento::rows
