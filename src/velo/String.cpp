#include "velo/String.h"

#include "platform/CodePage.h"

#include <boost/json/string.hpp>

#include <algorithm>
#include <array>

namespace VeloTools::String {

namespace {

constexpr auto S_lower = [] {
    std::array<unsigned char, 256> table{};
    for (std::size_t byte = 0; byte < table.size(); ++byte) {
        const bool ascii = byte >= 'A' && byte <= 'Z';
        const bool accented =
            byte >= 0xC0 && byte <= 0xDE && byte != 0xD7; // D7 is the sign of multiplication
        table[byte] = static_cast<unsigned char>(ascii || accented ? byte + 0x20 : byte);
    }
    for (const std::size_t letter : {0x8AU, 0x8CU, 0x8DU, 0x8EU, 0x8FU, 0xAAU, 0xAFU})
        table[letter] = static_cast<unsigned char>(letter + 0x10);
    table[0xA3] = 0xB3; // L with stroke
    table[0xA5] = 0xB9; // A with ogonek
    table[0xBC] = 0xBE; // L with caron
    return table;
}();

} // namespace

std::string WideToAnsi(std::wstring_view a_text)
{
    return CodePage::WideToCp1250(a_text);
}

std::wstring AnsiToWide(std::string_view a_text)
{
    return CodePage::Cp1250ToWide(a_text);
}

std::wstring Utf8ToWide(std::string_view a_text)
{
    return CodePage::Utf8ToWide(a_text);
}

boost::json::string WideToJsonUtf8(std::wstring_view a_text)
{
    return boost::json::string(CodePage::WideToUtf8(a_text));
}

std::string ToLower(std::string a_text)
{
    std::transform(a_text.begin(), a_text.end(), a_text.begin(), [](char a_byte) {
        return static_cast<char>(S_lower[static_cast<unsigned char>(a_byte)]);
    });
    return a_text;
}

// Never destroyed: static objects may still hold these references while they die.

const std::string& EmptyString()
{
    static const auto* const text = new std::string;
    return *text;
}

const std::wstring& EmptyWString()
{
    static const auto* const text = new std::wstring;
    return *text;
}

const std::string& NullString()
{
    // Longer than any packed code, so that no real code can be taken for it.
    static const auto* const text = new std::string("(null)");
    return *text;
}

} // namespace VeloTools::String
