#include "series/History.h"

#include "platform/CodePage.h"
#include "platform/OleDate.h"
#include "time/TimeParts.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace {

// Midnight of the date that the time reads: sums of small shifts leave a day number a hair below a whole day. By the day
// number, since the year field is too narrow for the far dates by which callers mean "until the end".
NDateTime MidnightOf(const NDateTime& a_time)
{
    if (const auto second = OleDate::ToSeconds(a_time.ToDouble()))
        return NDateTime::FromDouble(static_cast<double>(TimeParts::DayOf(*second)) + OleDate::S_unixEpoch);
    return NDateTime::FromDouble(std::trunc(a_time.ToDouble()));
}

} // namespace

History::History(EInterval a_interval, unsigned int a_multiplicity)
    : DataSeriesSet(a_interval, a_multiplicity)
{}

History::History(const std::set<ESeriesId>& a_series, EInterval a_interval, unsigned int a_multiplicity)
    : DataSeriesSet(a_interval, a_multiplicity, a_series)
{}

History::History(const std::set<DSProp>& a_series, EInterval a_interval, unsigned int a_multiplicity)
    : DataSeriesSet(a_interval, a_multiplicity, a_series)
{}

History::History(EInterval a_interval, unsigned int a_multiplicity, std::vector<NDateTime>&& a_times,
                 Columns&& a_columns)
    : DataSeriesSet(a_interval, a_multiplicity, std::move(a_times), std::move(a_columns))
{}

History::History(std::istream& a_stream) : DataSeriesSet(a_stream) {}

std::optional<std::pair<unsigned long, unsigned long>> History::GetFirstLastYear() const
{
    if (IsEmpty())
        return std::nullopt;
    return std::pair(TimeSeries().front().GetYear(), TimeSeries().back().GetYear());
}

History History::GetSubHistory(NDateTime a_from, NDateTime a_to) const
{
    if (a_from > a_to)
        throw std::invalid_argument("Data od jest większa od daty do"_cp1250);
    if (IsEmpty())
        return *this;

    const NDateTime begin = MidnightOf(a_from);
    NDateTime end = MidnightOf(a_to);
    end.ShiftDays(1);

    const IntervalAndMultiplicity intervalData = GetIntervalData();
    History part(GetSeries(), intervalData.GetInterval(), intervalData.GetMultiplicity());

    const std::vector<NDateTime>& times = TimeSeries();
    const auto first = std::lower_bound(times.begin(), times.end(), begin);
    if (first == times.end() || !(*first < end))
        return part;
    const auto last = std::lower_bound(first, times.end(), end);

    part.SetNewTimes(first, last);
    const auto firstRow = static_cast<std::size_t>(first - times.begin());
    const auto lastRow = static_cast<std::size_t>(last - times.begin());
    for (const auto& [seriesId, values] : *this) {
        // A column may be shorter than the times if the caller left it so.
        const auto from = static_cast<std::ptrdiff_t>(std::min(firstRow, values.size()));
        const auto to = static_cast<std::ptrdiff_t>(std::min(lastRow, values.size()));
        part.find(seriesId)->second = std::vector<double>(values.begin() + from, values.begin() + to);
    }
    return part;
}

bool History::InsertedHistoryAtTheBeginning(const History& a_older)
{
    if (!HasTheSameIntervalMultiplicity(*this, a_older) || !HasTheSameSeries(*this, a_older))
        return false;
    if (a_older.IsEmpty())
        return true;

    if (IsEmpty()) {
        SetNewTimes(a_older.TimeSeries());
        for (const auto& [seriesId, values] : a_older)
            AddNewSeries(seriesId, values);
        return true;
    }

    const NDateTime& lastOlder = a_older.TimeSeries().back();
    if (lastOlder > TimeSeries().front() || lastOlder == TimeSeries().front())
        return false;

    Times().insert(Times().begin(), a_older.TimeSeries().begin(), a_older.TimeSeries().end());
    auto column = begin();
    for (const auto& olderColumn : a_older) {
        const std::vector<double>& older = olderColumn.second;
        std::vector<double>& values = column->second;
        // A chart that is dragged towards the past will ask for more: twice the room saves the next moves.
        const std::size_t size = values.size() + older.size();
        if (values.capacity() < size)
            values.reserve(2 * size);
        values.insert(values.begin(), older.begin(), older.end());
        ++column;
    }
    return true;
}

bool History::HasTheSameIntervalMultiplicity(const History& a_left, const History& a_right)
{
    return a_left.IsValid() && a_right.IsValid() &&
           a_left.GetIntervalData().Equals(a_right.GetIntervalData());
}

bool History::HasTheSameSeries(const History& a_left, const History& a_right)
{
    const auto sameSeries = [](const Column& a_leftColumn, const Column& a_rightColumn) {
        return a_leftColumn.first == a_rightColumn.first;
    };
    return std::equal(a_left.begin(), a_left.end(), a_right.begin(), a_right.end(), sameSeries);
}
