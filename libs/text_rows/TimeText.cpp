#include "text_rows/TimeText.h"

#include "time/TimeParts.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <utility>

namespace kalvento::rows {

namespace {

// Further from 1970 than this no time of the library lies; it keeps the sums below away from overflow.
constexpr std::int64_t S_secondsLimit = 70'000'000'000;

bool IsDigit(char a_sign)
{
    return a_sign >= '0' && a_sign <= '9';
}

/// Goes through a text from the front.
class TextCursor {
public:
    explicit TextCursor(std::string_view a_text) : m_rest(a_text) {}

    bool AtEnd() const { return m_rest.empty(); }
    char Peek() const { return m_rest.empty() ? '\0' : m_rest.front(); }
    bool Take(char a_sign)
    {
        if (Peek() != a_sign || m_rest.empty())
            return false;
        m_rest.remove_prefix(1);
        return true;
    }
    void SkipBlanks()
    {
        while (Take(' ')) {
        }
    }
    std::size_t DigitsAhead() const
    {
        std::size_t count = 0;
        while (count < m_rest.size() && IsDigit(m_rest[count]))
            ++count;
        return count;
    }
    // Exactly that many digits, or nothing taken.
    std::optional<int> Number(std::size_t a_digits)
    {
        if (m_rest.size() < a_digits)
            return std::nullopt;
        int value = 0;
        for (std::size_t place = 0; place < a_digits; ++place) {
            if (!IsDigit(m_rest[place]))
                return std::nullopt;
            value = value * 10 + (m_rest[place] - '0');
        }
        m_rest.remove_prefix(a_digits);
        return value;
    }
    // Digits of a fraction as nanoseconds; those after the ninth are cut off.
    std::optional<std::int32_t> Fraction()
    {
        const std::size_t digits = DigitsAhead();
        if (digits == 0)
            return std::nullopt;
        std::int32_t value = 0;
        for (std::size_t place = 0; place < 9; ++place)
            value = value * 10 + (place < digits ? m_rest[place] - '0' : 0);
        m_rest.remove_prefix(digits);
        return value;
    }
    // Z, +hh:mm, +hhmm or +hh: seconds to take off. Empty when malformed.
    std::optional<std::int64_t> Offset()
    {
        if (Take('Z') || Take('z'))
            return 0;
        const bool negative = Peek() == '-';
        if (!Take('+') && !Take('-'))
            return std::nullopt;
        const auto hours = Number(2);
        if (!hours)
            return std::nullopt;
        const bool colon = Take(':');
        std::optional<int> minutes = Number(2);
        if (!minutes && colon)
            return std::nullopt;
        if (*hours > 18 || minutes.value_or(0) > 59)
            return std::nullopt;
        const std::int64_t seconds = TimeParts::SecondOfDay(*hours, minutes.value_or(0), 0);
        return negative ? -seconds : seconds;
    }
    std::string_view Rest() const { return m_rest; }

private:
    std::string_view m_rest;
};

std::optional<std::int64_t> ReadDate(TextCursor& a_cursor)
{
    const std::size_t lead = a_cursor.DigitsAhead();
    if (lead == 4) {
        const auto year = a_cursor.Number(4);
        const char sign = a_cursor.Peek();
        if (sign != '-' && sign != '/' && sign != '.')
            return std::nullopt;
        a_cursor.Take(sign);
        const auto month = a_cursor.Number(a_cursor.DigitsAhead() == 1 ? 1 : 2);
        if (!month || !a_cursor.Take(sign))
            return std::nullopt;
        const auto day = a_cursor.Number(a_cursor.DigitsAhead() == 1 ? 1 : 2);
        return day ? DaysFromDate(*year, *month, *day) : std::nullopt;
    }
    if (lead == 2) {
        const auto day = a_cursor.Number(2);
        if (!a_cursor.Take('.'))
            return std::nullopt;
        const auto month = a_cursor.Number(2);
        if (!month || !a_cursor.Take('.'))
            return std::nullopt;
        const auto year = a_cursor.Number(4);
        return year ? DaysFromDate(*year, *month, *day) : std::nullopt;
    }
    if (lead == 8 || lead == 12 || lead == 14) {
        const auto year = a_cursor.Number(4);
        const auto month = a_cursor.Number(2);
        const auto day = a_cursor.Number(2);
        return DaysFromDate(*year, *month, *day);
    }
    return std::nullopt;
}

// Seconds since midnight; empty where no clock shows that.
std::optional<std::int64_t> SecondsOfDay(int a_hour, int a_minute, int a_second)
{
    if (a_hour > 23 || a_minute > 59 || a_second > 59)
        return std::nullopt;
    return TimeParts::SecondOfDay(a_hour, a_minute, a_second);
}

std::optional<WallTime> ReadClock(TextCursor& a_cursor)
{
    const std::size_t lead = a_cursor.DigitsAhead();
    std::optional<int> hour;
    std::optional<int> minute;
    std::optional<int> second = 0;
    if (lead <= 2) {
        hour = a_cursor.Number(lead);
        if (lead == 0 || !a_cursor.Take(':'))
            return std::nullopt;
        minute = a_cursor.Number(2);
        if (a_cursor.Take(':'))
            second = a_cursor.Number(2);
    } else if (lead <= 6) {
        // A clock written as a number has lost its leading zero before ten o'clock: 93000 is 9:30:00, 930 is 9:30.
        hour = a_cursor.Number(lead % 2 == 1 ? 1 : 2);
        minute = a_cursor.Number(2);
        if (lead >= 5)
            second = a_cursor.Number(2);
    }
    const auto seconds = hour && minute && second ? SecondsOfDay(*hour, *minute, *second) : std::nullopt;
    if (!seconds)
        return std::nullopt;
    WallTime clock;
    clock.seconds = *seconds;
    if (a_cursor.Take('.') || a_cursor.Take(',')) {
        const auto fraction = a_cursor.Fraction();
        if (!fraction)
            return std::nullopt;
        clock.nanoseconds = *fraction;
    }
    return clock;
}

bool ReadOffset(TextCursor& a_cursor, WallTime& a_time)
{
    const auto offset = a_cursor.Offset();
    if (!offset)
        return false;
    a_time.seconds -= *offset;
    a_time.absolute = true;
    return true;
}

// a_unit: units in a second.
std::optional<WallTime> FromUnix(std::string_view a_text, std::int64_t a_unit)
{
    std::int64_t count = 0;
    const char* end = a_text.data() + a_text.size();
    const auto [rest, error] = std::from_chars(a_text.data(), end, count);
    if (error != std::errc())
        return std::nullopt;
    WallTime time;
    time.absolute = true;
    time.seconds = count / a_unit;
    std::int64_t part = count % a_unit;
    if (part < 0) {
        part += a_unit;
        --time.seconds;
    }
    time.nanoseconds = static_cast<std::int32_t>(part * (1'000'000'000 / a_unit));
    if (rest != end) {
        TextCursor cursor(std::string_view(rest, static_cast<std::size_t>(end - rest)));
        const bool point = cursor.Take('.');
        const auto fraction = cursor.Fraction();
        if (!point || !fraction || !cursor.AtEnd() || count < 0)
            return std::nullopt;
        if (a_unit == 1)
            time.nanoseconds = *fraction;
    }
    if (time.seconds > S_secondsLimit || time.seconds < -S_secondsLimit)
        return std::nullopt;
    return time;
}

// Units in a second, of a format that counts since 1970; 0 for any other.
std::int64_t UnixUnit(std::string_view a_format)
{
    constexpr std::array<std::pair<std::string_view, std::int64_t>, 4> units = {
        {{"unix", 1}, {"unixms", 1'000}, {"unixus", 1'000'000}, {"unixns", 1'000'000'000}}};
    const auto found = std::ranges::find(units, a_format, &std::pair<std::string_view, std::int64_t>::first);
    return found == units.end() ? 0 : found->second;
}

/// Reads a time by a format, field by field.
class FormattedTime {
public:
    explicit FormattedTime(std::string_view a_text) : m_cursor(a_text) {}

    // One field, by its letter. False where the text has none such there.
    bool Take(char a_letter)
    {
        if (a_letter == '%')
            return m_cursor.Take('%');
        if (a_letter == 'z')
            return ReadOffset(m_cursor, m_time);
        if (a_letter == 'f') {
            const auto fraction = m_cursor.Fraction();
            m_time.nanoseconds = fraction.value_or(0);
            return fraction.has_value();
        }
        int* const field = FieldOf(a_letter);
        // One digit is enough where a separator follows, as in 1/2/2024.
        const bool isShort = a_letter != 'Y' && m_cursor.DigitsAhead() == 1;
        const auto number = m_cursor.Number(a_letter == 'Y' ? 4 : 2 - std::size_t{isShort});
        if (field == nullptr || !number)
            return false;
        *field = *number;
        if (a_letter == 'y')
            *field += *number < 50 ? 2000 : 1900;
        return true;
    }
    // What stands between the fields.
    bool TakeSign(char a_sign)
    {
        if (a_sign != ' ')
            return m_cursor.Take(a_sign);
        m_cursor.SkipBlanks();
        return true;
    }
    // Empty where the text goes on, or the fields are no time.
    std::optional<WallTime> Get() const
    {
        const auto days = DaysFromDate(m_year, m_month, m_day);
        const auto seconds = SecondsOfDay(m_hour, m_minute, m_second);
        if (!m_cursor.AtEnd() || !days || !seconds)
            return std::nullopt;
        WallTime time = m_time;
        time.seconds += *days * TimeParts::S_secondsOfDay + *seconds;
        return time;
    }

private:
    int* FieldOf(char a_letter)
    {
        switch (a_letter) {
        case 'Y':
        case 'y':
            return &m_year;
        case 'm':
            return &m_month;
        case 'd':
            return &m_day;
        case 'H':
            return &m_hour;
        case 'M':
            return &m_minute;
        case 'S':
            return &m_second;
        default:
            return nullptr;
        }
    }

    TextCursor m_cursor;
    int m_year = 1970;
    int m_month = 1;
    int m_day = 1;
    int m_hour = 0;
    int m_minute = 0;
    int m_second = 0;
    WallTime m_time; // the fraction, and by how much the offset moves the rest
};

} // namespace

unsigned int FractionDigits(std::int32_t a_nanoseconds)
{
    if (a_nanoseconds == 0)
        return 0;
    if (a_nanoseconds % 1'000'000 == 0)
        return 3;
    return a_nanoseconds % 1'000 == 0 ? 6 : 9;
}

std::optional<std::int64_t> DaysFromDate(int a_year, int a_month, int a_day)
{
    using namespace std::chrono;
    const year_month_day date{year(a_year), month(static_cast<unsigned>(a_month)),
                              day(static_cast<unsigned>(a_day))};
    if (!date.ok() || a_year < 100 || a_year > 4095)
        return std::nullopt;
    return sys_days(date).time_since_epoch().count();
}

std::optional<std::int64_t> ParseDateText(std::string_view a_text)
{
    TextCursor cursor(a_text);
    const auto days = ReadDate(cursor);
    return cursor.AtEnd() ? days : std::nullopt;
}

std::optional<WallTime> ParseClockText(std::string_view a_text)
{
    TextCursor cursor(a_text);
    auto clock = ReadClock(cursor);
    if (clock && !cursor.AtEnd() && !ReadOffset(cursor, *clock))
        return std::nullopt;
    return cursor.AtEnd() ? clock : std::nullopt;
}

std::optional<WallTime> ParseTimeText(std::string_view a_text)
{
    TextCursor cursor(a_text);
    const std::size_t lead = cursor.DigitsAhead();
    const bool packed = lead == 14 || lead == 12;
    // Twelve to fourteen digits are a packed time when they read as one: milliseconds of our days begin with 1 or 2 as
    // well, but their "month" or "day" is almost never real, and 13 digits can be nothing but milliseconds.
    if (lead == a_text.size() || (lead > 8 && a_text[lead] == '.')) {
        if (lead >= 9 && lead <= 11)
            return FromUnix(a_text, 1);
        if (lead == 13)
            return FromUnix(a_text, 1'000);
        if (lead >= 15 && lead <= 17)
            return FromUnix(a_text, 1'000'000);
        if (lead >= 18)
            return FromUnix(a_text, 1'000'000'000);
    }

    const auto days = ReadDate(cursor);
    if (!days)
        return packed ? FromUnix(a_text, 1'000) : std::nullopt;
    WallTime time;
    if (!cursor.AtEnd()) {
        if (!packed && !cursor.Take('T') && !cursor.Take(' ') && !cursor.Take('-') && !cursor.Take(';'))
            return std::nullopt;
        cursor.SkipBlanks();
        const auto clock = ReadClock(cursor);
        if (!clock)
            return std::nullopt;
        time = *clock;
    }
    time.seconds += *days * TimeParts::S_secondsOfDay;
    cursor.SkipBlanks();
    if (!cursor.AtEnd() && !ReadOffset(cursor, time))
        return std::nullopt;
    return cursor.AtEnd() ? std::optional(time) : std::nullopt;
}

std::optional<WallTime> ParseTimeByFormat(std::string_view a_text, std::string_view a_format)
{
    if (const std::int64_t unit = UnixUnit(a_format))
        return FromUnix(a_text, unit);

    FormattedTime time(a_text);
    for (std::size_t place = 0; place < a_format.size(); ++place) {
        const bool isField = a_format[place] == '%' && place + 1 < a_format.size();
        if (!(isField ? time.Take(a_format[++place]) : time.TakeSign(a_format[place])))
            return std::nullopt;
    }
    return time.Get();
}

std::string_view CheckTimeFormat(std::string_view a_format)
{
    if (a_format.empty() || UnixUnit(a_format) != 0)
        return {};
    bool any = false;
    for (std::size_t place = 0; place < a_format.size(); ++place) {
        if (a_format[place] != '%')
            continue;
        if (++place == a_format.size())
            return "ends with a lone %";
        if (std::string_view("YymdHMSfz%").find(a_format[place]) == std::string_view::npos)
            return "has a letter that isn't known";
        any = true;
    }
    return any ? std::string_view() : "has no field in it";
}

} // namespace kalvento::rows
