#pragma once

#include "platform/Export.h"
#include "series/ESeriesId.h"
#include "time/NDateTime.h"

#include <cstddef>
#include <cstdint>
#include <optional>

class DataSeriesSet;

/// Where two lists of candles part first.
struct KALVENTO_API CandleDifference {
    enum EKind : std::uint8_t {
        EKindTime,  ///< The candles bear different times: `expectedTime` and `foundTime`.
        EKindValue, ///< `series` differs: `expected` and `found`.
        EKindCount, ///< One list has no such candle; its time is that of the list that has one.
        EKindShape  ///< The lists don't hold the same series.
    };
    EKind kind = EKindValue;
    std::size_t candle = 0; ///< From 0, in the list expected.
    NDateTime expectedTime;
    NDateTime foundTime;
    ESeriesId series = Time;
    double expected = 0.0;
    double found = 0.0;
    std::size_t expectedCount = 0; ///< Candles in the list expected.
    std::size_t foundCount = 0;

    /// Compares candles bit for bit, times with their counters; any NaN equals any NaN. Empty where they agree.
    /// a_first: the place in a_expected of the first candle of a_found. a_mayEndEarly: a_found may hold less than the
    /// rest of a_expected.
    static std::optional<CandleDifference> Find(const DataSeriesSet& a_expected, const DataSeriesSet& a_found,
                                                std::size_t a_first = 0, bool a_mayEndEarly = false);
};
