#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

class NDateTime;

/// How the tool prints single values and small tables. UTF-8.
namespace kalvento::tool {

/// "2024-08-08 23:54:15" from the packed fields, or the date alone; T between date and time in JSON.
std::string FormatTime(const NDateTime& a_time, bool a_dateOnly = false, char a_between = ' ');
void AppendTime(std::string& a_text, const NDateTime& a_time, bool a_dateOnly, char a_between);
/// The shortest decimal that reads back as the same double.
std::string FormatNumber(double a_value);
void AppendNumber(std::string& a_text, double a_value);
/// The same for tables that people read, rounded to eight decimals where further ones only come from sums of binary
/// fractions.
std::string ShownNumber(double a_value);
/// FormatTime, followed by " #7" where the ordering counter isn't 0; "invalid" where the status is not valid.
std::string ShownTimeWithCounter(const NDateTime& a_time);
/// "1 234 567": thousands set apart, for people.
std::string ShownCount(std::uint64_t a_count);
/// A JSON string with its quotes, in valid UTF-8 whatever the bytes: U+FFFD for those that aren't.
std::string JsonText(std::string_view a_utf8);
/// A field of CSV, in quotes where it needs them.
std::string QuoteField(std::string_view a_text);
/// How many characters a terminal shows of it.
std::size_t ShownWidth(std::string_view a_utf8);

/// A table of text whose columns are as wide as their widest cell, in characters and not in bytes.
class TextTable {
public:
    enum EColumn : std::uint32_t {
        EColumnText,   ///< At the left.
        EColumnNumber, ///< At the right.
        /// At the right, numbers of one kind: zeros pad them to the same number of decimals ("100.00" beside "99.97"),
        /// where at most eight are needed. A column with anything but plain numbers stays as it is.
        EColumnValue
    };

    TextTable(std::vector<std::string> a_header, std::vector<EColumn> a_columns);
    /// Cells from outside may hold anything: each stays one line, without controls.
    void Add(std::vector<std::string> a_cells);
    /// Lines with two blanks between columns, none at a line's end; a_indent blanks before each.
    std::string ToText(std::size_t a_indent = 0) const;

private:
    std::size_t CommonDecimals(std::size_t a_column) const;
    std::string Cell(const std::vector<std::string>& a_row, std::size_t a_column,
                     std::size_t a_decimals) const;

    std::vector<std::vector<std::string>> m_rows;
    std::vector<EColumn> m_columns;
};

} // namespace kalvento::tool
