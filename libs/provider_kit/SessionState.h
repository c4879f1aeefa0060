#pragma once

#include "provider_kit/IMarketStore.h"
#include "series/CurrentState.h"
#include "series/LatestRecords.h"
#include "series/Offers.h"

#include <cstdint>
#include <optional>

namespace kalvento::internal {

/// The current state of one instrument, made of its rows: the session of the day of the last row, the book, the latest
/// transactions. One thread at a time.
///
/// Of the session: Open, Max, Min, Price (the last one), Volume (of the last row), VolumeTotal, Turnover (that of the
/// rows, or price by volume), TradesCount (rows), and Reference, the last price of the day before where there is one.
/// Rows that are candles have no transactions: they give no TradesCount, no Turnover but their own, no offers and no
/// transactions.
class SessionState {
public:
    explicit SessionState(const StoreInstrument& a_instrument);

    /// The number of the row that is to be added next.
    std::uint64_t GetNextRow() const { return m_nextRow; }
    /// Begins at that row, whose day is the session's; a_reference: last price of the day before.
    void BeginAt(std::uint64_t a_row, std::optional<double> a_reference);
    /// Rows from a_from (a place in a_rows) on, the first of them being GetNextRow. A row of another day begins a
    /// session.
    void Add(const History& a_rows, std::size_t a_from);
    /// The book as the store knows it; empty: the offers that the last row bears, where rows have any.
    void SetOffers(const std::optional<Offers>& a_offers);

    /// Something is known.
    bool IsKnown() const { return m_state.IsAnySeriesSetOrChanged(); }
    // What came since MarkTold.
    bool StateChanged() const { return m_stateChanged; }
    bool OffersChanged() const { return m_offersChanged; }
    bool LatestChanged() const { return m_latestChanged; }
    bool HasTransactions() const { return m_rowsAreTrades; }

    const CurrentState& GetState() const { return m_state; }
    const Offers& GetOffers() const { return m_offers; }
    const LatestRecords& GetLatestRecords() const { return m_latest; }
    /// Copies in which all that is known is marked as changed, for a consumer that has heard nothing yet.
    CurrentState GetWholeState() const;
    Offers GetWholeOffers() const;

    /// All changes have been delivered.
    void MarkTold();

private:
    void TakeOffers(const History& a_rows);
    void AddRow(const NDateTime& a_time, double a_price, double a_open, double a_high, double a_low,
                double a_volume, std::optional<double> a_turnover);

    bool m_rowsAreTrades;
    std::uint64_t m_nextRow = 0;
    std::optional<NDateTime> m_lastTime;
    std::optional<double> m_reference;
    double m_lastPrice = 0.0;
    double m_high = 0.0;
    double m_low = 0.0;
    double m_volume = 0.0;
    double m_turnover = 0.0;
    double m_trades = 0.0;
    CurrentState m_state;
    Offers m_offers;
    Offers m_offersOfLastRow;
    LatestRecords m_latest;
    bool m_stateChanged = false;
    bool m_offersChanged = false;
    bool m_latestChanged = false;
};

} // namespace kalvento::internal
