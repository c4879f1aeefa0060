#pragma once

#include "aggregation/Aggregator.h"
#include "provider_kit/IMarketStore.h"

#include <cstdint>
#include <optional>
#include <vector>

/// Folds the rows of an instrument to an interval part by part, in as much memory as one part takes: the open candle is
/// carried from each part into the next. What comes out, parts put together, is bit for bit what folding all rows at once
/// gives. One thread at a time.
class HistoryFold {
public:
    /// Rows of the very interval go through as they are. Raises KalventoException where Reaches is false.
    HistoryFold(const StoreInstrument& a_instrument, IntervalAndMultiplicity a_output);

    /// Whether candles of that interval can be made of the instrument's rows.
    static bool Reaches(const StoreInstrument& a_instrument, IntervalAndMultiplicity a_output);

    /// Takes the rows that follow, and gives the candles that they complete, possibly none. Raises std::invalid_argument
    /// for rows that lack a series of the instrument; nothing has changed then.
    History Add(History&& a_rows);
    /// The candle that is still open, if any. Nothing may be added afterwards.
    History Finish();

    HistoryFold(const HistoryFold&) = delete; // m_fields points into the object
    HistoryFold& operator=(const HistoryFold&) = delete;

private:
    static constexpr std::size_t S_candleFields = 3; // open, high, low; then the main series, then the others

    struct Candles {
        std::vector<NDateTime> times;
        std::vector<std::vector<double>> fields;
    };
    History Assemble(Candles&& a_candles) const;
    void CloseCandle(Candles& a_candles) const;

    bool m_isPlain;        // rows go through
    bool m_rowsAreCandles; // they have an open, high and low of their own
    IntervalAndMultiplicity m_output;
    std::vector<ESeriesId> m_series; // by field, in the order of Aggregator
    std::vector<double> m_row;       // the row that is folded, then the candle so far
    std::vector<double*> m_fields;   // to m_row
    std::vector<double> m_open;      // the open candle
    NDateTime m_openTime;
    bool m_hasOpen = false;
    std::optional<Aggregator> m_aggregator; // none where rows go through
};
