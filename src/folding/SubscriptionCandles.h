#pragma once

#include "folding/ColumnBlock.h"
#include "folding/PieceFolder.h"
#include "folding/RowCandles.h"
#include "history_operations/HistoryOperations.h"
#include "platform/Export.h"
#include "series/DSProp.h"
#include "series/History.h"
#include "series/Record.h"
#include "time/IntervalAndMultiplicity.h"
#include "time/NDateTime.h"

#include <cstddef>
#include <optional>
#include <set>

class Synchronization;

/// The candles of one subscription, as a chart or a table shows them, built from what a provider hands to a consumer: a
/// consumer asks in the interval of IntervalToAsk, passes on what ProcessOperations, ProcessHistory, ProcessHistoryEnd,
/// ProcessSynchronization and ProcessRecord bring, and reads candles.
///
/// First corrected, then folded: corporate operations change rows and candles of at most a day, whose rows all lie on
/// the same side of an operation. Candles longer than a day are folded from corrected days. What was delivered is kept as
/// it came, so operations may be told, changed and taken back at any time; they reach the candles already held.
///
/// However the rows are spread over the calls, the candles up to a day are those of one fold of all the rows, bit for
/// bit, each corrected; longer ones are those of one fold of these days. (Finer candles are rows of their own here: their
/// sums enter as they are. So are candles longer than a day from a source that has nothing shorter: an operation inside
/// one can't reach a part of it. A window of ticks that came as a candle can't be continued; providers begin the
/// synchronization with the row that opened it.)
///
/// A record changes the last candle or adds one, and AddRecord tells which. After any other operation, candles may have
/// changed from any place on: read them anew.
///
/// Operations that get data answer false (or nothing) for what doesn't fit the series or the interval; they leave a
/// line in the log and change nothing. Takes memory for the candles, those up to a day and the longer ones, and for the
/// rows of the last one. Not safe from several threads.
class KALVENTO_API SubscriptionCandles {
public:
    /// What a record did.
    struct Change {
        Record candle; ///< As it stands now: the candle shape, the time of its last row.
        bool isNew;    ///< It follows the last candle; otherwise it takes the last one's place.
    };

    /// The interval to ask a provider for to show candles of that interval: itself, or a day for longer ones.
    static IntervalAndMultiplicity IntervalToAsk(IntervalAndMultiplicity a_candles);

    /// a_series: those of the asset's rows, with or without the three candle series. The interval: that of the candles.
    /// Raises as AggregatorWrapper does.
    SubscriptionCandles(const std::set<DSProp>& a_series, EInterval a_interval,
                        unsigned short a_multiplicity);

    /// The corporate operations known by now, at any time; they replace those told before.
    void SetOperations(const HistoryOperations& a_operations);
    /// A part of the past, later than the parts before: ticks, or candles of the interval asked for or a finer one. As
    /// the first part longer ones are taken, too, up to those shown.
    bool AddHistory(History&& a_history);
    /// No part follows.
    void HistoryEnd() { m_historyEnded = true; }
    /// Single ticks. They replace the candles held from the time of the first of them on.
    bool SetSynchronization(Synchronization&& a_synchronization);
    /// A live row of the tick shape; series that aren't held are left out. A row that is earlier than the last one is
    /// dropped: after a break of the connection it had come already.
    std::optional<Change> AddRecord(const Record& a_record);

    bool HasHistoryEnded() const { return m_historyEnded; }
    IntervalAndMultiplicity GetInterval() const { return m_interval; }
    /// Candles held.
    std::size_t GetCount() const { return Shown().rows; }
    /// The candle of that place, from 0 on; a_place below GetCount.
    Record GetCandle(std::size_t a_place) const;
    /// A copy of the last a_count candles, fewer where fewer are held.
    History GetLastCandles(std::size_t a_count) const;

private:
    // Without operations, delivered candles of the interval shown are shown as they are.
    bool IsDerived() const { return m_operations || m_folder; }
    const ColumnBlock& Shown() const { return IsDerived() ? m_derived : m_delivered.GetCandles(); }
    bool Derive(std::size_t a_changed);
    void MakeFolder();

    IntervalAndMultiplicity m_interval;
    kalvento::internal::RowCandles m_delivered; // of at most a day, where the source has those; not corrected
    std::optional<PieceFolder> m_folder;        // of those into the candles shown, where these are longer
    std::optional<HistoryOperations> m_operations;
    ColumnBlock m_derived; // corrected and folded; of the columns of m_delivered
    bool m_historyEnded = false;
};
