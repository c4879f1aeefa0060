#include "text_rows/IntervalNotation.h"

#include "time/MaxMultiplicity.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <system_error>
#include <utility>

namespace kalvento::rows {

namespace {

struct Unit {
    EInterval interval;
    std::array<std::string_view, 7> names; // FormatInterval writes the first; empty after the last
};

constexpr std::array S_units = {
    Unit{EIntervalTick, {"tick", "ticks", "t", "tikowy"}},
    Unit{EIntervalSecond, {"s", "sec", "secs", "second", "seconds", "sek", "sekundowy"}},
    Unit{EIntervalMinute, {"min", "m", "mins", "minute", "minutes", "minutowy"}},
    Unit{EIntervalHour, {"h", "hour", "hours", "godz", "godzinowy"}},
    Unit{EIntervalDay, {"d", "day", "days", "dni", "dzien", "dzienny"}},
    Unit{EIntervalWeek, {"w", "week", "weeks", "tyg", "tygodniowy"}},
    Unit{EIntervalMonth, {"mo", "month", "months", "mies", "miesieczny"}},
    Unit{EIntervalYear, {"y", "year", "years", "lat", "lata", "rok", "roczny"}},
};

// Small letters without blanks, accents and the full stop of an abbreviation.
std::string Plain(std::string_view a_text)
{
    std::string plain;
    for (std::size_t place = 0; place < a_text.size(); ++place) {
        const char sign = a_text[place];
        const std::string_view pair = a_text.substr(place, 2);
        if (pair == "\xC4\x99" || pair == "\xC4\x98") { // e with ogonek, as in the Polish word for monthly
            plain += 'e';
            ++place;
        } else if (pair == "\xC5\x84" || pair == "\xC5\x83") { // n with acute, as in the Polish word for day
            plain += 'n';
            ++place;
        } else if (sign >= 'A' && sign <= 'Z') {
            plain += static_cast<char>(sign - 'A' + 'a');
        } else if (sign != ' ' && sign != '\t') {
            plain += sign;
        }
    }
    if (plain.ends_with('.'))
        plain.pop_back();
    return plain;
}

std::optional<IntervalAndMultiplicity> Refuse(std::string* a_reason, std::string a_text)
{
    if (a_reason != nullptr)
        *a_reason = std::move(a_text);
    return std::nullopt;
}

} // namespace

std::optional<IntervalAndMultiplicity> ParseInterval(std::string_view a_text, std::string* a_reason)
{
    const std::string plain = Plain(a_text);
    const std::string found = "found \"" + std::string(a_text) + "\"";
    unsigned int multiplicity = 1;
    const auto [unitBegin, error] = std::from_chars(plain.data(), plain.data() + plain.size(), multiplicity);
    if (error == std::errc::result_out_of_range)
        return Refuse(a_reason, found + ", the count must be below 4294967296");

    const std::string_view unit(unitBegin, static_cast<std::size_t>(plain.data() + plain.size() - unitBegin));
    // Exchanges write 1m for a minute and 1M for a month: a capital could mean either.
    if (unit == "m" && a_text.find('M') != std::string_view::npos)
        return Refuse(a_reason, found + ", which could be minutes or months: write min or mo");
    const auto known = std::ranges::find_if(S_units, [unit](const Unit& a_unit) {
        return std::ranges::find(a_unit.names, unit) != a_unit.names.end();
    });
    if (unit.empty() || known == S_units.end())
        return Refuse(a_reason, found + ", expected " + std::string(IntervalNotationHelp()));
    const IntervalAndMultiplicity interval(known->interval, multiplicity);
    if (interval.IsValid())
        return interval;
    if (multiplicity == 0)
        return Refuse(a_reason, found + ", the count must be 1 or more");
    return Refuse(a_reason, found + ", this unit goes up to " +
                                std::to_string(kalvento::internal::GetMaxMultiplicity(known->interval)) +
                                "; take the next longer unit");
}

std::string FormatInterval(IntervalAndMultiplicity a_interval)
{
    if (!a_interval.IsValid())
        return "none";
    const auto unit = std::ranges::find(S_units, a_interval.GetInterval(), &Unit::interval);
    if (unit == S_units.end()) // a damaged block may name any number
        return "none";
    const std::string count = a_interval.IsSingleTick() ? "" : std::to_string(a_interval.GetMultiplicity());
    return count + std::string(unit->names.front());
}

std::string_view IntervalNotationHelp()
{
    return "tick, 10tick, 30s, 5min, 1h, 1d, 2w, 1mo, 1y or the Polish words (\"5 min.\", \"Dzienny\", \"2 dni\")";
}

} // namespace kalvento::rows
