#include "velo/NumberFormatter.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <charconv>
#include <cmath>
#include <cstddef>

namespace VeloTools {

namespace {

constexpr wchar_t S_decimalComma = L',';
constexpr wchar_t S_groupBlank = L'\u00A0';
constexpr wchar_t S_infinity = L'\u221E';
constexpr int S_groupLength = 3;
constexpr int S_mostPlaces = 1074; // no double has more; asking for more would only take memory
constexpr int S_noBound = -1;

std::atomic<NumberFormatter::TextWidth> S_textWidth = nullptr;

// The number 0.<digits> * 10^point; no digits is zero. The last digit is never 0.
struct Decimal {
    std::string digits;
    int point = 0;

    int Places() const { return digits.empty() ? 0 : std::max(0, static_cast<int>(digits.size()) - point); }

    // Of the integer part from 1 up (the tenths are place -1), 0 where there is no digit.
    char DigitAt(int a_place) const
    {
        const int index = point - a_place;
        const bool inside = index >= 0 && index < static_cast<int>(digits.size());
        return inside ? digits[static_cast<std::size_t>(index)] : '0';
    }
};

void StripZeros(Decimal& a_number)
{
    a_number.digits.erase(a_number.digits.find_last_not_of('0') + 1);
}

Decimal ToDecimal(double a_magnitude)
{
    std::array<char, 64> buffer{};
    const char* const end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), a_magnitude,
                                          std::chars_format::scientific)
                                .ptr;
    const std::string_view text(buffer.data(), end);
    const std::size_t mark = text.find('e');
    Decimal number;
    for (const char character : text.substr(0, mark)) {
        if (character != '.')
            number.digits += character;
    }
    int exponent = 0;
    const std::size_t digits = text.find_first_not_of("e+", mark); // from_chars knows no plus
    std::from_chars(buffer.data() + digits, end, exponent);
    number.point = exponent + 1;
    StripZeros(number);
    return number;
}

Decimal Round(Decimal a_number, int a_places)
{
    const int kept = a_number.point + a_places;
    if (kept >= static_cast<int>(a_number.digits.size()))
        return a_number;
    if (kept < 0)
        return {};
    const auto length = static_cast<std::size_t>(kept);
    const bool up = a_number.digits[length] >= '5';
    a_number.digits.resize(length);
    if (up) {
        while (!a_number.digits.empty() && a_number.digits.back() == '9')
            a_number.digits.pop_back();
        if (a_number.digits.empty()) {
            a_number.digits.assign(1, '1');
            ++a_number.point;
        } else {
            ++a_number.digits.back();
        }
    }
    StripZeros(a_number);
    return a_number;
}

std::wstring Write(const Decimal& a_number, bool a_negative, int a_places)
{
    std::wstring text;
    if (a_negative && !a_number.digits.empty())
        text += L'-';
    for (int place = a_number.digits.empty() ? 1 : std::max(a_number.point, 1); place > 0; --place) {
        text += static_cast<wchar_t>(a_number.DigitAt(place));
        if (place > 1 && (place - 1) % S_groupLength == 0)
            text += S_groupBlank;
    }
    if (a_places > 0)
        text += S_decimalComma;
    for (int place = 0; place < a_places; ++place)
        text += static_cast<wchar_t>(a_number.DigitAt(-place));
    return text;
}

} // namespace

void NumberFormatter::SlowFormat(std::wstring& a_result, std::wstring_view a_text, HFONT a_font,
                                 unsigned int a_width, double a_value, EPrecision a_minimum,
                                 EPrecision a_maximum) const
{
    const std::wstring unit(a_text); // a_text may look into a_result
    if (std::isnan(a_value)) {
        a_result = L"-" + unit;
        return;
    }
    const bool negative = std::signbit(a_value);
    if (std::isinf(a_value)) {
        a_result = (negative ? L"-" : L"") + std::wstring(1, S_infinity) + unit;
        return;
    }

    const Decimal exact = a_value == 0.0 ? Decimal{} : ToDecimal(std::abs(a_value));
    const int maximum = a_maximum <= S_noBound ? S_mostPlaces : std::min<int>(a_maximum, S_mostPlaces);
    const int minimum = std::clamp<int>(a_minimum, 0, maximum);
    const auto write = [&](int a_most) {
        const Decimal rounded = Round(exact, a_most);
        return Write(rounded, negative, std::max(rounded.Places(), minimum)) + unit;
    };

    a_result = write(maximum);
    const TextWidth textWidth = S_textWidth;
    if (textWidth == nullptr || a_font == nullptr || a_width == 0)
        return;
    for (int places = std::min(exact.Places(), maximum) - 1;
         places >= minimum && textWidth(a_result, a_font) > a_width; --places)
        a_result = write(places);
}

void NumberFormatter::SetTextWidth(TextWidth a_textWidth)
{
    S_textWidth = a_textWidth;
}

} // namespace VeloTools
