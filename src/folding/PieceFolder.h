#pragma once

#include "aggregation/Aggregator.h"
#include "aggregation/EAggrTimeResult.h"
#include "folding/ColumnBlock.h"
#include "platform/Export.h"
#include "series/DSProp.h"
#include "series/History.h"
#include "time/IntervalAndMultiplicity.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <set>
#include <vector>

/// Folds rows that come in pieces into candles: the candle that is still open at the end of a piece goes on in the next
/// one. The pieces' candles, put together, are bit for bit those of one fold of all rows, and memory doesn't grow with
/// the rows. Times may not fall from row to row. One thread at a time.
///
/// There are two ways to use it, one for each object: Fold works in blocks that the caller reads into, for speed; Add
/// and Finish take histories and give histories.
class KALVENTO_API PieceFolder {
public:
    /// What becomes of rows that already have the interval asked for: they are folded, so that each window has one
    /// candle, with the time asked for; or they go through as they are.
    enum ESameInterval : std::uint8_t { EFoldSame, EPassSame };

    /// a_series: those of the rows, which are ticks or, with the three candle series among them, candles. One of them
    /// is of a main type. a_rows, a_candles: the intervals of both. Raises KalventoException where Reaches or CanBear
    /// is false, and without a main type.
    PieceFolder(const std::set<DSProp>& a_series, IntervalAndMultiplicity a_rows,
                IntervalAndMultiplicity a_candles, EAggrTimeResult a_stamp = ELastRecordTime,
                ESameInterval a_same = EFoldSame);

    /// Whether rows of the one interval can become candles of the other: it isn't finer, and a window takes it.
    static bool Reaches(IntervalAndMultiplicity a_rows, IntervalAndMultiplicity a_candles);
    /// Whether candles of the interval can bear that time: windows of ticks have no start and no end in time, and only
    /// candles shorter than a day bear the end of their window.
    static bool CanBear(IntervalAndMultiplicity a_candles, EAggrTimeResult a_stamp);

    /// Series of the candles, ascending: those of the rows, and the three candle series unless ticks go through.
    const std::vector<ESeriesId>& GetSeries() const { return m_series; }

    /// Folds the rows of a_rows, which must still begin with the rows that the last call said to keep. Its columns are
    /// those of the rows' series, ascending. Finished candles replace a_candles. Returns how many rows at the front of
    /// a_rows are to be kept for the next call. a_last: no rows follow; the open candle comes out as well and nothing
    /// is to be kept. All other rows of a_rows are used up.
    std::size_t Fold(ColumnBlock& a_rows, bool a_last, ColumnBlock& a_candles);

    /// Takes the rows that follow, and gives the candles that they complete, possibly none. Raises
    /// std::invalid_argument for rows that lack a series; nothing has changed then.
    History Add(History&& a_rows);
    /// The candle that is still open, if any. Nothing may be added afterwards.
    History Finish() { return TakePiece(true); }

private:
    static constexpr std::size_t S_candleFields = 3;

    std::size_t FoldTime(ColumnBlock& a_rows, bool a_last, ColumnBlock& a_candles);
    std::size_t FoldTicks(ColumnBlock& a_rows, bool a_last, ColumnBlock& a_candles);
    std::size_t FoldInPlace(ColumnBlock& a_rows, std::size_t a_count, IntervalAndMultiplicity a_interval);
    void TakeCandles(ColumnBlock& a_rows, std::size_t a_count, ColumnBlock& a_candles);
    std::vector<double>& Column(ColumnBlock& a_rows, std::size_t a_place);
    History TakePiece(bool a_last);

    IntervalAndMultiplicity m_candleInterval;
    IntervalAndMultiplicity m_rowInterval;
    EAggrTimeResult m_stamp;
    bool m_passes;                   // rows are the candles
    bool m_ticks = true;             // the rows have no open, high and low
    bool m_carries = false;          // row 0 is a candle that is still open
    ESeriesId m_main;                // the price, as a rule
    std::size_t m_rowColumns;        // how many columns rows have
    std::size_t m_mainPlace = 0;     // in the rows
    std::vector<ESeriesId> m_series; // of the candles
    std::vector<std::size_t>
        m_places; // of each column of the candles in the rows; past them: in m_candleFields
    std::array<std::vector<double>, S_candleFields> m_candleFields; // open, high and low of ticks
    std::vector<double*> m_fields;                                  // in the engine's order, for a call
    Aggregator m_aggregator;
    Aggregator m_stamper; // puts the time that is asked for on a finished candle
    ColumnBlock m_piece;  // of Add
    ColumnBlock m_candles;
};
