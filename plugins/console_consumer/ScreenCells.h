#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// What a cell means; the terminal's colours are chosen where it is painted.
enum EScreenInk : std::uint8_t { EInkNormal, EInkDim, EInkUp, EInkDown, EInkAccent };

/// The ink of a rise, a fall, or neither, NaN included.
inline EScreenInk InkOf(double a_change)
{
    if (a_change > 0)
        return EInkUp;
    return a_change < 0 ? EInkDown : EInkNormal;
}

/// One character of the screen, one column wide.
struct ScreenCell {
    wchar_t text = L' ';
    EScreenInk ink = EInkNormal;
    bool bold = false;
    bool reversed = false; ///< Bars and the first and last line.
};

/// A part of a picture.
struct ScreenArea {
    int left;
    int top;
    int width;
    int height;
};

/// How many columns a text takes.
inline int Length(std::wstring_view a_text)
{
    return static_cast<int>(a_text.size());
}

/// A picture of a terminal, made without one.
class ScreenCells {
public:
    /// Blank; sizes below 1 are taken as 1.
    ScreenCells(int a_width, int a_height);

    int GetWidth() const { return m_width; }
    int GetHeight() const { return m_height; }
    /// Blank outside the screen.
    ScreenCell At(int a_column, int a_row) const;
    std::wstring GetLine(int a_row) const;

    /// Here and below: what lies outside is cut off.
    void Put(int a_column, int a_row, const ScreenCell& a_cell);
    /// Characters that can't be shown in one column become '?'.
    void Write(int a_column, int a_row, std::wstring_view a_text, EScreenInk a_ink = EInkNormal,
               bool a_bold = false);
    /// Right-aligned: the text's last character is just before a_end.
    void WriteBefore(int a_end, int a_row, std::wstring_view a_text, EScreenInk a_ink = EInkNormal,
                     bool a_bold = false);
    void Reverse(int a_column, int a_row, int a_count, EScreenInk a_ink);

private:
    int m_width;
    int m_height;
    std::vector<ScreenCell> m_cells;
};
