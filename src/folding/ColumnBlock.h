#pragma once

#include "platform/Export.h"
#include "series/ESeriesId.h"
#include "series/History.h"
#include "series/Record.h"
#include "time/IntervalAndMultiplicity.h"
#include "time/NDateTime.h"

#include <cstddef>
#include <span>
#include <vector>

/// Some rows, column by column. The vectors may be longer than the rows that they hold: from one use to the next they
/// stay at their full length, since shrinking and growing them would write every element once more. Whoever holds the
/// block knows which series the columns belong to.
struct KALVENTO_API ColumnBlock {
    std::size_t rows = 0;
    std::vector<NDateTime> times;
    std::vector<std::vector<double>> columns;

    /// Makes room for that many rows of that many columns, never less than before.
    void Reserve(std::size_t a_rows, std::size_t a_columns);
    /// Adds rows of a block of the same columns: a_first to before a_last. Growing piece by piece stays linear. A block
    /// without rows takes on the columns.
    void Append(const ColumnBlock& a_from, std::size_t a_first, std::size_t a_last);
    /// Moves the rows from a_first on to the front and drops those before them.
    void RemoveBefore(std::size_t a_first);
    /// How many rows are earlier than that time; for rows whose times don't fall.
    std::size_t CountBefore(const NDateTime& a_time) const;
    /// How many rows aren't later than that time; likewise.
    std::size_t CountUpTo(const NDateTime& a_time) const;
    /// A row as a record of the series a_series, one for each column.
    Record At(std::size_t a_row, std::span<const ESeriesId> a_series) const;
    /// The rows a_first to before a_last as a history of these series.
    History Between(std::size_t a_first, std::size_t a_last, std::span<const ESeriesId> a_series,
                    IntervalAndMultiplicity a_interval) const;
};
