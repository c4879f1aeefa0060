#include "platform/CodePage.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace CodePage {

namespace {

constexpr char32_t S_replacement = 0xFFFD;
constexpr char32_t S_lastCodePoint = 0x10FFFF;

constexpr bool IsSurrogate(char32_t a_value)
{
    return a_value >= 0xD800 && a_value <= 0xDFFF;
}

constexpr char32_t CodeOf(wchar_t a_character)
{
    return static_cast<char32_t>(a_character);
}

// S_cp1250High the other way round, sorted by code point for a binary search.
constexpr auto S_byCodePoint = [] {
    std::array<std::pair<std::uint16_t, std::uint8_t>, 128> table{};
    for (std::size_t place = 0; place < table.size(); ++place)
        table[place] = {S_cp1250High[place], static_cast<std::uint8_t>(0x80 + place)};
    std::sort(table.begin(), table.end());
    return table;
}();

int FindByte(char32_t a_codePoint)
{
    if (a_codePoint < 0x80)
        return static_cast<int>(a_codePoint);
    if (a_codePoint > std::numeric_limits<std::uint16_t>::max())
        return -1;
    const auto found =
        std::lower_bound(S_byCodePoint.begin(), S_byCodePoint.end(),
                         std::pair<std::uint16_t, std::uint8_t>{static_cast<std::uint16_t>(a_codePoint), 0});
    return found != S_byCodePoint.end() && found->first == a_codePoint ? found->second : -1;
}

struct Decoded {
    char32_t codePoint = S_replacement;
    std::size_t length = 1; // bytes taken, at least 1
    bool good = false;
};

// One code point at the start of a_text, which is not empty. The ranges of the second byte are those of table 3-7 of
// the Unicode standard: they exclude overlong forms, surrogates and what lies above 0x10FFFF.
Decoded DecodeUtf8(std::string_view a_text)
{
    const auto byteAt = [a_text](std::size_t a_place) { return static_cast<unsigned char>(a_text[a_place]); };
    const unsigned char lead = byteAt(0);
    if (lead < 0x80)
        return {lead, 1, true};
    if (lead < 0xC2 || lead > 0xF4)
        return {};

    std::size_t length = 2;
    if (lead >= 0xE0)
        length = lead < 0xF0 ? 3 : 4;
    unsigned char lowest = 0x80;
    unsigned char highest = 0xBF;
    if (lead == 0xE0)
        lowest = 0xA0;
    else if (lead == 0xED)
        highest = 0x9F;
    else if (lead == 0xF0)
        lowest = 0x90;
    else if (lead == 0xF4)
        highest = 0x8F;

    char32_t codePoint = lead & (0x7FU >> length);
    for (std::size_t part = 1; part < length; ++part) {
        if (part == a_text.size() || byteAt(part) < lowest || byteAt(part) > highest)
            return {S_replacement, part, false};
        codePoint = (codePoint << 6U) | (byteAt(part) & 0x3FU);
        lowest = 0x80;
        highest = 0xBF;
    }
    return {codePoint, length, true};
}

void AppendUtf8(std::string& a_text, char32_t a_codePoint)
{
    const auto append = [&a_text](char32_t a_byte) {
        a_text += static_cast<char>(static_cast<unsigned char>(a_byte));
    };
    // The lead byte says how many follow, each of which holds six bits.
    constexpr std::array<char32_t, 4> leads = {0x00, 0xC0, 0xE0, 0xF0};
    unsigned int following = 0;
    for (const char32_t limit : {0x80U, 0x800U, 0x10000U})
        following += a_codePoint >= limit ? 1 : 0;
    append(leads[following] | (a_codePoint >> (6 * following)));
    while (following-- > 0)
        append(0x80U | ((a_codePoint >> (6 * following)) & 0x3FU));
}

char32_t WideOf(char a_byte)
{
    const auto value = static_cast<unsigned char>(a_byte);
    return value < 0x80 ? value : S_cp1250High[value - 0x80U];
}

} // namespace

std::wstring Cp1250ToWide(std::string_view a_text)
{
    std::wstring wide(a_text.size(), L'\0');
    std::transform(a_text.begin(), a_text.end(), wide.begin(),
                   [](char a_byte) { return static_cast<wchar_t>(WideOf(a_byte)); });
    return wide;
}

std::string WideToCp1250(std::wstring_view a_text)
{
    std::string narrow(a_text.size(), '?');
    for (std::size_t place = 0; place < a_text.size(); ++place) {
        const int byte = FindByte(CodeOf(a_text[place]));
        if (byte >= 0)
            narrow[place] = static_cast<char>(static_cast<unsigned char>(byte));
    }
    return narrow;
}

bool FitsCp1250(std::wstring_view a_text)
{
    return std::all_of(a_text.begin(), a_text.end(),
                       [](wchar_t a_character) { return FindByte(CodeOf(a_character)) >= 0; });
}

std::wstring Utf8ToWide(std::string_view a_text)
{
    std::wstring wide;
    wide.reserve(a_text.size());
    while (!a_text.empty()) {
        const Decoded decoded = DecodeUtf8(a_text);
        wide += static_cast<wchar_t>(decoded.codePoint);
        a_text.remove_prefix(decoded.length);
    }
    return wide;
}

std::string WideToUtf8(std::wstring_view a_text)
{
    std::string utf8;
    utf8.reserve(a_text.size());
    for (const wchar_t character : a_text) {
        const char32_t code = CodeOf(character);
        AppendUtf8(utf8, code > S_lastCodePoint || IsSurrogate(code) ? S_replacement : code);
    }
    return utf8;
}

std::string Cp1250ToUtf8(std::string_view a_text)
{
    std::string utf8;
    utf8.reserve(a_text.size());
    for (const char byte : a_text)
        AppendUtf8(utf8, WideOf(byte));
    return utf8;
}

std::size_t FindMalformedUtf8(std::string_view a_text)
{
    std::size_t place = 0;
    while (place < a_text.size()) {
        const Decoded decoded = DecodeUtf8(a_text.substr(place));
        if (!decoded.good)
            break;
        place += decoded.length;
    }
    return place;
}

std::wstring Utf16ToWide(std::u16string_view a_text)
{
    std::wstring wide;
    wide.reserve(a_text.size());
    for (std::size_t place = 0; place < a_text.size(); ++place) {
        char32_t code = a_text[place];
        const bool leads = code >= 0xD800 && code <= 0xDBFF && place + 1 < a_text.size();
        if (leads && a_text[place + 1] >= 0xDC00 && a_text[place + 1] <= 0xDFFF) {
            ++place;
            code = 0x10000U + ((code - 0xD800U) << 10U) + (a_text[place] - 0xDC00U);
        }
        wide += static_cast<wchar_t>(code);
    }
    return wide;
}

std::u16string WideToUtf16(std::wstring_view a_text)
{
    std::u16string utf16;
    utf16.reserve(a_text.size());
    for (const wchar_t character : a_text) {
        char32_t code = CodeOf(character);
        if (code > S_lastCodePoint)
            code = S_replacement;
        if (code < 0x10000) {
            utf16 += static_cast<char16_t>(code);
            continue;
        }
        code -= 0x10000;
        utf16 += static_cast<char16_t>(0xD800U + (code >> 10U));
        utf16 += static_cast<char16_t>(0xDC00U + (code & 0x3FFU));
    }
    return utf16;
}

} // namespace CodePage
