#include "settings/TextEscapes.h"

#include <fmt/format.h>
#include <fmt/xchar.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

namespace kalvento::internal::TextEscapes {

namespace {

constexpr std::size_t S_mostDigits = 8;
constexpr std::array<std::pair<wchar_t, wchar_t>, 5> S_letters = {
    {{L'\\', L'\\'}, {L'n', L'\n'}, {L'r', L'\r'}, {L't', L'\t'}, {L's', L' '}}};

// A text of these and nothing else survives XML, editors and terminals.
bool IsPlain(wchar_t a_character, bool a_asciiOnly)
{
    const auto code = static_cast<char32_t>(a_character);
    if (code < 0x7F)
        return code >= 0x20;
    if (a_asciiOnly || code < 0xA0)
        return false;
    const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
    const bool lineEnd = code == 0x2028 || code == 0x2029;
    const bool byteOrderMark = code == 0xFEFF;
    return !surrogate && !lineEnd && !byteOrderMark && code != 0xFFFE && code != 0xFFFF && code <= 0x10FFFF;
}

int DigitOf(wchar_t a_character)
{
    if (a_character >= L'0' && a_character <= L'9')
        return a_character - L'0';
    if (a_character >= L'A' && a_character <= L'F')
        return a_character - L'A' + 10;
    if (a_character >= L'a' && a_character <= L'f')
        return a_character - L'a' + 10;
    return -1;
}

// Takes "{1F}" from the front of a_text.
std::optional<wchar_t> TakeNumber(std::wstring_view& a_text)
{
    const std::size_t end = a_text.find(L'}');
    if (!a_text.starts_with(L'{') || end == std::wstring_view::npos || end < 2 || end > S_mostDigits + 1)
        return std::nullopt;
    std::uint32_t number = 0;
    for (const wchar_t character : a_text.substr(1, end - 1)) {
        const int digit = DigitOf(character);
        if (digit < 0)
            return std::nullopt;
        number = number * 16 + static_cast<std::uint32_t>(digit);
    }
    a_text.remove_prefix(end + 1);
    return static_cast<wchar_t>(number);
}

} // namespace

bool Needed(std::wstring_view a_text, bool a_asciiOnly)
{
    if (a_text.empty())
        return false;
    return a_text.front() == L' ' || a_text.back() == L' ' ||
           !std::all_of(a_text.begin(), a_text.end(),
                        [a_asciiOnly](wchar_t a_character) { return IsPlain(a_character, a_asciiOnly); });
}

std::wstring Escape(std::wstring_view a_text, bool a_asciiOnly)
{
    std::wstring escaped;
    escaped.reserve(a_text.size());
    for (std::size_t place = 0; place < a_text.size(); ++place) {
        const wchar_t character = a_text[place];
        const bool innerBlank = character == L' ' && place != 0 && place + 1 != a_text.size();
        const auto* const letter =
            std::find_if(S_letters.begin(), S_letters.end(),
                         [character](const auto& a_pair) { return a_pair.second == character; });
        if (letter != S_letters.end() && !innerBlank) {
            escaped += L'\\';
            escaped += letter->first;
        } else if (IsPlain(character, a_asciiOnly)) {
            escaped += character;
        } else {
            escaped += fmt::format(L"\\x{{{:X}}}", static_cast<std::uint32_t>(character));
        }
    }
    return escaped;
}

std::optional<std::wstring> Unescape(std::wstring_view a_text)
{
    std::wstring text;
    text.reserve(a_text.size());
    while (!a_text.empty()) {
        const wchar_t character = a_text.front();
        a_text.remove_prefix(1);
        if (character != L'\\') {
            text += character;
            continue;
        }
        if (a_text.empty())
            return std::nullopt;
        const wchar_t kind = a_text.front();
        a_text.remove_prefix(1);
        if (kind == L'x') {
            const auto number = TakeNumber(a_text);
            if (!number)
                return std::nullopt;
            text += *number;
            continue;
        }
        const auto* const letter = std::find_if(S_letters.begin(), S_letters.end(),
                                                [kind](const auto& a_pair) { return a_pair.first == kind; });
        if (letter == S_letters.end())
            return std::nullopt;
        text += letter->second;
    }
    return text;
}

} // namespace kalvento::internal::TextEscapes
