#include "settings/ValueText.h"

#include <fmt/format.h>

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <span>
#include <system_error>

namespace kalvento::internal::ValueText {

namespace {

constexpr std::uint64_t S_usualNan = 0x7FF8000000000000;
constexpr std::string_view S_true = "true";
constexpr std::string_view S_false = "false";
constexpr std::string_view S_nanBegin = "nan(0x";

template<class Number, class... Format>
std::errc ReadWhole(std::string_view a_text, Number& a_number, Format... a_format)
{
    const char* const end = a_text.data() + a_text.size();
    const auto [stop, error] = std::from_chars(a_text.data(), end, a_number, a_format...);
    return error == std::errc() && stop != end ? std::errc::invalid_argument : error;
}

bool IsWholeNumber(std::string_view a_text)
{
    if (a_text.starts_with('-'))
        a_text.remove_prefix(1);
    return !a_text.empty() && a_text.find_first_not_of("0123456789") == std::string_view::npos;
}

std::optional<double> ReadNan(std::string_view a_text)
{
    if (a_text == "nan")
        return std::bit_cast<double>(S_usualNan);
    if (!a_text.starts_with(S_nanBegin) || !a_text.ends_with(')'))
        return std::nullopt;
    a_text.remove_prefix(S_nanBegin.size());
    a_text.remove_suffix(1);
    std::uint64_t bits = 0;
    if (ReadWhole(a_text, bits, 16) != std::errc())
        return std::nullopt;
    const auto value = std::bit_cast<double>(bits);
    return std::isnan(value) ? std::optional(value) : std::nullopt;
}

bool ReadList(std::string_view a_text, std::span<std::int32_t> a_numbers)
{
    for (std::size_t place = 0; place < a_numbers.size(); ++place) {
        const std::size_t comma = a_text.find(',');
        const bool last = place + 1 == a_numbers.size();
        if (last != (comma == std::string_view::npos))
            return false;
        if (ReadWhole(a_text.substr(0, comma), a_numbers[place]) != std::errc())
            return false;
        a_text.remove_prefix(last ? a_text.size() : comma + 1);
        a_text.remove_prefix(std::min(a_text.find_first_not_of(' '), a_text.size()));
    }
    return true;
}

} // namespace

std::string Of(bool a_value)
{
    return std::string(a_value ? S_true : S_false);
}

std::string Of(std::int64_t a_value)
{
    return fmt::format("{}", a_value);
}

std::string Of(std::uint64_t a_value)
{
    return fmt::format("{}", a_value);
}

std::string Of(double a_value)
{
    if (std::isnan(a_value)) {
        const auto bits = std::bit_cast<std::uint64_t>(a_value);
        return bits == S_usualNan ? "nan" : fmt::format("{}{:016x})", S_nanBegin, bits);
    }
    std::array<char, 64> text{};
    const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), a_value);
    return {text.data(), end};
}

std::string Of(const CRect& a_value)
{
    return fmt::format("{},{},{},{}", a_value.left, a_value.top, a_value.right, a_value.bottom);
}

std::string Of(const CSize& a_value)
{
    return fmt::format("{},{}", a_value.cx, a_value.cy);
}

std::int64_t ToSigned(double a_value, std::int64_t a_lowest, std::int64_t a_highest)
{
    constexpr double limit = 9223372036854775808.0; // 2^63
    if (!(a_value >= -limit && a_value < limit))
        return 0;
    const auto whole = static_cast<std::int64_t>(a_value);
    return whole < a_lowest || whole > a_highest ? 0 : whole;
}

std::uint64_t ToUnsigned(double a_value, std::uint64_t a_highest)
{
    constexpr double limit = 18446744073709551616.0; // 2^64
    if (!(a_value > -1.0 && a_value < limit))
        return 0;
    const auto whole = static_cast<std::uint64_t>(a_value);
    return whole > a_highest ? 0 : whole;
}

std::int64_t ReadSigned(std::string_view a_text, std::int64_t a_lowest, std::int64_t a_highest)
{
    // Not through a double where there is no fraction: a double holds 53 bits only.
    if (!IsWholeNumber(a_text))
        return ToSigned(ReadDouble(a_text), a_lowest, a_highest);
    std::int64_t value = 0;
    if (ReadWhole(a_text, value) != std::errc() || value < a_lowest || value > a_highest)
        return 0;
    return value;
}

std::uint64_t ReadUnsigned(std::string_view a_text, std::uint64_t a_highest)
{
    if (!IsWholeNumber(a_text))
        return ToUnsigned(ReadDouble(a_text), a_highest);
    std::uint64_t value = 0;
    if (ReadWhole(a_text, value) != std::errc() || value > a_highest)
        return 0;
    return value;
}

double ReadDouble(std::string_view a_text)
{
    if (a_text == S_true)
        return 1.0;
    if (const auto nan = ReadNan(a_text))
        return *nan;
    double value = 0.0;
    return ReadWhole(a_text, value) == std::errc() ? value : 0.0;
}

CRect ReadRect(std::string_view a_text)
{
    std::array<std::int32_t, 4> numbers{};
    if (!ReadList(a_text, numbers))
        return {};
    return {numbers[0], numbers[1], numbers[2], numbers[3]};
}

CSize ReadSize(std::string_view a_text)
{
    std::array<std::int32_t, 2> numbers{};
    if (!ReadList(a_text, numbers))
        return {};
    return {numbers[0], numbers[1]};
}

} // namespace kalvento::internal::ValueText
