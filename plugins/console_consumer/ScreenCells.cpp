#include "console_consumer/ScreenCells.h"

#include <algorithm>
#include <cstddef>

namespace {

// A source's name for an instrument could otherwise move the terminal's cursor, or take two columns. The ranges are
// those of Unicode that hold only letters and signs of one column; the C library's answer depends on the locale.
bool FitsCell(wchar_t a_character)
{
    const auto code = std::char_traits<wchar_t>::to_int_type(a_character);
    const auto isIn = [code](std::uint32_t a_first, std::uint32_t a_last) {
        return code >= a_first && code <= a_last;
    };
    return isIn(0x20, 0x7E) || isIn(0xA1, 0xAC) || isIn(0xAE, 0x2FF) || isIn(0x370, 0x482) ||
           isIn(0x1E00, 0x1FFF) || isIn(0x2010, 0x2027) || isIn(0x2030, 0x205E) || isIn(0x20A0, 0x20C0) ||
           isIn(0x2190, 0x2319) || isIn(0x2500, 0x25FC);
}

} // namespace

ScreenCells::ScreenCells(int a_width, int a_height)
    : m_width(std::max(a_width, 1)),
      m_height(std::max(a_height, 1)),
      m_cells(static_cast<std::size_t>(m_width) * static_cast<std::size_t>(m_height))
{}

ScreenCell ScreenCells::At(int a_column, int a_row) const
{
    if (a_column < 0 || a_column >= m_width || a_row < 0 || a_row >= m_height)
        return {};
    return m_cells[static_cast<std::size_t>(a_row) * static_cast<std::size_t>(m_width) +
                   static_cast<std::size_t>(a_column)];
}

std::wstring ScreenCells::GetLine(int a_row) const
{
    std::wstring line;
    for (int column = 0; column < m_width; ++column)
        line += At(column, a_row).text;
    return line;
}

void ScreenCells::Put(int a_column, int a_row, const ScreenCell& a_cell)
{
    if (a_column < 0 || a_column >= m_width || a_row < 0 || a_row >= m_height)
        return;
    m_cells[static_cast<std::size_t>(a_row) * static_cast<std::size_t>(m_width) +
            static_cast<std::size_t>(a_column)] = a_cell;
}

void ScreenCells::Write(int a_column, int a_row, std::wstring_view a_text, EScreenInk a_ink, bool a_bold)
{
    for (const wchar_t character : a_text) {
        Put(a_column, a_row,
            {FitsCell(character) ? character : L'?', a_ink, a_bold, At(a_column, a_row).reversed});
        ++a_column;
    }
}

void ScreenCells::WriteBefore(int a_end, int a_row, std::wstring_view a_text, EScreenInk a_ink, bool a_bold)
{
    Write(a_end - static_cast<int>(a_text.size()), a_row, a_text, a_ink, a_bold);
}

void ScreenCells::Reverse(int a_column, int a_row, int a_count, EScreenInk a_ink)
{
    for (int column = a_column; column < a_column + a_count; ++column) {
        ScreenCell cell = At(column, a_row);
        cell.reversed = true;
        cell.ink = a_ink;
        Put(column, a_row, cell);
    }
}
