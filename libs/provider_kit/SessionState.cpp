#include "provider_kit/SessionState.h"

#include "platform/CodePage.h"
#include "provider_kit/ShowSeries.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace kalvento::internal {

namespace {

const std::set<ESeriesId>& StateSeries()
{
    static const std::set<ESeriesId> S_series = {Price,     Volume,   Open,        Max,        Min,
                                                 Reference, Turnover, VolumeTotal, TradesCount};
    return S_series;
}

template<class Variables>
Variables WholeOf(const Variables& a_known)
{
    Variables whole = a_known;
    for (auto& [series, value] : whole)
        if (value.IsSet())
            value.state = ValueSeriesCS<double>::S_changed;
    if (whole.TimeFieldIsSet())
        whole.SetTime(whole.GetTime().value);
    return whole;
}

} // namespace

SessionState::SessionState(const StoreInstrument& a_instrument)
    : m_rowsAreTrades(a_instrument.interval.IsSingleTick()), m_state(StateSeries())
{
    m_latest.MarkAsReceived();
}

void SessionState::BeginAt(std::uint64_t a_row, std::optional<double> a_reference)
{
    m_nextRow = a_row;
    m_reference = a_reference;
}

void SessionState::Add(const History& a_rows, std::size_t a_from)
{
    const auto columnOf = [&](ESeriesId a_series) -> const double* {
        const auto column = a_rows.find(a_series);
        return column != a_rows.end() && column->second.size() >= a_rows.GetRecordsCount()
                   ? column->second.data()
                   : nullptr;
    };
    const double* const prices = columnOf(Price);
    if (prices == nullptr)
        throw std::invalid_argument("Wierszom brakuje ceny: a_rows"_cp1250);
    const double* const volumes = columnOf(Volume);
    const double* const turnovers = columnOf(Turnover);
    const auto own = [&](ESeriesId a_series) {
        const double* const column = m_rowsAreTrades ? nullptr : columnOf(a_series);
        return column != nullptr ? column : prices;
    };
    const double* const opens = own(IntervalOpen);
    const double* const highs = own(IntervalMax);
    const double* const lows = own(IntervalMin);

    for (std::size_t row = a_from; row < a_rows.GetRecordsCount(); ++row, ++m_nextRow)
        AddRow(a_rows.TimeSeries()[row], prices[row], opens[row], highs[row], lows[row],
               volumes != nullptr ? volumes[row] : 0.0,
               turnovers != nullptr ? std::optional(turnovers[row]) : std::nullopt);
    if (a_from >= a_rows.GetRecordsCount())
        return;

    if (m_rowsAreTrades)
        TakeOffers(a_rows);
    ShowSeries(m_state, Price, m_lastPrice);
    ShowSeries(m_state, Max, m_high);
    ShowSeries(m_state, Min, m_low);
    if (volumes != nullptr)
        ShowSeries(m_state, VolumeTotal, m_volume);
    if (turnovers != nullptr || (m_rowsAreTrades && volumes != nullptr))
        ShowSeries(m_state, Turnover, m_turnover);
    if (volumes != nullptr)
        ShowSeries(m_state, Volume, volumes[a_rows.GetRecordsCount() - 1]);
    if (m_rowsAreTrades)
        ShowSeries(m_state, TradesCount, m_trades);
    m_state.SetTime(*m_lastTime);
    m_state.SetGeneratedTime(*m_lastTime);
    m_stateChanged = true;
    m_latestChanged = m_rowsAreTrades;
}

void SessionState::AddRow(const NDateTime& a_time, double a_price, double a_open, double a_high, double a_low,
                          double a_volume, std::optional<double> a_turnover)
{
    const bool begins = !m_lastTime || !m_lastTime->SameDay(a_time);
    if (begins) {
        if (m_lastTime)
            m_reference = m_lastPrice;
        if (m_reference)
            ShowSeries(m_state, Reference, *m_reference);
        ShowSeries(m_state, Open, a_open);
        m_high = a_high;
        m_low = a_low;
        m_volume = m_turnover = m_trades = 0.0;
    }
    m_lastTime = a_time;
    m_lastPrice = a_price;
    m_high = std::max(m_high, a_high);
    m_low = std::min(m_low, a_low);
    m_volume += a_volume;
    m_turnover += a_turnover.value_or(a_price * a_volume);
    m_trades += 1.0;
    if (m_rowsAreTrades)
        m_latest.AddTransaction(a_time, a_price, a_volume);
}

// Of the last row, whatever was quoted before it.
void SessionState::TakeOffers(const History& a_rows)
{
    m_offersOfLastRow = Offers();
    bool any = false;
    for (const auto& [series, values] : a_rows) {
        if (!Offers::Series.contains(series) || values.empty() || !std::isfinite(values.back()))
            continue;
        m_offersOfLastRow.SetData(series, values.back());
        any = true;
    }
    if (any)
        m_offersOfLastRow.SetTime(a_rows.TimeSeries().back());
}

void SessionState::SetOffers(const std::optional<Offers>& a_offers)
{
    const Offers& offers = a_offers ? *a_offers : m_offersOfLastRow;
    for (const auto& [series, value] : offers)
        m_offersChanged |=
            value.IsSet() ? ShowSeries(m_offers, series, value.value) : HideSeries(m_offers, series);
    if (m_offersChanged && offers.TimeFieldIsSet())
        m_offers.SetTime(offers.GetTime().value);
}

CurrentState SessionState::GetWholeState() const
{
    return WholeOf(m_state);
}

Offers SessionState::GetWholeOffers() const
{
    return WholeOf(m_offers);
}

void SessionState::MarkTold()
{
    m_state.ClearUsageChangedValue();
    m_offers.ClearUsageChangedValue();
    m_stateChanged = m_offersChanged = m_latestChanged = false;
}

} // namespace kalvento::internal
