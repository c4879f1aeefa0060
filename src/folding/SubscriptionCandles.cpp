#include "folding/SubscriptionCandles.h"

#include "series/Synchronization.h"
#include "velo/LogAllExceptions.h"

#include <algorithm>
#include <utility>

using kalvento::internal::RowCandles;

namespace {

constexpr IntervalAndMultiplicity S_day(EIntervalDay, 1);

ColumnBlock BlockOf(History&& a_rows)
{
    ColumnBlock block;
    block.rows = a_rows.GetRecordsCount();
    for (auto& [series, values] : a_rows)
        block.columns.push_back(std::move(values));
    block.times = std::move(a_rows).TimeSeries();
    return block;
}

} // namespace

IntervalAndMultiplicity SubscriptionCandles::IntervalToAsk(IntervalAndMultiplicity a_candles)
{
    return a_candles.IsEod() ? S_day : a_candles;
}

SubscriptionCandles::SubscriptionCandles(const std::set<DSProp>& a_series, EInterval a_interval,
                                         unsigned short a_multiplicity)
    : m_interval(a_interval, a_multiplicity), m_delivered(a_series, IntervalToAsk(m_interval))
{
    MakeFolder();
}

void SubscriptionCandles::MakeFolder()
{
    m_folder.reset();
    if (!m_delivered.GetInterval().Equals(m_interval))
        m_folder.emplace(m_delivered.GetSeries(), m_delivered.GetInterval(), m_interval);
}

void SubscriptionCandles::SetOperations(const HistoryOperations& a_operations)
{
    m_operations.reset();
    if (a_operations.begin() != a_operations.end())
        m_operations = a_operations;
    Derive(0);
}

// Brings the candles shown up to date after those delivered changed from that place on.
bool SubscriptionCandles::Derive(std::size_t a_changed)
{
    if (!IsDerived()) {
        m_derived = ColumnBlock();
        return true;
    }
    try {
        // The candle that holds the last unchanged row may hold the first changed one, too.
        const ColumnBlock& delivered = m_delivered.GetCandles();
        const std::size_t kept = a_changed == 0 ? 0 : m_derived.CountBefore(delivered.times[a_changed - 1]);
        const std::size_t first = kept == 0 ? 0 : delivered.CountUpTo(m_derived.times[kept - 1]);
        m_derived.rows = kept;
        if (first == delivered.rows)
            return true;
        History rows =
            delivered.Between(first, delivered.rows, m_delivered.GetColumns(), m_delivered.GetInterval());
        if (m_operations)
            rows.ApplyDataOperations(*m_operations);
        ColumnBlock corrected = BlockOf(std::move(rows));
        ColumnBlock candles;
        if (m_folder)
            m_folder->Fold(corrected, true, candles);
        const ColumnBlock& shown = m_folder ? candles : corrected;
        m_derived.Append(shown, 0, shown.rows);
        return true;
    } catch (...) {
        LogAllExceptions("SubscriptionCandles::Derive", __LINE__);
        return false;
    }
}

bool SubscriptionCandles::AddHistory(History&& a_history)
{
    const IntervalAndMultiplicity interval = a_history.GetIntervalData();
    if (m_delivered.GetCount() == 0 && !PieceFolder::Reaches(interval, m_delivered.GetInterval()) &&
        PieceFolder::Reaches(interval, m_interval)) {
        m_delivered = RowCandles(m_delivered.GetSeries(), interval);
        MakeFolder();
    }
    const std::size_t before = m_delivered.GetCount();
    const bool isTaken = m_delivered.AddHistory(std::move(a_history));
    return Derive(before == 0 ? 0 : before - 1) && isTaken;
}

bool SubscriptionCandles::SetSynchronization(Synchronization&& a_synchronization)
{
    if (a_synchronization.IsEmpty())
        return true;
    const std::size_t before = m_delivered.GetCandles().CountBefore(a_synchronization.TimeSeries().front());
    const bool isTaken = m_delivered.SetSynchronization(std::move(a_synchronization));
    return Derive(before == 0 ? 0 : before - 1) && isTaken;
}

std::optional<SubscriptionCandles::Change> SubscriptionCandles::AddRecord(const Record& a_record)
{
    const std::size_t before = GetCount();
    if (!m_delivered.AddRecord(a_record) || !Derive(m_delivered.GetCount() - 1))
        return {};
    return Change{GetCandle(GetCount() - 1), GetCount() > before};
}

Record SubscriptionCandles::GetCandle(std::size_t a_place) const
{
    return Shown().At(a_place, m_delivered.GetColumns());
}

History SubscriptionCandles::GetLastCandles(std::size_t a_count) const
{
    return Shown().Between(GetCount() - std::min(a_count, GetCount()), GetCount(), m_delivered.GetColumns(),
                           m_interval);
}
