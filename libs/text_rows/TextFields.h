#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kalvento::rows {

/// A field of a line without its quotes, with its place for messages.
struct Field {
    std::string text;
    std::size_t column = 1; // byte in the line, from 1
};

/// Splits one line of a text, without its line feed. False where a quote is left open: in the last field then.
bool SplitLine(std::string_view a_line, char a_delimiter, std::vector<Field>& a_fields);

/// The text with small letters for the capitals of ASCII; other bytes stay.
std::string LowerCase(std::string_view a_text);

/// A text from outside as messages show it: in quotes, cut after 60 bytes, control characters as \xNN.
std::string Quote(std::string_view a_text);

} // namespace kalvento::rows
