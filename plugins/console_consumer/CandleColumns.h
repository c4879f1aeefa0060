#pragma once

#include "console_consumer/ScreenCells.h"
#include "series/History.h"

#include <cmath>
#include <cstddef>

/// Candles by row and series, for drawing; a series that isn't there reads as NaN. Refers to the candles.
class CandleColumns {
public:
    explicit CandleColumns(const History& a_candles) : m_candles(a_candles) {}

    double Get(ESeriesId a_seriesId, std::size_t a_row) const
    {
        const auto column = m_candles.find(a_seriesId);
        return column == m_candles.end() ? std::nan("") : column->second[a_row];
    }
    std::size_t GetCount() const { return m_candles.GetRecordsCount(); }
    const NDateTime& GetTime(std::size_t a_row) const { return m_candles.TimeSeries()[a_row]; }
    /// Of a candle that closes where it opened, as those of single ticks do, the change since the one before.
    EScreenInk GetInk(std::size_t a_row) const
    {
        const double close = Get(Price, a_row);
        double from = Get(IntervalOpen, a_row);
        if (close == from && a_row > 0)
            from = Get(Price, a_row - 1);
        return InkOf(close - from);
    }

private:
    const History& m_candles;
};
