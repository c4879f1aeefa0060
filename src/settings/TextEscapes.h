#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Text that XML can't carry, or that a reader would not see, written with backslashes: \\ \n \r \t, \s for a blank,
/// \x{1F} for the number of any wide character.
namespace kalvento::internal::TextEscapes {

/// True where a text can't stand as it is: it holds control characters, what is not a code point, blanks at either end,
/// or, if only ASCII is wanted, anything else.
bool Needed(std::wstring_view a_text, bool a_asciiOnly);
/// Can be read back, whatever the text holds.
std::wstring Escape(std::wstring_view a_text, bool a_asciiOnly);
/// Empty where a backslash is followed by anything else than the above.
std::optional<std::wstring> Unescape(std::wstring_view a_text);

} // namespace kalvento::internal::TextEscapes
