#include "file_provider/DayRows.h"

#include "time/TimeParts.h"

#include <algorithm>
#include <iterator>

namespace kalvento::files {

namespace {

constexpr std::uint64_t S_stepChunk = 65536;

NDateTime DateOfDay(std::int64_t a_day)
{
    return NDateTime::FromDouble(static_cast<double>(a_day + OleDate::S_unixEpoch));
}

} // namespace

DayRows::DayRows(RowCache& a_cache, std::size_t a_symbol, std::int64_t a_day)
    : m_before(a_cache.FindRow(a_symbol, DateOfDay(a_day)))
{
    const std::uint64_t end = a_cache.FindRow(a_symbol, DateOfDay(a_day + 1));
    for (std::uint64_t row = m_before; row < end; row += S_stepChunk) {
        const History rows = a_cache.ReadRows(a_symbol, row, std::min(row + S_stepChunk, end));
        std::uint64_t number = row;
        for (const NDateTime& time : rows.TimeSeries()) {
            const std::int64_t second = TimeParts::SecondOf(time);
            if (m_steps.empty() || m_steps.back().second != second)
                m_steps.push_back({second, 0});
            m_steps.back().rowsThen = ++number;
        }
    }
}

std::optional<std::int64_t> DayRows::NextAfter(std::int64_t a_second) const
{
    const auto later = Later(a_second);
    return later == m_steps.end() ? std::nullopt : std::optional(later->second);
}

std::uint64_t DayRows::RowsAt(std::int64_t a_second) const
{
    const auto later = Later(a_second);
    return later == m_steps.begin() ? m_before : std::prev(later)->rowsThen;
}

void DayRows::AddSeconds(std::set<std::int64_t>& a_seconds) const
{
    for (const Step& step : m_steps)
        a_seconds.insert(step.second);
}

std::vector<DayRows::Step>::const_iterator DayRows::Later(std::int64_t a_second) const
{
    return std::ranges::upper_bound(m_steps, a_second, {}, &Step::second);
}

} // namespace kalvento::files
