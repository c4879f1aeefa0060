#include "text_rows/LineReader.h"

#include "text_rows/NumberText.h"
#include "text_rows/RowBlock.h"
#include "time/TimeParts.h"

#include <array>
#include <cstring>
#include <limits>

namespace kalvento::rows {

namespace {

std::int64_t Load8(const char* a_bytes)
{
    std::int64_t value = 0;
    std::memcpy(&value, a_bytes, sizeof(value));
    return value;
}

// Counts since 1970, of the lengths that they have nowadays. Null for all other forms.
const char* ReadPlainUnix(const char* a_text, WallTime& a_time)
{
    const char* place = a_text;
    std::uint64_t digits = 0;
    unsigned int digit = 0;
    while (place - a_text < 19 && (digit = static_cast<unsigned char>(*place) - unsigned{'0'}) < 10) {
        digits = digits * 10 + digit;
        ++place;
    }
    constexpr std::array<std::int64_t, 4> units = {1, 1'000, 1'000'000, 1'000'000'000};
    const std::ptrdiff_t behindSeconds = place - a_text - 10;
    if (behindSeconds < 0 || behindSeconds % 3 != 0)
        return nullptr;
    const std::int64_t unit = units[static_cast<std::size_t>(behindSeconds / 3)];
    if (digits > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
        return nullptr;
    const auto count = static_cast<std::int64_t>(digits);
    a_time.seconds = count / unit;
    a_time.nanoseconds = static_cast<std::int32_t>(count % unit * (1'000'000'000 / unit));
    a_time.absolute = true;
    return place;
}

} // namespace

LineReader::LineReader(const TextShape& a_shape, const std::string& a_timeFormat)
    : m_shape(a_shape), m_timeFormat(a_timeFormat)
{}

void LineReader::Aim(RowBlock& a_block)
{
    m_symbolRows = a_block.symbols.data();
    m_values.clear();
    for (std::vector<double>& column : a_block.columns)
        m_values.push_back(column.data());
}

const char* LineReader::ReadPlain(const char* a_line, const char* a_end, WallTime& a_time, std::size_t a_row)
{
    const char* place = a_line;
    for (std::size_t column = 0;; ++column) {
        const ColumnPlan& what = m_shape.columns[column];
        switch (what.kind) {
        case ESeries:
            place = ReadPlainNumber(place, m_shape.decimal, m_values[what.place][a_row]);
            break;
        case EWholeTime:
            place = ReadPlainTime(place, a_time);
            break;
        case ESymbol:
            place = ReadPlainSymbol(place, a_row);
            break;
        case ESkip:
            while (*place != m_shape.delimiter && *place != '\n' && *place != '"')
                ++place;
            break;
        default:
            return nullptr;
        }
        if (place == nullptr)
            return nullptr;
        if (column + 1 == m_shape.columnsNeeded)
            break;
        if (*place != m_shape.delimiter)
            return nullptr;
        ++place;
    }
    if (*place == '\n')
        return place + 1;
    if (*place == '\r' && place[1] == '\n')
        return place + 2;
    if (*place != m_shape.delimiter)
        return nullptr;
    // Columns after the last one that is needed.
    const auto* next =
        static_cast<const char*>(std::memchr(place, '\n', static_cast<std::size_t>(a_end - place)));
    const auto rest = static_cast<std::size_t>(next - place);
    return std::memchr(place, '"', rest) == nullptr ? next + 1 : nullptr;
}

// YYYY-MM-DD with a blank or T and HH:MM:SS, a fraction, Z; the date alone. Null for all other forms.
const char* LineReader::ReadPlainTime(const char* a_text, WallTime& a_time)
{
    if (!m_timeFormat.empty())
        return nullptr;
    // Rows of one day begin with the same ten characters.
    const std::int64_t front = Load8(a_text);
    const std::int64_t back = Load8(a_text + 2);
    if (front != m_dateFront || back != m_dateBack) {
        if (a_text[4] != '-' || a_text[7] != '-')
            return ReadPlainUnix(a_text, a_time);
        const auto days = ParseDateText(std::string_view(a_text, 10));
        if (!days)
            return nullptr;
        m_dateFront = front;
        m_dateBack = back;
        m_day = *days * TimeParts::S_secondsOfDay;
    }
    const char sign = a_text[10];
    if (sign == m_shape.delimiter || sign == '\n' || sign == '\r') {
        a_time.seconds = m_day;
        return a_text + 10;
    }
    if (sign != ' ' && sign != 'T')
        return nullptr;
    // Eight characters at once, the first in the lowest byte: digits lose their 0x30 and colons become 0.
    const auto clock = static_cast<std::uint64_t>(Load8(a_text + 11)) - 0x30303A30303A3030U;
    if ((clock & 0xF0F0FFF0F0FFF0F0U) != 0 || ((clock + 0x0606000606000606U) & 0xF0F0F0F0F0F0F0F0U) != 0)
        return nullptr;
    const std::uint64_t hour = (clock & 0xFU) * 10 + ((clock >> 8U) & 0xFU);
    const std::uint64_t minute = ((clock >> 24U) & 0xFU) * 10 + ((clock >> 32U) & 0xFU);
    const std::uint64_t second = ((clock >> 48U) & 0xFU) * 10 + ((clock >> 56U) & 0xFU);
    if (hour > 23 || minute > 59 || second > 59)
        return nullptr;
    a_time.seconds = m_day + static_cast<std::int64_t>(TimeParts::SecondOfDay(hour, minute, second));
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

const char* LineReader::ReadPlainSymbol(const char* a_text, std::size_t a_row)
{
    const char* place = a_text;
    while (*place != m_shape.delimiter && *place != '\n' && *place != '"' && *place != '\r')
        ++place;
    const std::string_view symbol(a_text, static_cast<std::size_t>(place - a_text));
    if (symbol.empty() || *place == '"' || symbol.front() == ' ' || symbol.back() == ' ')
        return nullptr;
    m_symbolRows[a_row] = m_symbols.FindOrAdd(symbol);
    return place;
}

bool LineReader::ReadAny(std::string_view a_line, WallTime& a_time, std::size_t a_row,
                         RowsFault::Parts& a_fault)
{
    if (!SplitLine(a_line, m_shape.delimiter, m_fields)) {
        a_fault = {.found = "a quote is left open; a quoted field ends on the line where it begins",
                   .column = m_fields.back().column};
        return false;
    }
    if (m_fields.size() < m_shape.columnsNeeded) {
        a_fault = {.found = "found " + std::to_string(m_fields.size()) + " columns",
                   .expected = "at least " + std::to_string(m_shape.columnsNeeded) + " with " +
                               Quote(std::string(1, m_shape.delimiter)) + " between them",
                   .column = a_line.size() + 1};
        return false;
    }
    a_time = WallTime();
    for (std::size_t column = 0; column < m_shape.columnsNeeded; ++column) {
        const Field& field = m_fields[column];
        const ColumnPlan& what = m_shape.columns[column];
        if (ReadField(what, field.text, a_time, a_row))
            continue;
        const bool isTime = what.kind == EWholeTime || what.kind == EDatePart;
        a_fault = {.help = isTime ? EOptionTimeFormat : EOptionNone,
                   .found = "found " + Quote(field.text) + " in column " + Quote(what.header),
                   .expected = std::string(what.expected),
                   .column = field.column};
        return false;
    }
    return true;
}

bool LineReader::ReadField(const ColumnPlan& a_column, const std::string& a_text, WallTime& a_time,
                           std::size_t a_row)
{
    switch (a_column.kind) {
    case ESeries: {
        const auto number = ParseNumberText(a_text, m_shape.decimal);
        m_values[a_column.place][a_row] = number.value_or(0.0);
        return number.has_value();
    }
    case EWholeTime: {
        const auto time =
            m_timeFormat.empty() ? ParseTimeText(a_text) : ParseTimeByFormat(a_text, m_timeFormat);
        a_time = time.value_or(WallTime());
        return time.has_value();
    }
    case EDatePart: {
        if (m_timeFormat.empty()) {
            const auto days = ParseDateText(a_text);
            a_time.seconds += days.value_or(0) * TimeParts::S_secondsOfDay;
            return days.has_value();
        }
        const auto time = ParseTimeByFormat(a_text, m_timeFormat);
        a_time.seconds +=
            time.value_or(WallTime()).seconds / TimeParts::S_secondsOfDay * TimeParts::S_secondsOfDay;
        return time.has_value();
    }
    case EClockPart: {
        const auto clock = ParseClockText(a_text);
        const WallTime part = clock.value_or(WallTime());
        a_time.seconds += part.seconds;
        a_time.nanoseconds = part.nanoseconds;
        a_time.absolute = part.absolute;
        return clock.has_value();
    }
    case ESymbol:
        if (a_text.empty())
            return false;
        m_symbolRows[a_row] = m_symbols.FindOrAdd(a_text);
        return true;
    case ESkip:
        break;
    }
    return true;
}

} // namespace kalvento::rows
