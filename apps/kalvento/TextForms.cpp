#include "kalvento/TextForms.h"

#include "kalvento/RowWriter.h"
#include "time/NDateTime.h"

#include <boost/json/serialize.hpp>
#include <boost/json/string.hpp>
#include <boost/json/value.hpp>

#include <algorithm>
#include <utility>

namespace kalvento::tool {

namespace {

// Characters as a terminal shows them: every byte but the continuations of a UTF-8 sequence.
std::size_t Width(std::string_view a_text)
{
    return static_cast<std::size_t>(std::count_if(a_text.begin(), a_text.end(), [](char a_byte) {
        return (static_cast<unsigned char>(a_byte) & 0xC0U) != 0x80U;
    }));
}

} // namespace

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
    return boost::json::serialize(boost::json::string(a_utf8.data(), a_utf8.size()));
}

TextTable::TextTable(std::vector<std::string> a_header, std::vector<bool> a_rightAligned)
    : m_rightAligned(std::move(a_rightAligned))
{
    m_rows.push_back(std::move(a_header));
}

void TextTable::Add(std::vector<std::string> a_cells)
{
    m_rows.push_back(std::move(a_cells));
}

std::string TextTable::ToText(std::size_t a_indent) const
{
    std::vector<std::size_t> widths(m_rightAligned.size());
    for (const auto& row : m_rows)
        for (std::size_t column = 0; column < row.size(); ++column)
            widths[column] = std::max(widths[column], Width(row[column]));

    std::string text;
    for (const auto& row : m_rows) {
        std::string line(a_indent, ' ');
        for (std::size_t column = 0; column < row.size(); ++column) {
            const std::string blanks(widths[column] - Width(row[column]), ' ');
            line += column > 0 ? "  " : "";
            line += m_rightAligned[column] ? blanks + row[column] : row[column] + blanks;
        }
        line.erase(line.find_last_not_of(' ') + 1);
        text += line + '\n';
    }
    return text;
}

} // namespace kalvento::tool
