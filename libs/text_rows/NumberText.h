#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace kalvento::rows {

/// A finite decimal number, whole text, with the decimal sign given ('.' or ','): the double nearest to it. Empty for
/// anything else: words, hexadecimal, digit groups, numbers that no double can hold.
std::optional<double> ParseNumberText(std::string_view a_text, char a_decimal);

/// Reads the plain numbers that nearly all fields are, straight from a buffer that is padded past its end: digits with
/// a decimal sign, at most 19 of them and below 2^53 together. Returns the place after the number, or null where the
/// number needs ParseNumberText. The double is the nearest one: an integer below 2^53 and a power of ten up to 10^22
/// are exact, so one division rounds once (W. Clinger, How to read floating point numbers accurately, 1990).
inline const char* ReadPlainNumber(const char* a_text, char a_decimal, double& a_value)
{
    static constexpr double S_powers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,
                                          1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19};
    const bool negative = *a_text == '-';
    const char* place = a_text + (negative ? 1 : 0);
    const char* first = place;
    std::uint64_t digits = 0;
    unsigned int next = 0;
    while ((next = static_cast<unsigned char>(*place) - unsigned{'0'}) < 10) {
        digits = digits * 10 + next;
        ++place;
    }
    auto count = place - first;
    std::ptrdiff_t fraction = 0;
    if (*place == a_decimal) {
        const char* point = ++place;
        while ((next = static_cast<unsigned char>(*place) - unsigned{'0'}) < 10) {
            digits = digits * 10 + next;
            ++place;
        }
        fraction = place - point;
        count += fraction;
    }
    if (count == 0 || count > 19 || digits > (std::uint64_t{1} << 53U))
        return nullptr;
    double value = static_cast<double>(static_cast<std::int64_t>(digits));
    if (fraction > 0)
        value /= S_powers[fraction];
    a_value = negative ? -value : value;
    return place;
}

} // namespace kalvento::rows
