#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>

/// Places in a face name, the ending zero included.
inline constexpr std::size_t LF_FACESIZE = 32;

inline constexpr std::int32_t FW_NORMAL = 400;
inline constexpr std::int32_t FW_BOLD = 700;

/// What a font is asked for by; the fields are public as on the platform. One wide character of the name is one code
/// point; a form of 16-bit units converts at its boundary.
struct LOGFONTW {
    std::int32_t lfHeight = 0; ///< Pixels: below zero the size of the letters, above zero that of their cell.
    std::int32_t lfWidth = 0;  ///< 0: as the face has it.
    std::int32_t lfEscapement = 0;
    std::int32_t lfOrientation = 0;
    std::int32_t lfWeight = 0; ///< 400 is normal, 700 bold.
    std::uint8_t lfItalic = 0; ///< This and the two below: 0 or 1.
    std::uint8_t lfUnderline = 0;
    std::uint8_t lfStrikeOut = 0;
    std::uint8_t lfCharSet = 0;
    std::uint8_t lfOutPrecision = 0;
    std::uint8_t lfClipPrecision = 0;
    std::uint8_t lfQuality = 0;
    std::uint8_t lfPitchAndFamily = 0;
    wchar_t lfFaceName[LF_FACESIZE] = {}; ///< Ended by a zero.

    /// Up to the first zero; all of it where there is none.
    std::wstring_view FaceName() const
    {
        const auto* const end = std::find(std::begin(lfFaceName), std::end(lfFaceName), L'\0');
        return {lfFaceName, static_cast<std::size_t>(end - lfFaceName)};
    }
    /// Takes the first 31 characters, up to a zero if there is one, and clears the places after them. a_name may be a
    /// part of this one's own name.
    void SetFaceName(std::wstring_view a_name)
    {
        const std::wstring_view name = a_name.substr(0, std::min(a_name.find(L'\0'), LF_FACESIZE - 1));
        std::array<wchar_t, LF_FACESIZE> padded{};
        std::copy(name.begin(), name.end(), padded.begin());
        std::copy(padded.begin(), padded.end(), std::begin(lfFaceName));
    }

    /// The same as comparing the bytes: there is no padding.
    friend bool operator==(const LOGFONTW&, const LOGFONTW&) = default;
};
static_assert(sizeof(LOGFONTW) == 28 + LF_FACESIZE * sizeof(wchar_t));
