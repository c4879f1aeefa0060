#pragma once

#include "aggregation/Aggregator.h"
#include "aggregation/EAggrTimeResult.h"
#include "text_rows/RowReader.h"
#include "time/IntervalAndMultiplicity.h"

#include <cstddef>
#include <vector>

namespace kalvento::tool {

/// Folds rows that come in pieces into candles, exactly as one fold over all of them would: the candle still open at the
/// end of a piece goes into the next one. Memory doesn't grow with the rows. One thread at a time.
class CandleFolder {
public:
    /// a_input: the shape of the rows. a_output: not finer than the input. a_stamp: which time a candle bears.
    /// Raises ToolError (EExitUsage) for an output that can't be folded from the input, and for a stamp that the output
    /// can't bear: only the first and the last row's time for ticks, no end for days and longer.
    CandleFolder(const RowLayout& a_input, IntervalAndMultiplicity a_output, EAggrTimeResult a_stamp);

    /// The shape of the candles. The same as the input's where single ticks pass through unfolded.
    const RowLayout& GetLayout() const { return m_layout; }

    /// Folds the rows of a_rows, at whose front the rows must still stand that the last call told to keep. Finished candles
    /// replace a_candles. Returns how many rows at the front of a_rows are to be kept for the next call. a_last: no rows
    /// follow; the open candle comes out as well and nothing is to be kept. The contents of a_rows are used up otherwise.
    std::size_t Fold(RowBlock& a_rows, bool a_last, RowBlock& a_candles);

private:
    std::size_t FoldTime(RowBlock& a_rows, bool a_last, RowBlock& a_candles);
    std::size_t FoldTicks(RowBlock& a_rows, bool a_last, RowBlock& a_candles);
    unsigned int FoldInPlace(RowBlock& a_rows, std::size_t a_count, EInterval a_interval,
                             unsigned int a_multiplicity);
    void TakeCandles(RowBlock& a_rows, std::size_t a_count, RowBlock& a_candles);
    std::vector<double>& Column(RowBlock& a_rows, std::size_t a_place);

    RowLayout m_input;
    RowLayout m_layout;
    EAggrTimeResult m_stamp;
    Aggregator m_aggregator;
    Aggregator m_stamper;   // puts the time that a_stamp asks for on a finished candle
    bool m_ticks;           // the input has no open, high and low
    bool m_carries = false; // row 0 is a candle that is still open
    // Columns of the rows in the engine's order: open, high, low, price, others. Ticks have their first three here.
    std::vector<double> m_open;
    std::vector<double> m_high;
    std::vector<double> m_low;
    std::vector<std::size_t> m_sources; // place in the input of each candle column but the ticks' first three
};

} // namespace kalvento::tool
