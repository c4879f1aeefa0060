#include "series/History.h"

#include "history_operations/HistoryOperations.h"
#include "history_operations/SingleHistoryOperation.h"

#include <algorithm>

// The operations of History that need the list of operations. They are defined here, and the header of History only
// names the two types, so that the data model doesn't depend on what adjusts it.

namespace {

// From this type on an operation changes prices only.
constexpr int S_firstTypeOfPricesOnly = 7;

} // namespace

void History::ApplyDataOperations(const HistoryOperations& a_operations)
{
    for (const SingleHistoryOperation& operation : a_operations)
        ApplyDataOperations(operation);
}

void History::ApplyDataOperations(const SingleHistoryOperation& a_operation)
{
    if (IsEmpty())
        return;

    // The operation's own day is still on the old scale, its afternoon included.
    NDateTime limit = a_operation.GetDate();
    limit.ShiftDays(1);

    const std::vector<NDateTime>& times = TimeSeries();
    const auto end = std::lower_bound(times.begin(), times.end(), limit);
    // Less than half a second before the limit a time is earlier and equal at once: such a first row counts as the
    // first on the new scale, and so do all rows after it.
    if (end == times.end() && (limit < times.front() || limit == times.front()))
        return;
    const auto count = static_cast<std::size_t>(end - times.begin());
    if (count == 0)
        return;

    const double factor = a_operation.GetFactor();
    for (const ESeriesId seriesId : {Price, IntervalOpen, IntervalMin, IntervalMax})
        MultiplaySeriesValues(seriesId, count, factor);
    if (a_operation.GetType() >= S_firstTypeOfPricesOnly)
        return;
    for (const ESeriesId seriesId : {Volume, Lop})
        DivideSeriesValues(seriesId, count, factor);
}

void History::CalculateSeriesValues(ESeriesId a_seriesId, std::size_t a_count,
                                    const std::function<void(double&)>& a_calculate)
{
    const auto column = find(a_seriesId);
    if (column == end())
        return;
    std::vector<double>& values = column->second;
    const std::size_t count = std::min(a_count, values.size());
    for (std::size_t row = 0; row < count; ++row)
        a_calculate(values[row]);
}

void History::MultiplaySeriesValues(ESeriesId a_seriesId, std::size_t a_count, double a_factor)
{
    CalculateSeriesValues(a_seriesId, a_count, [a_factor](double& a_value) { a_value *= a_factor; });
}

void History::DivideSeriesValues(ESeriesId a_seriesId, std::size_t a_count, double a_factor)
{
    CalculateSeriesValues(a_seriesId, a_count, [a_factor](double& a_value) { a_value /= a_factor; });
}
