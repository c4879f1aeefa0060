#include "folding/ColumnBlock.h"

#include <algorithm>
#include <utility>

void ColumnBlock::Reserve(std::size_t a_rows, std::size_t a_columns)
{
    if (times.size() < a_rows)
        times.resize(a_rows);
    columns.resize(a_columns);
    for (std::vector<double>& column : columns) {
        if (column.size() < a_rows)
            column.resize(a_rows);
    }
}

void ColumnBlock::Append(const ColumnBlock& a_from, std::size_t a_first, std::size_t a_last)
{
    const std::size_t count = a_last - a_first;
    const bool fits = times.size() >= rows + count && columns.size() == a_from.columns.size();
    if (!fits)
        Reserve((rows + count) * 2, a_from.columns.size());
    const auto copy = [&](const auto& a_source, auto& a_target) {
        std::copy_n(a_source.begin() + static_cast<std::ptrdiff_t>(a_first), count,
                    a_target.begin() + static_cast<std::ptrdiff_t>(rows));
    };
    copy(a_from.times, times);
    for (std::size_t column = 0; column < columns.size(); ++column)
        copy(a_from.columns[column], columns[column]);
    rows += count;
}

void ColumnBlock::RemoveBefore(std::size_t a_first)
{
    const auto move = [&](auto& a_values) {
        std::copy(a_values.begin() + static_cast<std::ptrdiff_t>(a_first),
                  a_values.begin() + static_cast<std::ptrdiff_t>(rows), a_values.begin());
    };
    move(times);
    for (std::vector<double>& column : columns)
        move(column);
    rows -= a_first;
}

std::size_t ColumnBlock::CountBefore(const NDateTime& a_time) const
{
    const auto end = times.begin() + static_cast<std::ptrdiff_t>(rows);
    return static_cast<std::size_t>(std::lower_bound(times.begin(), end, a_time) - times.begin());
}

std::size_t ColumnBlock::CountUpTo(const NDateTime& a_time) const
{
    const auto end = times.begin() + static_cast<std::ptrdiff_t>(rows);
    return static_cast<std::size_t>(std::upper_bound(times.begin(), end, a_time) - times.begin());
}

Record ColumnBlock::At(std::size_t a_row, std::span<const ESeriesId> a_series) const
{
    Record::Values values;
    values.reserve(a_series.size());
    for (std::size_t place = 0; place < a_series.size(); ++place)
        values.emplace_back(a_series[place], columns[place][a_row]);
    return {times[a_row], std::move(values)};
}

History ColumnBlock::Between(std::size_t a_first, std::size_t a_last, std::span<const ESeriesId> a_series,
                             IntervalAndMultiplicity a_interval) const
{
    const auto first = static_cast<std::ptrdiff_t>(a_first);
    const auto last = static_cast<std::ptrdiff_t>(a_last);
    History::Columns values;
    for (std::size_t place = 0; place < a_series.size(); ++place) {
        values.emplace_back(a_series[place], std::vector<double>());
        // A block that never had a row has no columns.
        if (first < last)
            values.back().second.assign(columns[place].begin() + first, columns[place].begin() + last);
    }
    return {a_interval.GetInterval(), a_interval.GetMultiplicity(),
            std::vector<NDateTime>(times.begin() + first, times.begin() + last), std::move(values)};
}
