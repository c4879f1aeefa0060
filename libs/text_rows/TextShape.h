#pragma once

#include "text_rows/RowLayout.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kalvento::rows {

class LineBuffer;
struct ReadHooks;
struct ReadOptions;

enum EColumnKind : std::uint8_t { ESkip, EWholeTime, EDatePart, EClockPart, ESymbol, ESeries };

/// What one column of the file holds.
struct ColumnPlan {
    EColumnKind kind = ESkip;
    std::size_t place = 0; // of the series in the layout
    std::string header;
    std::string_view expected;
};

/// The shape of a whole text, as its header and first rows show it.
struct TextShape {
    RowLayout layout;
    char delimiter = ',';
    char decimal = '.';
    std::string header; ///< The line itself; empty where there is none.
    std::vector<ColumnPlan> columns;
    std::size_t columnsNeeded = 0; ///< One past the last column that isn't skipped.
    bool newestFirst = false;      ///< The first rows run from the newest to the oldest.
    bool hasSymbolColumn = false;  ///< RowLayout::hasSymbols, unless only one instrument is taken.
    std::int64_t stampShift =
        0; ///< By how many seconds candles are stamped late (ReadOptions::stampedWithEnd).

    bool Has(EColumnKind a_kind) const;
    bool Has(ESeriesId a_series) const { return layout.Has(a_series); }

    /// Reads and consumes the header, and looks through the first rows without consuming them. Raises RowsFault:
    /// EFaultData for what is missing or unclear, EFaultOptions for options that don't fit.
    static TextShape Find(LineBuffer& a_lines, const ReadOptions& a_options, const ReadHooks& a_hooks);
};

} // namespace kalvento::rows
