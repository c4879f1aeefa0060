#include "kalvento/RowAdjuster.h"

#include <algorithm>
#include <set>
#include <utility>

namespace kalvento::tool {

namespace {

History MakeHistory(const RowLayout& a_layout)
{
    const IntervalAndMultiplicity interval = a_layout.interval;
    return {std::set<ESeriesId>(a_layout.series.begin(), a_layout.series.end()), interval.GetInterval(),
            interval.GetMultiplicity()};
}

} // namespace

RowAdjuster::RowAdjuster(HistoryOperations a_operations, const RowLayout& a_layout)
    : m_operations(std::move(a_operations)), m_history(MakeHistory(a_layout))
{}

void RowAdjuster::Adjust(RowBlock& a_rows, std::size_t a_first)
{
    // After the day of the last operation, where most rows usually lie, nothing is left to do.
    const auto reaches = [&](const SingleHistoryOperation& a_operation) {
        NDateTime limit = a_operation.GetDate();
        return a_rows.times[a_first] < limit.ShiftDays(1);
    };
    if (a_first >= a_rows.rows || std::none_of(m_operations.begin(), m_operations.end(), reaches))
        return;

    const auto first = static_cast<std::ptrdiff_t>(a_first);
    const auto end = static_cast<std::ptrdiff_t>(a_rows.rows);
    m_history.SetNewTimes(a_rows.times.begin() + first, a_rows.times.begin() + end);
    auto column = m_history.begin();
    for (const std::vector<double>& values : a_rows.columns)
        (column++)->second.assign(values.begin() + first, values.begin() + end);
    m_history.ApplyDataOperations(m_operations);
    column = m_history.begin();
    for (std::vector<double>& values : a_rows.columns) {
        std::copy(column->second.begin(), column->second.end(), values.begin() + first);
        ++column;
    }
}

} // namespace kalvento::tool
