#pragma once

#include "platform/Export.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// CP1250, the narrow code page of a Polish desktop, on every machine and whatever the locale says.
namespace CodePage {

/// Unicode of the bytes 0x80 to 0xFF. The five bytes that the code page leaves undefined (81, 83, 88, 90, 98) map to
/// the C1 controls of the same number, so every byte string survives the trip through wide text. Source: the mapping
/// table CP1250 of the Unicode consortium (VENDORS/MICSFT/WINDOWS/CP1250.TXT).
inline constexpr std::array<std::uint16_t, 128> S_cp1250High = {
    0x20AC, 0x0081, 0x201A, 0x0083, 0x201E, 0x2026, 0x2020, 0x2021, 0x0088, 0x2030, 0x0160, 0x2039, 0x015A,
    0x0164, 0x017D, 0x0179, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014, 0x0098, 0x2122,
    0x0161, 0x203A, 0x015B, 0x0165, 0x017E, 0x017A, 0x00A0, 0x02C7, 0x02D8, 0x0141, 0x00A4, 0x0104, 0x00A6,
    0x00A7, 0x00A8, 0x00A9, 0x015E, 0x00AB, 0x00AC, 0x00AD, 0x00AE, 0x017B, 0x00B0, 0x00B1, 0x02DB, 0x0142,
    0x00B4, 0x00B5, 0x00B6, 0x00B7, 0x00B8, 0x0105, 0x015F, 0x00BB, 0x013D, 0x02DD, 0x013E, 0x017C, 0x0154,
    0x00C1, 0x00C2, 0x0102, 0x00C4, 0x0139, 0x0106, 0x00C7, 0x010C, 0x00C9, 0x0118, 0x00CB, 0x011A, 0x00CD,
    0x00CE, 0x010E, 0x0110, 0x0143, 0x0147, 0x00D3, 0x00D4, 0x0150, 0x00D6, 0x00D7, 0x0158, 0x016E, 0x00DA,
    0x0170, 0x00DC, 0x00DD, 0x0162, 0x00DF, 0x0155, 0x00E1, 0x00E2, 0x0103, 0x00E4, 0x013A, 0x0107, 0x00E7,
    0x010D, 0x00E9, 0x0119, 0x00EB, 0x011B, 0x00ED, 0x00EE, 0x010F, 0x0111, 0x0144, 0x0148, 0x00F3, 0x00F4,
    0x0151, 0x00F6, 0x00F7, 0x0159, 0x016F, 0x00FA, 0x0171, 0x00FC, 0x00FD, 0x0163, 0x02D9};

/// The CP1250 byte of a code point, or -1 where the code page lacks it.
constexpr int ByteOf(char32_t a_codePoint)
{
    if (a_codePoint < 0x80)
        return static_cast<int>(a_codePoint);
    for (std::size_t place = 0; place < S_cp1250High.size(); ++place) {
        if (S_cp1250High[place] == a_codePoint)
            return static_cast<int>(0x80 + place);
    }
    return -1;
}

// All conversions take any input and never fail because of its content. Wide characters are code points; anything else
// (above 0x10FFFF, a surrogate) is replaced as each function says.

/// One wide character for each byte. Every byte string survives the way there and back.
KALVENTO_API std::wstring Cp1250ToWide(std::string_view a_text);
/// One byte for each wide character; what the code page lacks becomes '?'.
KALVENTO_API std::string WideToCp1250(std::wstring_view a_text);
/// True where WideToCp1250 would lose nothing.
KALVENTO_API bool FitsCp1250(std::wstring_view a_text);

/// Each malformed piece of the text (a longest start of a sequence that breaks off, or a byte that can't start one)
/// becomes one U+FFFD. Overlong forms and encoded surrogates are malformed.
KALVENTO_API std::wstring Utf8ToWide(std::string_view a_text);
/// What is not a code point becomes U+FFFD.
KALVENTO_API std::string WideToUtf8(std::wstring_view a_text);
KALVENTO_API std::string Cp1250ToUtf8(std::string_view a_text);
/// Place of the first malformed byte, the text's length where there is none.
KALVENTO_API std::size_t FindMalformedUtf8(std::string_view a_text);

/// Pairs of surrogates become one wide character; a lone one is kept as it is, so every run of 16-bit units survives
/// the way there and back.
KALVENTO_API std::wstring Utf16ToWide(std::u16string_view a_text);
/// Characters above 0xFFFF become pairs; a lone surrogate is kept; anything above 0x10FFFF becomes U+FFFD.
KALVENTO_API std::u16string WideToUtf16(std::wstring_view a_text);

} // namespace CodePage

namespace kalvento::internal {

/// A literal's text on its way from UTF-8 to CP1250 at compile time.
template<std::size_t Size>
struct Cp1250Literal {
    std::array<char, Size> text{};

    // NOLINTNEXTLINE(google-explicit-constructor): a literal operator template needs the implicit conversion.
    consteval Cp1250Literal(const char (&a_utf8)[Size])
    {
        std::size_t in = 0;
        std::size_t out = 0;
        while (in < Size) {
            const auto lead = static_cast<unsigned char>(a_utf8[in]);
            char32_t codePoint = lead;
            std::size_t length = 1;
            if (lead >= 0xE0) {
                codePoint = lead & 0x0FU;
                length = 3;
            } else if (lead >= 0xC0) {
                codePoint = lead & 0x1FU;
                length = 2;
            }
            for (std::size_t part = 1; part < length; ++part)
                codePoint = (codePoint << 6U) | (static_cast<unsigned char>(a_utf8[in + part]) & 0x3FU);
            const int byte = CodePage::ByteOf(codePoint);
            if (byte < 0)
                throw "A character of this literal does not exist in CP1250";
            text[out++] = static_cast<char>(static_cast<unsigned char>(byte));
            in += length;
        }
    }
};

} // namespace kalvento::internal

/// Narrow text of the library: "Wyjątek ..."_cp1250 is the text in CP1250, ended by a zero byte, with static life.
/// Does not compile where the code page lacks a character.
template<kalvento::internal::Cp1250Literal Literal>
constexpr const char* operator""_cp1250()
{
    return Literal.text.data();
}
