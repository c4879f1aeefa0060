#pragma once

#include "platform/Export.h"

#include <cstddef>
#include <string>
#include <string_view>

/// Text from outside (names, messages of others, pieces of files) on its way to a terminal or a log: what would move the
/// cursor, change colours, begin a line, or turn the direction of writing shows as an escape instead. Controls of one
/// byte become `\n`, `\r`, `\t` or `\xHH`; separators of lines and marks of direction `\u{HHHH}`; bytes that aren't
/// UTF-8 `\xHH`. All else stays as it is, backslashes too: what is shown isn't meant to be read back.
namespace kalvento::internal::ShownText {

/// Whether a character would act on a terminal instead of being shown.
KALVENTO_API bool IsControl(wchar_t a_character);
/// Appends one character in UTF-8, or its escape.
KALVENTO_API void Append(std::string& a_utf8, wchar_t a_character);

/// One line from UTF-8, or what should be that.
KALVENTO_API std::string OneLine(std::string_view a_utf8);
/// Lines from UTF-8: line feeds and tabs stay.
KALVENTO_API std::string Lines(std::string_view a_utf8);
/// How many bytes at the end begin a letter whose rest is missing; 0 to 3.
KALVENTO_API std::size_t CountCutBytes(std::string_view a_utf8);

} // namespace kalvento::internal::ShownText
