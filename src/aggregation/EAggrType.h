#pragma once

#include <cstdint>

/// How a series folds into a candle. Values below 3 belong to the main series, the others to all other fields.
/// The numbers are stored in settings files.
enum EAggrType : std::uint32_t {
    EAggrTypeOhlc = 0,     ///< Main series: close takes the row, high and low widen, open stays.
    EAggrTypeOhlcSum = 1,  ///< Main series: all four candle values grow by the row's.
    EAggrTypeOhlcLast = 2, ///< Main series: all four candle values are replaced by the row's, open too.
    EAggrTypeSum = 3,      ///< Other field: grows by the row's.
    EAggrTypeLast = 4      ///< Other field: is replaced by the row's.
};
