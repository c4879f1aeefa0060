#include "rows/RowReader.h"

#include "platform/TimeZone.h"
#include "rows/ByteSource.h"
#include "rows/IntervalNotation.h"
#include "rows/NumberText.h"
#include "rows/OutputTarget.h"
#include "rows/SeriesNames.h"
#include "rows/TimeText.h"
#include "series/DataSeriesSet.h"
#include "series/ESeriesId.h"
#include "series/Series.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstring>
#include <istream>
#include <limits>
#include <optional>
#include <ostream>
#include <streambuf>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace kalvento::tool {

namespace {

using kalvento::internal::NDateTimeWords;

constexpr std::size_t S_readSize = std::size_t{1} << 18U;
constexpr std::size_t S_longestLine = std::size_t{1} << 24U;
// Loads of eight bytes at the last sign of the buffer stay inside.
constexpr std::size_t S_padding = 64;
constexpr std::size_t S_peekedRows = 2000;
constexpr std::int64_t S_daySeconds = 86400;
// Day number 0, 1899-12-30, counted from 1970-01-01.
constexpr std::int64_t S_oleDayZero = -25569;
// The years that a time of the library can hold and a calendar can show: 100 to 4095.
constexpr std::int64_t S_firstSecond = -59'011'459'200;
constexpr std::int64_t S_endSecond = 67'090'118'400;
// A counter step is 1e-10 of a day in the day number, so 50,000 of them come to 0.43 of a second: the next second is more
// than half a second away, and both `<` and the engine's test for late rows still tell the two apart.
constexpr std::uint32_t S_greatestCounter = 50000;

/// Length of a line of the buffer with what ends it.
std::size_t LineLength(std::string_view a_line)
{
    return a_line.size() + (a_line.data()[a_line.size()] == '\r' ? 2 : 1);
}

enum EColumnKind : std::uint8_t { ESkip, EWholeTime, EDatePart, EClockPart, ESymbol, ESeries };

/// What one column of the file is to us.
struct ColumnPlan {
    EColumnKind kind = ESkip;
    std::size_t place = 0; // of the series in the layout
    std::string header;
    std::string_view expected;
};

std::string_view ExpectedOf(EColumnKind a_kind)
{
    switch (a_kind) {
    case EWholeTime:
        return "a time such as 2024-08-08 23:54:15.342, 2024-08-08T23:54:15Z, 20240808, 20240808235415 or seconds "
               "since 1970 (--time-format for others)";
    case EDatePart:
        return "a date such as 2024-08-08, 20240808 or 08.08.2024 (--time-format for others)";
    case EClockPart:
        return "a time of day such as 23:54:15, 235415 or 23:54";
    case ESymbol:
        return "a symbol";
    default:
        return "a number such as 1234.5";
    }
}

std::string Quote(std::string_view a_text)
{
    constexpr std::size_t limit = 60;
    std::string quoted = "\"";
    for (const char sign : a_text.substr(0, limit)) {
        const auto byte = static_cast<unsigned char>(sign);
        if (byte < 0x20 || byte == 0x7F) {
            constexpr std::string_view digits = "0123456789abcdef";
            quoted += "\\x";
            quoted += digits[byte >> 4U];
            quoted += digits[byte & 0xFU];
        } else {
            quoted += sign;
        }
    }
    return quoted + (a_text.size() > limit ? "...\"" : "\"");
}

/// A field of a line, quotes taken off, with its place for messages.
struct Field {
    std::string text;
    std::size_t column = 1; // byte in the line, from 1
};

/// Splits one line. False where a quote is left open.
bool SplitLine(std::string_view a_line, char a_delimiter, std::vector<Field>& a_fields)
{
    a_fields.clear();
    std::size_t place = 0;
    for (;;) {
        Field field;
        field.column = place + 1;
        while (a_delimiter != ' ' && place < a_line.size() && a_line[place] == ' ')
            ++place;
        if (place < a_line.size() && a_line[place] == '"') {
            for (++place;; ++place) {
                if (place == a_line.size()) {
                    a_fields.push_back(std::move(field));
                    return false;
                }
                if (a_line[place] == '"') {
                    if (place + 1 == a_line.size() || a_line[place + 1] != '"')
                        break;
                    ++place;
                }
                field.text += a_line[place];
            }
            ++place;
        }
        const std::size_t end = std::min(a_line.find(a_delimiter, place), a_line.size());
        field.text += a_line.substr(place, end - place);
        while (a_delimiter != ' ' && field.text.ends_with(' '))
            field.text.pop_back();
        a_fields.push_back(std::move(field));
        if (end == a_line.size())
            return true;
        place = end + 1;
    }
}

/// Dates of the library from whole seconds, the day's parts worked out once a day.
class TimeMaker {
public:
    // a_seconds: since 1970-01-01 on the clock that the time is to show.
    NDateTime Make(std::int64_t a_seconds)
    {
        if (a_seconds < m_dayBegin || a_seconds >= m_dayBegin + S_daySeconds)
            TakeDay(a_seconds);
        const auto ofDay = static_cast<std::uint32_t>(a_seconds - m_dayBegin);
        const std::uint32_t hour = ofDay / 3600;
        const std::uint32_t minute = ofDay / 60 % 60;
        const std::uint32_t second = ofDay % 60;
        const double fraction = static_cast<double>(ofDay) / 86400.0;
        // Below zero the fraction of an OLE date still counts upward within its day.
        const double number = m_oleDay < 0 ? m_oleDay - fraction : m_oleDay + fraction;
        return NDateTimeWords::Make(number, COleDateTime::valid, m_calendar | hour << 21U | minute << 26U,
                                    m_dayOfYear | second);
    }

    // The counter's next step, as NDateTime::ShiftMilliSec gives it.
    static NDateTime NextStep(const NDateTime& a_time)
    {
        const std::uint32_t clock = NDateTimeWords::Clock(a_time);
        return NDateTimeWords::Make(a_time.ToDouble() + 1.0 / NDateTime::Denominator, COleDateTime::valid,
                                    NDateTimeWords::Calendar(a_time), clock + (1U << 6U));
    }

private:
    void TakeDay(std::int64_t a_seconds)
    {
        const std::int64_t day = (a_seconds >= 0 ? a_seconds : a_seconds - S_daySeconds + 1) / S_daySeconds;
        const std::chrono::year_month_day date{std::chrono::sys_days(std::chrono::days(day))};
        const auto year = static_cast<std::uint32_t>(static_cast<int>(date.year()));
        const std::chrono::sys_days newYear{date.year() / std::chrono::January / 1};
        m_dayBegin = day * S_daySeconds;
        m_oleDay = static_cast<double>(day - S_oleDayZero);
        m_calendar =
            year | static_cast<unsigned>(date.month()) << 12U | static_cast<unsigned>(date.day()) << 16U;
        m_dayOfYear = static_cast<std::uint32_t>(day - newYear.time_since_epoch().count() + 1) << 22U;
    }

    std::int64_t m_dayBegin = std::numeric_limits<std::int64_t>::min() / 2;
    double m_oleDay = 0.0;
    std::uint32_t m_calendar = 0;
    std::uint32_t m_dayOfYear = 0;
};

/// What the order of rows is judged by, one for each symbol.
struct LastRow {
    std::int64_t seconds = std::numeric_limits<std::int64_t>::min();
    std::int32_t nanoseconds = 0;
    std::int64_t shownSecond = std::numeric_limits<std::int64_t>::min(); // the second that `time` lies in
    NDateTime time;
};

std::int64_t Load8(const char* a_bytes)
{
    std::int64_t value = 0;
    std::memcpy(&value, a_bytes, sizeof(value));
    return value;
}

/// Bytes already read, then the rest of the source, as a stream for the block reader.
class SourceBuffer final : public std::streambuf {
public:
    SourceBuffer(std::string_view a_start, ByteSource& a_source) : m_source(a_source), m_bytes(S_readSize)
    {
        m_bytes.resize(std::max(a_start.size(), S_readSize));
        std::copy(a_start.begin(), a_start.end(), m_bytes.begin());
        setg(m_bytes.data(), m_bytes.data(), m_bytes.data() + a_start.size());
    }

private:
    int_type underflow() override
    {
        const std::size_t count = m_source.Read(m_bytes.data(), m_bytes.size());
        if (count == 0)
            return traits_type::eof();
        setg(m_bytes.data(), m_bytes.data(), m_bytes.data() + count);
        return traits_type::to_int_type(m_bytes.front());
    }

    ByteSource& m_source;
    std::vector<char> m_bytes;
};

std::optional<EAggrType> FoldFromName(std::string_view a_name)
{
    constexpr std::array<std::pair<std::string_view, EAggrType>, 5> names = {{{"ohlc", EAggrTypeOhlc},
                                                                              {"ohlcsum", EAggrTypeOhlcSum},
                                                                              {"ohlclast", EAggrTypeOhlcLast},
                                                                              {"sum", EAggrTypeSum},
                                                                              {"last", EAggrTypeLast}}};
    for (const auto& [name, type] : names) {
        if (name == a_name)
            return type;
    }
    return std::nullopt;
}

std::optional<TimeZone> FindZone(const std::string& a_name, const char* a_option)
{
    if (a_name.empty())
        return std::nullopt;
    auto zone = TimeZone::Find(a_name);
    if (!zone)
        throw ToolError(EExitUsage,
                        std::string(a_option) + ": found " + Quote(a_name) +
                            ", expected a zone of the time zone database such as Europe/Warsaw or UTC");
    return zone;
}

/// Seconds of the begin of a day given by an option.
std::optional<std::int64_t> DayLimit(const std::string& a_text, const char* a_option)
{
    if (a_text.empty())
        return std::nullopt;
    const auto days = ParseDateText(a_text);
    if (!days)
        throw ToolError(EExitUsage, std::string(a_option) + ": found " + Quote(a_text) +
                                        ", expected a day such as 2024-08-08");
    return *days * S_daySeconds;
}

std::int64_t UnitSeconds(EInterval a_interval)
{
    switch (a_interval) {
    case EIntervalSecond:
        return 1;
    case EIntervalMinute:
        return 60;
    case EIntervalHour:
        return 3600;
    default:
        return 0;
    }
}

/// The interval that candles have whose times are that many seconds apart.
IntervalAndMultiplicity IntervalOfStep(std::int64_t a_seconds)
{
    constexpr std::array<std::pair<std::int64_t, EInterval>, 7> units = {{{365 * S_daySeconds, EIntervalYear},
                                                                          {28 * S_daySeconds, EIntervalMonth},
                                                                          {7 * S_daySeconds, EIntervalWeek},
                                                                          {S_daySeconds, EIntervalDay},
                                                                          {3600, EIntervalHour},
                                                                          {60, EIntervalMinute},
                                                                          {1, EIntervalSecond}}};
    for (const auto& [seconds, interval] : units) {
        // Months and years differ in length; shorter units divide evenly or aren't the unit.
        const bool uneven = interval == EIntervalMonth || interval == EIntervalYear;
        if (a_seconds < seconds || (!uneven && a_seconds % seconds != 0))
            continue;
        const IntervalAndMultiplicity found(interval, static_cast<unsigned int>(a_seconds / seconds));
        if (found.IsValid())
            return found;
    }
    return {EIntervalSecond, 1};
}

} // namespace

void RowBlock::Reserve(std::size_t a_rows, std::size_t a_columns, bool a_symbols)
{
    if (times.size() < a_rows)
        times.resize(a_rows);
    columns.resize(a_columns);
    for (std::vector<double>& column : columns) {
        if (column.size() < a_rows)
            column.resize(a_rows);
    }
    if (a_symbols && symbols.size() < a_rows)
        symbols.resize(a_rows);
}

struct RowReader::Impl {
    Impl(ByteSource& a_source, const ReadOptions& a_options, ToolContext& a_context, OutputTarget* a_rejects);

    // The text's bytes.
    void Fill();
    bool HaveLine();
    std::string_view WholeLine(const char* a_begin) const;
    [[noreturn]] void Fail(std::size_t a_column, const std::string& a_text) const;

    // Learning the shape.
    void ReadShape();
    void FindDelimiter(std::string_view a_line);
    void PlanColumns(const std::vector<Field>& a_header);
    void PlanByPlaces(std::size_t a_count);
    void AddSeriesColumn(ColumnPlan& a_plan, ESeriesId a_series);
    void TakeSessionCandles();
    void SortSeries();
    void PlanFolds();
    void Peek();
    void PlanInterval(std::int64_t a_smallestStep);

    // Rows.
    bool ReadText(RowBlock& a_block, std::size_t a_limit, std::size_t a_keep);
    const char* ReadPlainLine(const char* a_line, WallTime& a_time, std::size_t a_row);
    const char* ReadPlainTime(const char* a_text, WallTime& a_time);
    const char* ReadPlainUnix(const char* a_text, WallTime& a_time) const;
    const char* ReadPlainDate(const char* a_text, WallTime& a_time);
    const char* ReadPlainClock(const char* a_text, WallTime& a_time) const;
    std::string_view PlainField(const char* a_text) const;
    const char* ReadPlainSymbol(const char* a_text, std::size_t a_row);
    bool ReadAnyLine(std::string_view a_line, WallTime& a_time, std::size_t a_row);
    bool Refuse(std::string_view a_line, std::size_t a_column, const std::string& a_text);
    bool TakeRow(const WallTime& a_time, std::string_view a_line, std::size_t a_row);
    std::uint32_t SymbolPlace(std::string_view a_symbol);
    void Tell(LineFate::EFate a_fate, std::int64_t a_seconds, std::size_t a_row);

    // Blocks.
    void ReadBlock();
    bool CopyBlock(RowBlock& a_block, std::size_t a_limit, std::size_t a_keep);

    ByteSource& source;
    const ReadOptions& options;
    ToolContext& context;
    OutputTarget* rejects;
    std::function<void(const LineFate&)> watcher;
    RowLayout layout;
    RowCounts counts;
    std::uint64_t bytesRead = 0;

    std::vector<char> buffer;
    std::size_t begin = 0;   // next byte to look at
    std::size_t lineEnd = 0; // behind the last whole line
    std::size_t filled = 0;  // behind the last byte
    bool atEnd = false;      // the source has no more
    std::uint64_t line = 0;  // number of the line at `begin`, from 1

    char delimiter = ',';
    char decimal = '.';
    std::string header;
    std::vector<ColumnPlan> plan;
    std::size_t columnsNeeded = 0; // behind the last column that isn't skipped
    std::vector<Field> fields;

    std::optional<TimeZone> inputZone;
    std::optional<TimeZone> outputZone;
    bool convertAll = false; // input and output zone differ
    std::int64_t stampShift = 0;
    std::optional<std::int64_t> from;
    std::optional<std::int64_t> to; // begin of the day behind the last one
    std::int64_t cachedDateFront = 0;
    std::int64_t cachedDateBack = 0;
    std::int64_t cachedDay = 0;
    std::string cachedDate; // of a column of its own
    std::int64_t cachedDateDay = 0;
    TimeMaker maker;
    std::vector<LastRow> last;

    std::vector<std::string> symbols;
    std::unordered_map<std::string, std::uint32_t> symbolPlaces;
    std::uint32_t lastSymbol = 0;

    // Where ReadPlainLine writes.
    NDateTime* times = nullptr;
    std::uint32_t* symbolRows = nullptr;
    std::vector<double*> values;

    std::optional<DataSeriesSet> block;
    std::size_t blockRow = 0;
};

RowReader::Impl::Impl(ByteSource& a_source, const ReadOptions& a_options, ToolContext& a_context,
                      OutputTarget* a_rejects)
    : source(a_source), options(a_options), context(a_context), rejects(a_rejects)
{
    if (const auto why = CheckTimeFormat(options.timeFormat); !why.empty())
        throw ToolError(EExitUsage,
                        "--time-format " + Quote(options.timeFormat) + " " + std::string(why) +
                            "; accepted are %Y %y %m %d %H %M %S %f %z %%, or unix, unixms, unixus, "
                            "unixns");
    inputZone = FindZone(options.zone, "--zone");
    outputZone = FindZone(options.outputZone, "--output-zone");
    convertAll = outputZone && (!inputZone || inputZone->GetName() != outputZone->GetName());
    if (!outputZone)
        outputZone = inputZone;
    from = DayLimit(options.from, "--from");
    to = DayLimit(options.to, "--to");
    if (from && to && *from > *to)
        throw ToolError(EExitUsage, "--from " + options.from + " lies behind --to " + options.to);
    if (to)
        *to += S_daySeconds;
    last.resize(1);

    Fill();
    constexpr std::string_view blockStart("\x01\0\0\0", 4);
    if (std::string_view(buffer.data(), filled).starts_with(blockStart))
        ReadBlock();
    else
        ReadShape();
}

void RowReader::Impl::Fill()
{
    std::copy(buffer.begin() + static_cast<std::ptrdiff_t>(begin),
              buffer.begin() + static_cast<std::ptrdiff_t>(filled), buffer.begin());
    filled -= begin;
    begin = 0;
    lineEnd = 0;
    while (!atEnd && lineEnd == 0) {
        if (filled > S_longestLine)
            Fail(1, "the line is longer than 16 MB; expected lines of text or a binary series block");
        if (buffer.size() < filled + S_readSize + S_padding)
            buffer.resize(filled + S_readSize + S_padding);
        const std::size_t count = source.Read(buffer.data() + filled, S_readSize);
        bytesRead += count;
        if (count == 0 && options.growing)
            return;
        if (count == 0) {
            atEnd = true;
            // The last line may lack its line feed.
            if (filled > 0 && buffer[filled - 1] != '\n')
                buffer[filled++] = '\n';
            lineEnd = filled;
            return;
        }
        const auto* found = static_cast<const char*>(memrchr(buffer.data() + filled, '\n', count));
        filled += count;
        if (found != nullptr)
            lineEnd = static_cast<std::size_t>(found - buffer.data()) + 1;
    }
}

// Whether a whole line lies at `begin`; reads on if need be.
bool RowReader::Impl::HaveLine()
{
    if (begin < lineEnd)
        return true;
    if (atEnd)
        return false;
    Fill();
    return begin < lineEnd;
}

// The line at a place, without its line feed and carriage return.
std::string_view RowReader::Impl::WholeLine(const char* a_begin) const
{
    const char* end = static_cast<const char*>(
        std::memchr(a_begin, '\n', static_cast<std::size_t>(buffer.data() + lineEnd - a_begin)));
    std::string_view text(a_begin, static_cast<std::size_t>(end - a_begin));
    if (text.ends_with('\r'))
        text.remove_suffix(1);
    return text;
}

void RowReader::Impl::Fail(std::size_t a_column, const std::string& a_text) const
{
    throw ToolError(EExitBadData, source.GetName() + ":" + std::to_string(line) + ":" +
                                      std::to_string(a_column) + ": " + a_text);
}

void RowReader::Impl::ReadShape()
{
    if (filled >= 3 && std::string_view(buffer.data(), 3) == "\xEF\xBB\xBF")
        begin = 3;
    line = 1;
    while (HaveLine()) {
        const std::string_view text = WholeLine(buffer.data() + begin);
        if (text.find('\0') != std::string_view::npos)
            Fail(1, "found a zero byte, expected lines of text or a binary series block of version 1");
        if (!text.empty() && text.front() != '#') {
            FindDelimiter(text);
            if (!SplitLine(text, delimiter, fields))
                Fail(fields.back().column, "a quote is left open in the header line");
            if (options.header) {
                header = text;
                PlanColumns(fields);
                begin += LineLength(text);
                ++line;
            } else {
                PlanByPlaces(fields.size());
            }
            SortSeries();
            PlanFolds();
            Peek();
            return;
        }
        begin += LineLength(text);
        ++line;
    }
    Fail(1, "the input is empty; expected a header line such as time,price,volume");
}

void RowReader::Impl::FindDelimiter(std::string_view a_line)
{
    delimiter = options.delimiter;
    if (delimiter != 0)
        return;
    std::size_t most = 0;
    delimiter = ',';
    // A semicolon goes before a comma, which may be a decimal sign where there is no header.
    for (const char sign : {';', '\t', ',', '|'}) {
        const auto count = static_cast<std::size_t>(std::count(a_line.begin(), a_line.end(), sign));
        if (count > most) {
            most = count;
            delimiter = sign;
        }
        if (count > 0 && sign == ';')
            return;
    }
}

void RowReader::Impl::AddSeriesColumn(ColumnPlan& a_plan, ESeriesId a_series)
{
    if (std::find(layout.series.begin(), layout.series.end(), a_series) != layout.series.end())
        Fail(1, "two columns mean " + ColumnName(a_series, false) + ", the second is " +
                    Quote(a_plan.header) + "; choose one by --columns " + ColumnName(a_series, false) +
                    "=NAME");
    a_plan.kind = ESeries;
    a_plan.place = layout.series.size();
    layout.series.push_back(a_series);
}

namespace {

/// What a name on our side of --columns stands for.
struct Role {
    EColumnKind kind = ESkip;
    ESeriesId series = static_cast<ESeriesId>(0);
};

std::optional<Role> RoleFromName(std::string_view a_name)
{
    if (a_name == "date")
        return Role{EDatePart};
    if (a_name == "clock")
        return Role{EClockPart};
    if (a_name == "symbol")
        return Role{ESymbol};
    const auto series = SeriesFromName(a_name);
    if (!series)
        return std::nullopt;
    return *series == Time ? Role{EWholeTime} : Role{ESeries, *series};
}

[[noreturn]] void RefuseRole(const std::string& a_name)
{
    throw ToolError(EExitUsage,
                    "--columns: " + Quote(a_name) +
                        " is none of ours; accepted are time, date, clock, symbol, price, volume, open, "
                        "high, low, close and the series keys (kurs, wolumen, lop, kupi, ...)");
}

bool IsNamed(const std::string& a_header, std::initializer_list<std::string_view> a_names)
{
    std::string small;
    for (const char sign : a_header)
        small += static_cast<char>(sign >= 'A' && sign <= 'Z' ? sign - 'A' + 'a' : sign);
    return std::find(a_names.begin(), a_names.end(), small) != a_names.end();
}

} // namespace

void RowCounts::Add(const RowCounts& a_other)
{
    rows += a_other.rows;
    bad += a_other.bad;
    dropped += a_other.dropped;
    raised += a_other.raised;
    outside += a_other.outside;
}

void RowReader::Impl::PlanColumns(const std::vector<Field>& a_header)
{
    plan.resize(a_header.size());
    for (std::size_t place = 0; place < plan.size(); ++place)
        plan[place].header = a_header[place].text;

    // What the user said comes first and takes its names away from the rest.
    for (const auto& [ours, theirs] : options.columns) {
        const auto role = RoleFromName(ours);
        if (!role)
            RefuseRole(ours);
        const auto found = std::find_if(plan.begin(), plan.end(), [&name = theirs](const ColumnPlan& a_plan) {
            return a_plan.header == name;
        });
        if (found == plan.end())
            Fail(1, "--columns: there is no column " + Quote(theirs) + " in the header " + Quote(header));
        found->kind = role->kind;
        if (role->kind == ESeries)
            AddSeriesColumn(*found, role->series);
    }
    const auto has = [this](EColumnKind a_kind) {
        return std::any_of(plan.begin(), plan.end(),
                           [a_kind](const ColumnPlan& a_plan) { return a_plan.kind == a_kind; });
    };
    const bool timeGiven = has(EWholeTime) || has(EDatePart);
    const bool hasDate = std::any_of(plan.begin(), plan.end(), [](const ColumnPlan& a_plan) {
        return IsNamed(a_plan.header, {"date", "data", "<date>"});
    });
    const bool hasClock = std::any_of(plan.begin(), plan.end(), [](const ColumnPlan& a_plan) {
        return IsNamed(a_plan.header, {"time", "czas", "<time>", "clock"});
    });
    std::string skipped;
    for (ColumnPlan& column : plan) {
        if (column.kind != ESkip)
            continue;
        const bool isSymbol =
            options.symbolColumn.empty()
                ? options.findSymbols && !has(ESymbol) &&
                      IsNamed(column.header, {"symbol", "ticker", "<ticker>", "instrument", "papier"})
                : column.header == options.symbolColumn;
        if (isSymbol) {
            column.kind = ESymbol;
            continue;
        }
        const auto series = SeriesFromName(column.header);
        if (series == Time) {
            if (timeGiven)
                continue;
            const bool isDate = IsNamed(column.header, {"date", "data", "<date>"});
            const bool isClock = IsNamed(column.header, {"time", "czas", "<time>", "clock"});
            if (hasDate && hasClock && (isDate || isClock))
                column.kind = isDate ? EDatePart : EClockPart;
            else if (!has(EWholeTime))
                column.kind = EWholeTime;
            continue;
        }
        const bool taken =
            series && std::find(layout.series.begin(), layout.series.end(), *series) != layout.series.end();
        // A name that the user gave to another column is that column's.
        const bool overruled = taken && std::any_of(options.columns.begin(), options.columns.end(),
                                                    [&series](const auto& a_pair) {
                                                        return SeriesFromName(a_pair.first) == series;
                                                    });
        if (series && !overruled)
            AddSeriesColumn(column, *series);
        else
            skipped += (skipped.empty() ? "" : ", ") + column.header;
    }
    if (!options.symbolColumn.empty() && !has(ESymbol))
        Fail(1, "--symbol-column: there is no column " + Quote(options.symbolColumn) + " in the header " +
                    Quote(header));
    if (!has(EWholeTime) && !has(EDatePart))
        Fail(1, "no column of times in the header " + Quote(header) +
                    "; expected a name such as time, date, timestamp or czas, or --columns time=NAME");
    if (options.strict && !skipped.empty())
        Fail(1, "columns that mean nothing: " + skipped +
                    "; name them by --columns, or leave --strict out to pass over them");
    if (!skipped.empty() && !context.quiet)
        context.err << "kalvento: " << source.GetName() << ": columns passed over: " << skipped << '\n';
}

void RowReader::Impl::PlanByPlaces(std::size_t a_count)
{
    plan.resize(a_count);
    bool timed = false;
    if (options.columns.empty())
        throw ToolError(EExitUsage,
                        "--no-header needs --columns with places, such as time=1,price=2,volume=3");
    for (const auto& [ours, theirs] : options.columns) {
        const auto role = RoleFromName(ours);
        if (!role)
            RefuseRole(ours);
        std::size_t place = 0;
        const auto [rest, error] = std::from_chars(theirs.data(), theirs.data() + theirs.size(), place);
        if (error != std::errc() || rest != theirs.data() + theirs.size() || place == 0 || place > a_count)
            throw ToolError(EExitUsage, "--columns: found " +
                                            Quote(std::string(ours).append("=").append(theirs)) +
                                            ", expected a place from 1 to " + std::to_string(a_count) +
                                            ", since the input has no header");
        ColumnPlan& column = plan[place - 1];
        if (column.kind != ESkip)
            throw ToolError(EExitUsage, "--columns: the place " + theirs + " is given twice");
        column.header = ours;
        column.kind = role->kind;
        timed = timed || role->kind == EWholeTime || role->kind == EDatePart;
        if (role->kind == ESeries)
            AddSeriesColumn(column, role->series);
    }
    if (!timed)
        throw ToolError(EExitUsage, "--columns: needs the place of the time, such as time=1");
}

// A daily file names session values; where there is no other price they are the candle.
void RowReader::Impl::TakeSessionCandles()
{
    constexpr std::array<std::pair<ESeriesId, ESeriesId>, 4> pairs = {
        {{Open, IntervalOpen}, {Max, IntervalMax}, {Min, IntervalMin}, {Close, Price}}};
    for (const auto& [session, candle] : pairs) {
        if (std::find(layout.series.begin(), layout.series.end(), session) == layout.series.end() ||
            std::find(layout.series.begin(), layout.series.end(), candle) != layout.series.end())
            return;
    }
    for (const auto& [session, candle] : pairs)
        std::replace(layout.series.begin(), layout.series.end(), session, candle);
}

void RowReader::Impl::SortSeries()
{
    TakeSessionCandles();
    const std::vector<ESeriesId> found = layout.series;
    std::sort(layout.series.begin(), layout.series.end());
    const auto has = [this](ESeriesId a_series) {
        return std::find(layout.series.begin(), layout.series.end(), a_series) != layout.series.end();
    };
    if (!has(Price))
        Fail(1, "no column of prices" + (header.empty() ? "" : " in the header " + Quote(header)) +
                    "; expected a name such as price, close, last or kurs, or --columns price=NAME");
    const int candleColumns = int{has(IntervalOpen)} + int{has(IntervalMax)} + int{has(IntervalMin)};
    if (candleColumns != 0 && candleColumns != 3)
        Fail(1, "candles need all of open, high, low and close; found only some of them" +
                    (header.empty() ? "" : " in the header " + Quote(header)));
    layout.interval = {EIntervalTick, 1};
    for (std::size_t place = 0; place < plan.size(); ++place) {
        ColumnPlan& column = plan[place];
        if (column.kind == ESeries)
            column.place = static_cast<std::size_t>(
                std::lower_bound(layout.series.begin(), layout.series.end(), found[column.place]) -
                layout.series.begin());
        column.expected = ExpectedOf(column.kind);
        if (column.kind != ESkip)
            columnsNeeded = place + 1;
        if (column.kind == ESymbol)
            layout.hasSymbols = true;
    }
    if (layout.hasSymbols)
        last.clear();
}

void RowReader::Impl::PlanFolds()
{
    layout.folds.clear();
    for (const ESeriesId series : layout.series)
        layout.folds.push_back(VeloTools::Series::DefaultAggregationType(series));
    for (const auto& [name, fold] : options.folds) {
        const auto series = SeriesFromName(name);
        const auto found =
            series ? std::find(layout.series.begin(), layout.series.end(), *series) : layout.series.end();
        if (found == layout.series.end())
            throw ToolError(EExitUsage,
                            "--fold: there is no column " + Quote(name) + " in " + source.GetName());
        const auto type = FoldFromName(fold);
        const bool fits = type && (*found == Price) == (*type < EAggrTypeSum);
        if (!fits || VeloTools::Series::IsAggregationSeries(*found))
            throw ToolError(EExitUsage,
                            "--fold: found " + Quote(std::string(name).append("=").append(fold)) +
                                ", accepted are ohlc, ohlcsum, ohlclast for the price, sum and last for "
                                "the others; open, high and low follow the price");
        layout.folds[static_cast<std::size_t>(found - layout.series.begin())] = *type;
    }
}

// Looks through the first rows without taking them: the decimal sign and the step of the candles show there.
void RowReader::Impl::Peek()
{
    bool comma = false;
    std::int64_t smallest = std::numeric_limits<std::int64_t>::max();
    std::optional<std::int64_t> before;
    const char* place = buffer.data() + begin;
    if (begin == lineEnd && HaveLine())
        place = buffer.data() + begin;
    for (std::size_t row = 0; row < S_peekedRows && place < buffer.data() + lineEnd; ++row) {
        const std::string_view text = WholeLine(place);
        place += LineLength(text);
        if (text.empty() || text.front() == '#' || !SplitLine(text, delimiter, fields) ||
            fields.size() < columnsNeeded)
            continue;
        WallTime time;
        bool timed = true;
        for (std::size_t column = 0; column < columnsNeeded; ++column) {
            const std::string& field = fields[column].text;
            if (plan[column].kind == ESeries && field.find('.') == std::string::npos)
                comma = comma || std::count(field.begin(), field.end(), ',') == 1;
            if (plan[column].kind == EDatePart) {
                const auto days = ParseDateText(field);
                timed = timed && days;
                time.seconds += days.value_or(0) * S_daySeconds;
            } else if (plan[column].kind == EClockPart) {
                const auto clock = ParseClockText(field);
                timed = timed && clock;
                time.seconds += clock.value_or(WallTime()).seconds;
            } else if (plan[column].kind == EWholeTime) {
                const auto whole = options.timeFormat.empty() ? ParseTimeText(field)
                                                              : ParseTimeByFormat(field, options.timeFormat);
                timed = timed && whole;
                time.seconds += whole.value_or(WallTime()).seconds;
            }
        }
        if (!timed)
            continue;
        if (before && time.seconds > *before)
            smallest = std::min(smallest, time.seconds - *before);
        before = time.seconds;
    }
    decimal = options.decimal != 0 ? options.decimal : comma && delimiter != ',' ? ',' : '.';
    if (decimal == delimiter)
        throw ToolError(EExitUsage, "the comma can't be both decimal sign and delimiter; give --delimiter");
    PlanInterval(smallest);
}

void RowReader::Impl::PlanInterval(std::int64_t a_smallestStep)
{
    const bool candles =
        std::find(layout.series.begin(), layout.series.end(), IntervalOpen) != layout.series.end();
    if (!options.inputInterval.empty()) {
        std::string reason;
        const auto given = ParseInterval(options.inputInterval, &reason);
        if (!given)
            throw ToolError(EExitUsage, "--input-interval: " + reason);
        if (candles == given->IsSingleTick())
            throw ToolError(EExitUsage, source.GetName() + (candles ? ": holds candles" : ": holds ticks") +
                                            ", which --input-interval " + options.inputInterval +
                                            " doesn't fit; leave it out or give an interval of " +
                                            (candles ? "candles such as 1min" : "tick"));
        layout.interval = *given;
    } else if (candles) {
        layout.interval = a_smallestStep == std::numeric_limits<std::int64_t>::max()
                              ? IntervalAndMultiplicity(EIntervalSecond, 1)
                              : IntervalOfStep(a_smallestStep);
    }
    if (!options.stampedWithEnd)
        return;
    stampShift = UnitSeconds(layout.interval.GetInterval()) * layout.interval.GetMultiplicity();
    if (stampShift == 0)
        throw ToolError(EExitUsage, "--input-stamp end: needs candles of seconds, minutes or hours, found " +
                                        FormatInterval(layout.interval));
}

bool RowReader::Impl::ReadText(RowBlock& a_block, std::size_t a_limit, std::size_t a_keep)
{
    const std::size_t end = a_keep + a_limit;
    a_block.Reserve(end, layout.series.size(), layout.hasSymbols);
    times = a_block.times.data();
    symbolRows = a_block.symbols.data();
    values.clear();
    for (std::vector<double>& column : a_block.columns)
        values.push_back(column.data());

    std::size_t row = a_keep;
    while (row < end && HaveLine()) {
        const char* text = buffer.data() + begin;
        WallTime time;
        bool taken = false;
        if (const char* next = ReadPlainLine(text, time, row)) {
            taken = TakeRow(time, std::string_view(text, static_cast<std::size_t>(next - text)), row);
            begin = static_cast<std::size_t>(next - buffer.data());
        } else {
            const std::string_view whole = WholeLine(text);
            if (!whole.empty() && whole.front() != '#')
                taken = ReadAnyLine(whole, time, row) && TakeRow(time, whole, row);
            begin += LineLength(whole);
        }
        row += taken ? 1 : 0;
        ++line;
    }
    a_block.rows = row;
    counts.rows += row - a_keep;
    return row > a_keep;
}

// A line in the usual form, field by field in one go. Returns the begin of the next line, or null where the line
// needs ReadAnyLine: nothing is decided then, and what was written to the row is written again.
const char* RowReader::Impl::ReadPlainLine(const char* a_line, WallTime& a_time, std::size_t a_row)
{
    const char* place = a_line;
    for (std::size_t column = 0;; ++column) {
        const ColumnPlan& what = plan[column];
        switch (what.kind) {
        case ESeries:
            place = ReadPlainNumber(place, decimal, values[what.place][a_row]);
            break;
        case EWholeTime:
            place = ReadPlainTime(place, a_time);
            break;
        case ESymbol:
            place = ReadPlainSymbol(place, a_row);
            break;
        case ESkip:
            while (*place != delimiter && *place != '\n' && *place != '"')
                ++place;
            break;
        default:
            return nullptr;
        }
        if (place == nullptr)
            return nullptr;
        if (column + 1 == columnsNeeded)
            break;
        if (*place != delimiter)
            return nullptr;
        ++place;
    }
    if (*place == '\n')
        return place + 1;
    if (*place == '\r' && place[1] == '\n')
        return place + 2;
    if (*place != delimiter)
        return nullptr;
    // Columns behind the last one that is needed.
    const auto* next = static_cast<const char*>(
        std::memchr(place, '\n', static_cast<std::size_t>(buffer.data() + lineEnd - place)));
    const auto rest = static_cast<std::size_t>(next - place);
    return std::memchr(place, '"', rest) == nullptr ? next + 1 : nullptr;
}

// YYYY-MM-DD with a blank or T and HH:MM:SS, a fraction, Z; the date alone. Null for all other forms.
const char* RowReader::Impl::ReadPlainTime(const char* a_text, WallTime& a_time)
{
    if (!options.timeFormat.empty())
        return nullptr;
    // Rows of one day bear the same ten signs.
    const std::int64_t front = Load8(a_text);
    const std::int64_t back = Load8(a_text + 2);
    if (front != cachedDateFront || back != cachedDateBack) {
        if (a_text[4] != '-' || a_text[7] != '-')
            return ReadPlainUnix(a_text, a_time);
        const auto days = ParseDateText(std::string_view(a_text, 10));
        if (!days)
            return nullptr;
        cachedDateFront = front;
        cachedDateBack = back;
        cachedDay = *days * S_daySeconds;
    }
    const char sign = a_text[10];
    if (sign == delimiter || sign == '\n' || sign == '\r') {
        a_time.seconds = cachedDay;
        return a_text + 10;
    }
    if (sign != ' ' && sign != 'T')
        return nullptr;
    // Eight signs at once, the first in the lowest byte: digits lose their 0x30 and colons become 0.
    const auto clock = static_cast<std::uint64_t>(Load8(a_text + 11)) - 0x30303A30303A3030U;
    if ((clock & 0xF0F0FFF0F0FFF0F0U) != 0 || ((clock + 0x0606000606000606U) & 0xF0F0F0F0F0F0F0F0U) != 0)
        return nullptr;
    const std::uint64_t hour = (clock & 0xFU) * 10 + ((clock >> 8U) & 0xFU);
    const std::uint64_t minute = ((clock >> 24U) & 0xFU) * 10 + ((clock >> 32U) & 0xFU);
    const std::uint64_t second = ((clock >> 48U) & 0xFU) * 10 + ((clock >> 56U) & 0xFU);
    if (hour > 23 || minute > 59 || second > 59)
        return nullptr;
    a_time.seconds = cachedDay + static_cast<std::int64_t>((hour * 60 + minute) * 60 + second);
    const char* place = a_text + 19;
    if (*place == '.') {
        std::uint32_t fraction = 0;
        std::uint32_t weight = 1'000'000'000;
        unsigned int digit = 0;
        for (++place; (digit = static_cast<unsigned char>(*place) - unsigned{'0'}) < 10; ++place) {
            weight /= 10;
            fraction += digit * weight;
        }
        a_time.nanoseconds = static_cast<std::int32_t>(fraction);
    }
    if (*place == 'Z') {
        a_time.absolute = true;
        ++place;
    }
    return place;
}

// Counts since 1970 in the lengths that our days have. Null for all other forms.
const char* RowReader::Impl::ReadPlainUnix(const char* a_text, WallTime& a_time) const
{
    const char* place = a_text;
    std::uint64_t digits = 0;
    unsigned int digit = 0;
    while (place - a_text < 19 && (digit = static_cast<unsigned char>(*place) - unsigned{'0'}) < 10) {
        digits = digits * 10 + digit;
        ++place;
    }
    std::int64_t unit = 0;
    switch (place - a_text) {
    case 10:
        unit = 1;
        break;
    case 13:
        unit = 1'000;
        break;
    case 16:
        unit = 1'000'000;
        break;
    case 19:
        unit = 1'000'000'000;
        break;
    default:
        return nullptr;
    }
    if (digits > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
        return nullptr;
    const auto count = static_cast<std::int64_t>(digits);
    a_time.seconds = count / unit;
    a_time.nanoseconds = static_cast<std::int32_t>(count % unit * (1'000'000'000 / unit));
    a_time.absolute = true;
    return place;
}

// A field without quotes and blanks, up to the delimiter; empty where it isn't one.
std::string_view RowReader::Impl::PlainField(const char* a_text) const
{
    const char* place = a_text;
    while (*place != delimiter && *place != '\n' && *place != '\r' && *place != '"' && *place != ' ')
        ++place;
    if (*place == '"' || *place == ' ')
        return {};
    return {a_text, static_cast<std::size_t>(place - a_text)};
}

const char* RowReader::Impl::ReadPlainDate(const char* a_text, WallTime& a_time)
{
    const std::string_view field = PlainField(a_text);
    if (!options.timeFormat.empty() || field.empty())
        return nullptr;
    if (field != cachedDate) {
        const auto days = ParseDateText(field);
        if (!days)
            return nullptr;
        cachedDate = field;
        cachedDateDay = *days * S_daySeconds;
    }
    a_time.seconds += cachedDateDay;
    return a_text + field.size();
}

const char* RowReader::Impl::ReadPlainClock(const char* a_text, WallTime& a_time) const
{
    const std::string_view field = PlainField(a_text);
    const auto clock = ParseClockText(field);
    if (!clock)
        return nullptr;
    a_time.seconds += clock->seconds;
    a_time.nanoseconds = clock->nanoseconds;
    a_time.absolute = clock->absolute;
    return a_text + field.size();
}

const char* RowReader::Impl::ReadPlainSymbol(const char* a_text, std::size_t a_row)
{
    const char* place = a_text;
    while (*place != delimiter && *place != '\n' && *place != '"' && *place != '\r')
        ++place;
    const std::string_view symbol(a_text, static_cast<std::size_t>(place - a_text));
    if (symbol.empty() || *place == '"' || symbol.front() == ' ' || symbol.back() == ' ')
        return nullptr;
    if (symbols.empty() || symbols[lastSymbol] != symbol)
        lastSymbol = SymbolPlace(symbol);
    symbolRows[a_row] = lastSymbol;
    return place;
}

std::uint32_t RowReader::Impl::SymbolPlace(std::string_view a_symbol)
{
    const auto [found, added] =
        symbolPlaces.try_emplace(std::string(a_symbol), static_cast<std::uint32_t>(symbols.size()));
    if (added) {
        symbols.emplace_back(a_symbol);
        last.emplace_back();
    }
    return found->second;
}

bool RowReader::Impl::Refuse(std::string_view a_line, std::size_t a_column, const std::string& a_text)
{
    if (options.badLines == EBadLinesStop)
        Fail(a_column, a_text);
    if (rejects != nullptr) {
        if (counts.bad == 0 && !header.empty())
            rejects->Write(header + "\n");
        rejects->Write(std::string(a_line) + "\n");
    }
    ++counts.bad;
    if (watcher)
        watcher({LineFate::EFateBad, line, 0, NDateTime(), a_text});
    return false;
}

void RowReader::Impl::Tell(LineFate::EFate a_fate, std::int64_t a_seconds, std::size_t a_row)
{
    if (watcher)
        watcher({a_fate, line, layout.hasSymbols ? symbolRows[a_row] : 0, maker.Make(a_seconds), {}});
}

bool RowReader::Impl::ReadAnyLine(std::string_view a_line, WallTime& a_time, std::size_t a_row)
{
    if (!SplitLine(a_line, delimiter, fields))
        return Refuse(a_line, fields.back().column,
                      "a quote is left open; a quoted field ends on the line where it begins");
    if (fields.size() < columnsNeeded)
        return Refuse(a_line, a_line.size() + 1,
                      "found " + std::to_string(fields.size()) + " columns, expected at least " +
                          std::to_string(columnsNeeded) + " with " + Quote(std::string(1, delimiter)) +
                          " between them");
    a_time = WallTime();
    for (std::size_t column = 0; column < columnsNeeded; ++column) {
        const std::string& text = fields[column].text;
        bool good = true;
        switch (plan[column].kind) {
        case ESeries: {
            const auto number = ParseNumberText(text, decimal);
            good = number.has_value();
            values[plan[column].place][a_row] = number.value_or(0.0);
            break;
        }
        case EWholeTime: {
            const auto time = options.timeFormat.empty() ? ParseTimeText(text)
                                                         : ParseTimeByFormat(text, options.timeFormat);
            good = time.has_value();
            a_time = time.value_or(WallTime());
            break;
        }
        case EDatePart: {
            const auto days =
                options.timeFormat.empty() ? ParseDateText(text) : [&]() -> std::optional<std::int64_t> {
                const auto time = ParseTimeByFormat(text, options.timeFormat);
                return time ? std::optional(time->seconds / S_daySeconds) : std::nullopt;
            }();
            good = days.has_value();
            a_time.seconds += days.value_or(0) * S_daySeconds;
            break;
        }
        case EClockPart: {
            const auto clock = ParseClockText(text);
            good = clock.has_value();
            const WallTime part = clock.value_or(WallTime());
            a_time.seconds += part.seconds;
            a_time.nanoseconds = part.nanoseconds;
            a_time.absolute = part.absolute;
            break;
        }
        case ESymbol:
            good = !text.empty();
            if (good) {
                lastSymbol = SymbolPlace(text);
                symbolRows[a_row] = lastSymbol;
            }
            break;
        case ESkip:
            break;
        }
        if (!good)
            return Refuse(a_line, fields[column].column,
                          "found " + Quote(text) + " in column " + Quote(plan[column].header) +
                              ", expected " + std::string(plan[column].expected));
    }
    return true;
}

// Brings a row's time into the output's zone and into order. False where the row is left out.
bool RowReader::Impl::TakeRow(const WallTime& a_time, std::string_view a_line, std::size_t a_row)
{
    std::int64_t seconds = a_time.seconds;
    if (convertAll || a_time.absolute) {
        if (!a_time.absolute && inputZone)
            seconds = inputZone->ToUtc(seconds);
        seconds -= stampShift;
        if (outputZone)
            seconds = outputZone->ToLocal(seconds);
    } else {
        seconds -= stampShift;
    }
    if (seconds < S_firstSecond || seconds >= S_endSecond)
        return Refuse(a_line, 1, "the time lies outside of the years 100 to 4095");
    if ((from && seconds < *from) || (to && seconds >= *to)) {
        ++counts.outside;
        Tell(LineFate::EFateOutside, seconds, a_row);
        return false;
    }

    LineFate::EFate fate = LineFate::EFateTaken;
    LastRow& before = last[layout.hasSymbols ? symbolRows[a_row] : 0];
    if (seconds < before.seconds || (seconds == before.seconds && a_time.nanoseconds <= before.nanoseconds)) {
        const bool falls = seconds < before.seconds || a_time.nanoseconds < before.nanoseconds;
        if (options.order == EOrderDrop) {
            ++counts.dropped;
            Tell(LineFate::EFateDropped, seconds, a_row);
            return false;
        }
        if (options.order == EOrderRefuse)
            return Refuse(
                a_line, 1,
                std::string("the time ") + (falls ? "falls behind" : "equals") +
                    " the one before; expected rising times (--order raise or drop takes such rows)");
        if (falls && counts.raised++ == 0)
            counts.firstRaised = line;
        fate = falls ? LineFate::EFateRaised : LineFate::EFateTaken;
    } else {
        before.seconds = seconds;
        before.nanoseconds = a_time.nanoseconds;
    }
    if (seconds > before.shownSecond) {
        before.shownSecond = seconds;
        before.time = maker.Make(seconds);
    } else if (before.time.GetMilliSec() < S_greatestCounter && before.time.ToDouble() >= 0.0) {
        // Below day number zero a step would move the time back, and the engine would leave the row out as a late one:
        // rows of one second share their time there.
        before.time = TimeMaker::NextStep(before.time);
    }
    times[a_row] = before.time;
    Tell(fate, seconds, a_row);
    return true;
}

void RowReader::Impl::ReadBlock()
{
    SourceBuffer bytes(std::string_view(buffer.data(), filled), source);
    std::istream stream(&bytes);
    DataSeriesSet& set = block.emplace(EIntervalTick, 1);
    set.Read(stream);
    if (stream.fail() || !set.IsValid())
        throw ToolError(EExitBadData, source.GetName() +
                                          ": a damaged series block: expected columns and times of one "
                                          "length, a valid interval, and open, high and low in candles");
    const std::vector<NDateTime>& rows = std::as_const(set).TimeSeries();
    for (std::size_t row = 0; row < rows.size(); ++row) {
        if (!rows[row].IsValid() || (row > 0 && rows[row] < rows[row - 1]))
            throw ToolError(EExitBadData, source.GetName() + ": a damaged series block: the time of row " +
                                              std::to_string(row + 1) +
                                              " is invalid or earlier than the one before");
    }
    layout.interval = set.GetIntervalData();
    for (const auto& [series, values_] : std::as_const(set))
        layout.series.push_back(series);
    if (!std::is_sorted(layout.series.begin(), layout.series.end()) ||
        std::adjacent_find(layout.series.begin(), layout.series.end()) != layout.series.end())
        throw ToolError(EExitBadData,
                        source.GetName() + ": a damaged series block: its columns aren't in order");
    if (std::find(layout.series.begin(), layout.series.end(), Price) == layout.series.end())
        throw ToolError(EExitBadData, source.GetName() + ": the series block holds no prices");
    PlanFolds();
}

bool RowReader::Impl::CopyBlock(RowBlock& a_block, std::size_t a_limit, std::size_t a_keep)
{
    const std::vector<NDateTime>& rows = std::as_const(*block).TimeSeries();
    const auto before = [](const NDateTime& a_time, std::int64_t a_seconds) {
        return a_time.GetAbsoluteDay() < a_seconds / S_daySeconds - S_oleDayZero;
    };
    while (from && blockRow < rows.size() && before(rows[blockRow], *from)) {
        ++counts.outside;
        ++blockRow;
    }
    std::size_t count = std::min(a_limit, rows.size() - blockRow);
    while (to && count > 0 && !before(rows[blockRow + count - 1], *to))
        --count;
    a_block.Reserve(a_keep + count, layout.series.size(), false);
    const auto first = static_cast<std::ptrdiff_t>(blockRow);
    const auto end = static_cast<std::ptrdiff_t>(blockRow + count);
    const auto target = static_cast<std::ptrdiff_t>(a_keep);
    std::copy(rows.begin() + first, rows.begin() + end, a_block.times.begin() + target);
    std::size_t column = 0;
    for (const auto& [series, columnValues] : std::as_const(*block)) {
        std::copy(columnValues.begin() + first, columnValues.begin() + end,
                  a_block.columns[column].begin() + target);
        ++column;
    }
    blockRow += count;
    counts.rows += count;
    a_block.rows = a_keep + count;
    return count > 0;
}

RowReader::RowReader(ByteSource& a_source, const ReadOptions& a_options, ToolContext& a_context,
                     OutputTarget* a_rejects)
    : m_impl(std::make_unique<Impl>(a_source, a_options, a_context, a_rejects))
{}

RowReader::~RowReader() = default;

void RowReader::ContinueFrom(const RowReader& a_before)
{
    m_impl->last = a_before.m_impl->last;
    m_impl->symbols = a_before.m_impl->symbols;
    m_impl->symbolPlaces = a_before.m_impl->symbolPlaces;
}

void RowReader::WatchLines(std::function<void(const LineFate&)> a_watcher)
{
    m_impl->watcher = std::move(a_watcher);
}

const RowLayout& RowReader::GetLayout() const
{
    return m_impl->layout;
}

bool RowReader::Read(RowBlock& a_block, std::size_t a_limit, std::size_t a_keep)
{
    return m_impl->block ? m_impl->CopyBlock(a_block, a_limit, a_keep)
                         : m_impl->ReadText(a_block, a_limit, a_keep);
}

const std::vector<std::string>& RowReader::GetSymbols() const
{
    return m_impl->symbols;
}

const RowCounts& RowReader::GetCounts() const
{
    return m_impl->counts;
}

std::uint64_t RowReader::GetBytesRead() const
{
    return m_impl->bytesRead;
}

} // namespace kalvento::tool
