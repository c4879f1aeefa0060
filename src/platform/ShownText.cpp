#include "platform/ShownText.h"

#include "platform/CodePage.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

namespace kalvento::internal::ShownText {

namespace {

using Code = std::uint32_t;

// Controls, separators and marks of direction, and tags, which nothing shows;
// source: https://www.unicode.org/Public/15.0.0/ucd/extracted/DerivedGeneralCategory.txt (Cc, Zl, Zp, of Cf those named).
constexpr std::array<std::pair<Code, Code>, 10> S_controls = {{{0x00, 0x1F},
                                                               {0x7F, 0x9F},
                                                               {0x61C, 0x61C},
                                                               {0x200E, 0x200F},
                                                               {0x2028, 0x202E},
                                                               {0x2066, 0x2069},
                                                               {0xD800, 0xDFFF},
                                                               {0xFFF9, 0xFFFB},
                                                               {0xE0000, 0xE007F},
                                                               {0x110000, 0xFFFFFFFF}}};

constexpr std::string_view S_digits = "0123456789ABCDEF";

void AppendByte(std::string& a_utf8, Code a_byte)
{
    a_utf8 += "\\x";
    a_utf8 += S_digits[a_byte >> 4U & 0xFU];
    a_utf8 += S_digits[a_byte & 0xFU];
}

void AppendCodePoint(std::string& a_utf8, Code a_code)
{
    a_utf8 += "\\u{";
    bool isBegun = false;
    for (int shift = 28; shift >= 0; shift -= 4) {
        const Code digit = a_code >> static_cast<Code>(shift) & 0xFU;
        isBegun = isBegun || digit != 0;
        if (isBegun)
            a_utf8 += S_digits[digit];
    }
    a_utf8 += '}';
}

std::string Show(std::string_view a_utf8, std::string_view a_kept)
{
    std::string shown;
    shown.reserve(a_utf8.size());
    while (!a_utf8.empty()) {
        const std::size_t good = CodePage::FindMalformedUtf8(a_utf8);
        for (const wchar_t character : CodePage::Utf8ToWide(a_utf8.substr(0, good))) {
            const bool isKept =
                character < 0x80 && a_kept.find(static_cast<char>(character)) != std::string_view::npos;
            if (isKept)
                shown += static_cast<char>(character);
            else
                Append(shown, character);
        }
        a_utf8.remove_prefix(good);
        if (!a_utf8.empty()) {
            AppendByte(shown, static_cast<unsigned char>(a_utf8.front()));
            a_utf8.remove_prefix(1);
        }
    }
    return shown;
}

} // namespace

bool IsControl(wchar_t a_character)
{
    const auto code = static_cast<Code>(a_character);
    return std::ranges::any_of(
        S_controls, [code](const auto& a_range) { return code >= a_range.first && code <= a_range.second; });
}

void Append(std::string& a_utf8, wchar_t a_character)
{
    if (!IsControl(a_character))
        a_utf8 += CodePage::WideToUtf8({&a_character, 1});
    else if (a_character == L'\n')
        a_utf8 += "\\n";
    else if (a_character == L'\r')
        a_utf8 += "\\r";
    else if (a_character == L'\t')
        a_utf8 += "\\t";
    else if (static_cast<Code>(a_character) < 0x100)
        AppendByte(a_utf8, static_cast<Code>(a_character));
    else
        AppendCodePoint(a_utf8, static_cast<Code>(a_character));
}

std::string OneLine(std::string_view a_utf8)
{
    return Show(a_utf8, {});
}

std::string Lines(std::string_view a_utf8)
{
    return Show(a_utf8, "\n\t");
}

std::size_t CountCutBytes(std::string_view a_utf8)
{
    for (std::size_t count = 1; count <= std::min<std::size_t>(3, a_utf8.size()); ++count) {
        const auto byte = static_cast<unsigned char>(a_utf8[a_utf8.size() - count]);
        if (byte < 0x80)
            return 0;
        if (byte >= 0xC0) {
            const std::size_t whole = 2U + (byte >= 0xE0 ? 1U : 0U) + (byte >= 0xF0 ? 1U : 0U);
            return count < whole ? count : 0;
        }
    }
    return 0;
}

} // namespace kalvento::internal::ShownText
