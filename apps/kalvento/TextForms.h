#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

class NDateTime;

/// How single values and small tables look in what the tool prints. UTF-8.
namespace kalvento::tool {

/// FormatTime of RowWriter.h, and behind it " #7" where the ordering counter isn't 0; "invalid" where the status is not valid.
std::string ShownTimeWithCounter(const NDateTime& a_time);
/// "1 234 567": thousands apart, for people.
std::string ShownCount(std::uint64_t a_count);
/// A JSON string with its quotes.
std::string JsonText(std::string_view a_utf8);

/// A table of text whose columns are as wide as their widest cell, in characters and not in bytes.
class TextTable {
public:
    /// a_rightAligned: which columns hold numbers.
    TextTable(std::vector<std::string> a_header, std::vector<bool> a_rightAligned);
    void Add(std::vector<std::string> a_cells);
    /// Lines with two blanks between columns, none at a line's end; a_indent blanks before each.
    std::string ToText(std::size_t a_indent = 0) const;

private:
    std::vector<std::vector<std::string>> m_rows;
    std::vector<bool> m_rightAligned;
};

} // namespace kalvento::tool
