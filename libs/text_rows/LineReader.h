#pragma once

#include "text_rows/RowsFault.h"
#include "text_rows/SymbolTable.h"
#include "text_rows/TextFields.h"
#include "text_rows/TextShape.h"
#include "text_rows/TimeText.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kalvento::rows {

struct RowBlock;

/// Reads the lines of a text into rows, but for their times, which are still to be put in order. There is a fast path
/// for the form that nearly all lines have, and one for all the others.
class LineReader {
public:
    /// a_timeFormat: ReadOptions::timeFormat. Both are used as they are, and outlive this.
    LineReader(const TextShape& a_shape, const std::string& a_timeFormat);

    /// Rows go into this block from now on, which has the room for them.
    void Aim(RowBlock& a_block);
    /// A line in the usual form, field by field in one go. Returns the start of the next line, or null where the line
    /// needs ReadAny: nothing is decided then, and what was written to the row is written again. a_end: the end of the
    /// last whole line of the buffer, which is padded after that (LineBuffer).
    const char* ReadPlain(const char* a_line, const char* a_end, WallTime& a_time, std::size_t a_row);
    /// A line of any form. False where it can't be read; a_fault then tells why, and the column.
    bool ReadAny(std::string_view a_line, WallTime& a_time, std::size_t a_row, RowsFault::Parts& a_fault);

    /// Place of the row's symbol; 0 where there are none.
    std::uint32_t GetSymbol(std::size_t a_row) const
    {
        return m_shape.hasSymbolColumn ? m_symbolRows[a_row] : 0;
    }
    const SymbolTable& GetSymbols() const { return m_symbols; }
    void ContinueFrom(const LineReader& a_before) { m_symbols = a_before.m_symbols; }

private:
    const char* ReadPlainTime(const char* a_text, WallTime& a_time);
    const char* ReadPlainSymbol(const char* a_text, std::size_t a_row);
    bool ReadField(const ColumnPlan& a_column, const std::string& a_text, WallTime& a_time,
                   std::size_t a_row);

    const TextShape& m_shape;
    const std::string& m_timeFormat;
    SymbolTable m_symbols;
    std::uint32_t* m_symbolRows = nullptr;
    std::vector<double*> m_values;
    std::vector<Field> m_fields;
    // The first ten bytes of the last time, in two overlapping words, and the day that they mean.
    std::int64_t m_dateFront = 0;
    std::int64_t m_dateBack = 0;
    std::int64_t m_day = 0;
};

} // namespace kalvento::rows
