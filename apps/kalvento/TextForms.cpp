#include "kalvento/TextForms.h"

#include "platform/CodePage.h"
#include "platform/ShownText.h"
#include "time/NDateTime.h"

#include <boost/json/serialize.hpp>
#include <boost/json/string.hpp>
#include <boost/json/value.hpp>
#include <fmt/compile.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <iterator>
#include <utility>

namespace kalvento::tool {

namespace {

constexpr std::size_t S_mostDecimals = 8;

std::size_t Decimals(std::string_view a_number)
{
    const std::size_t point = a_number.find('.');
    return point == std::string_view::npos ? 0 : a_number.size() - point - 1;
}

} // namespace

void AppendTime(std::string& a_text, const NDateTime& a_time, bool a_dateOnly, char a_between)
{
    const auto out = std::back_inserter(a_text);
    fmt::format_to(out, FMT_COMPILE("{:04}-{:02}-{:02}"), a_time.GetYear(), a_time.GetMonth(),
                   a_time.GetDay());
    if (!a_dateOnly)
        fmt::format_to(out, FMT_COMPILE("{}{:02}:{:02}:{:02}"), a_between, a_time.GetHour(),
                       a_time.GetMinute(), a_time.GetSecond());
}

void AppendNumber(std::string& a_text, double a_value)
{
    // 1e+06 is shorter than 1000000, but doesn't belong in a table of volumes.
    const double size = std::fabs(a_value);
    const auto form =
        size < 1e15 && (size == 0.0 || size >= 1e-6) ? std::chars_format::fixed : std::chars_format::general;
    std::array<char, 48> digits{};
    const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), a_value, form);
    a_text.append(digits.data(), static_cast<std::size_t>(end - digits.data()));
}

std::string FormatTime(const NDateTime& a_time, bool a_dateOnly, char a_between)
{
    std::string text;
    AppendTime(text, a_time, a_dateOnly, a_between);
    return text;
}

std::string FormatNumber(double a_value)
{
    std::string text;
    AppendNumber(text, a_value);
    return text;
}

std::string ShownNumber(double a_value)
{
    const std::string exact = FormatNumber(a_value);
    if (Decimals(exact) <= S_mostDecimals || std::fabs(a_value) < 1.0)
        return exact;
    std::string text = fmt::format("{:.{}f}", a_value, S_mostDecimals);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.')
        text.pop_back();
    return text;
}

std::string ShownTimeWithCounter(const NDateTime& a_time)
{
    if (!a_time.IsValid())
        return "invalid";
    std::string text = FormatTime(a_time);
    if (a_time.GetMilliSec() != 0)
        text += " #" + std::to_string(a_time.GetMilliSec());
    return text;
}

std::string ShownCount(std::uint64_t a_count)
{
    std::string text = std::to_string(a_count);
    for (std::size_t place = text.size(); place > 3; place -= 3)
        text.insert(place - 3, 1, ' ');
    return text;
}

std::string JsonText(std::string_view a_utf8)
{
    if (CodePage::FindMalformedUtf8(a_utf8) != a_utf8.size())
        return JsonText(CodePage::WideToUtf8(CodePage::Utf8ToWide(a_utf8)));
    return boost::json::serialize(boost::json::string(a_utf8.data(), a_utf8.size()));
}

std::string QuoteField(std::string_view a_text)
{
    if (a_text.find_first_of(",\"\r\n#") == std::string_view::npos)
        return std::string(a_text);
    std::string quoted = "\"";
    for (const char sign : a_text) {
        if (sign == '"')
            quoted += '"';
        quoted += sign;
    }
    return quoted + '"';
}

std::size_t ShownWidth(std::string_view a_utf8)
{
    // Every byte but the continuations of a sequence.
    return static_cast<std::size_t>(std::count_if(a_utf8.begin(), a_utf8.end(), [](char a_byte) {
        return (static_cast<unsigned char>(a_byte) & 0xC0U) != 0x80U;
    }));
}

TextTable::TextTable(std::vector<std::string> a_header, std::vector<EColumn> a_columns)
    : m_columns(std::move(a_columns))
{
    m_rows.push_back(std::move(a_header));
}

void TextTable::Add(std::vector<std::string> a_cells)
{
    for (std::string& cell : a_cells)
        cell = internal::ShownText::OneLine(cell);
    m_rows.push_back(std::move(a_cells));
}

// How many decimals the values of a column are shown with; 0 where they stay as they are.
std::size_t TextTable::CommonDecimals(std::size_t a_column) const
{
    if (m_columns[a_column] != EColumnValue)
        return 0;
    std::size_t decimals = 0;
    for (auto row = m_rows.begin() + 1; row != m_rows.end(); ++row) {
        if (a_column >= row->size())
            continue;
        const std::string& cell = (*row)[a_column];
        if (cell.find_first_not_of("-.0123456789") != std::string::npos)
            return 0;
        decimals = std::max(decimals, Decimals(cell));
    }
    return decimals <= S_mostDecimals ? decimals : 0;
}

std::string TextTable::Cell(const std::vector<std::string>& a_row, std::size_t a_column,
                            std::size_t a_decimals) const
{
    std::string cell = a_row[a_column];
    if (a_decimals == 0 || cell.empty() || &a_row == &m_rows.front())
        return cell;
    const std::size_t decimals = Decimals(cell);
    if (decimals == 0)
        cell += '.';
    return cell.append(a_decimals - decimals, '0');
}

std::string TextTable::ToText(std::size_t a_indent) const
{
    std::vector<std::size_t> decimals(m_columns.size());
    std::vector<std::size_t> widths(m_columns.size());
    for (std::size_t column = 0; column < m_columns.size(); ++column) {
        decimals[column] = CommonDecimals(column);
        for (const auto& row : m_rows)
            if (column < row.size())
                widths[column] = std::max(widths[column], ShownWidth(Cell(row, column, decimals[column])));
    }

    std::string text;
    for (const auto& row : m_rows) {
        std::string line(a_indent, ' ');
        for (std::size_t column = 0; column < row.size(); ++column) {
            const std::string cell = Cell(row, column, decimals[column]);
            const std::string blanks(widths[column] - ShownWidth(cell), ' ');
            line += column > 0 ? "  " : "";
            line += m_columns[column] == EColumnText ? cell + blanks : blanks + cell;
        }
        line.erase(line.find_last_not_of(' ') + 1);
        text += line + '\n';
    }
    return text;
}

} // namespace kalvento::tool
