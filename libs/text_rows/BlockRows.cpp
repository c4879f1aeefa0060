#include "text_rows/BlockRows.h"

#include "series/ESeriesId.h"
#include "text_rows/ByteSource.h"
#include "text_rows/RowBlock.h"
#include "text_rows/RowCounts.h"
#include "text_rows/RowsFault.h"
#include "text_rows/SourceStreambuf.h"
#include "time/TimeParts.h"

#include <algorithm>
#include <istream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace kalvento::rows {

namespace {

[[noreturn]] void Fail(const ByteSource& a_source, const std::string& a_found)
{
    throw RowsFault({.found = a_found, .file = a_source.GetName()});
}

} // namespace

bool BlockRows::Recognise(std::string_view a_start)
{
    return a_start.starts_with(std::string_view("\x01\0\0\0", 4));
}

BlockRows::BlockRows(std::string_view a_start, ByteSource& a_source)
{
    SourceStreambuf bytes(a_source, a_start);
    std::istream stream(&bytes);
    try {
        m_rows.Read(stream);
    } catch (const std::length_error&) {
        Fail(a_source, "a damaged series block: it claims more rows or columns than any memory holds");
    }
    if (stream.fail() || !m_rows.IsValid())
        Fail(a_source, "a damaged series block: expected columns and times of one "
                       "length, a valid interval, and open, high and low in candles");
    const std::vector<NDateTime>& rows = std::as_const(m_rows).TimeSeries();
    for (std::size_t row = 0; row < rows.size(); ++row) {
        if (!rows[row].IsValid() || (row > 0 && rows[row] < rows[row - 1]))
            Fail(a_source, "a damaged series block: the time of row " + std::to_string(row + 1) +
                               " is invalid or earlier than the one before");
    }
    const RowLayout layout = GetLayout();
    if (!std::is_sorted(layout.series.begin(), layout.series.end()) ||
        std::adjacent_find(layout.series.begin(), layout.series.end()) != layout.series.end())
        Fail(a_source, "a damaged series block: its columns aren't in order");
    if (!layout.Has(Price))
        Fail(a_source, "the series block holds no prices");
}

RowLayout BlockRows::GetLayout() const
{
    RowLayout layout;
    layout.interval = m_rows.GetIntervalData();
    for (const auto& [series, values] : m_rows)
        layout.series.push_back(series);
    return layout;
}

bool BlockRows::Read(RowBlock& a_block, std::size_t a_limit, std::size_t a_keep,
                     const std::optional<std::int64_t>& a_from, const std::optional<std::int64_t>& a_to,
                     RowCounts& a_counts)
{
    const std::vector<NDateTime>& rows = std::as_const(m_rows).TimeSeries();
    const auto before = [](const NDateTime& a_time, std::int64_t a_seconds) {
        return TimeParts::DayOf(a_time) < a_seconds / TimeParts::S_secondsOfDay;
    };
    while (a_from && m_next < rows.size() && before(rows[m_next], *a_from)) {
        ++a_counts.outside;
        ++m_next;
    }
    std::size_t count = std::min(a_limit, rows.size() - m_next);
    while (a_to && count > 0 && !before(rows[m_next + count - 1], *a_to))
        --count;
    a_block.Reserve(
        a_keep + count,
        static_cast<std::size_t>(std::distance(std::as_const(m_rows).begin(), std::as_const(m_rows).end())),
        false);
    const auto first = static_cast<std::ptrdiff_t>(m_next);
    const auto end = static_cast<std::ptrdiff_t>(m_next + count);
    const auto target = static_cast<std::ptrdiff_t>(a_keep);
    std::copy(rows.begin() + first, rows.begin() + end, a_block.times.begin() + target);
    std::size_t column = 0;
    for (const auto& [series, columnValues] : std::as_const(m_rows)) {
        std::copy(columnValues.begin() + first, columnValues.begin() + end,
                  a_block.columns[column].begin() + target);
        ++column;
    }
    m_next += count;
    a_counts.rows += count;
    a_block.rows = a_keep + count;
    return count > 0;
}

} // namespace kalvento::rows
