#pragma once

#include <cstdint>

/// Which time a candle bears. The numbers are stored in settings files.
enum EAggrTimeResult : std::uint32_t {
    EFirstRecordTime = 0,    ///< Time of the row that opened the window.
    ELastRecordTime = 1,     ///< Time of the last row so far.
    EWindowBegin = 2,        ///< First instant of the window.
    EMetaStockWindowEnd = 3, ///< First instant after the window; only for intervals below a day.
    EWindowBorder = 4        ///< Last instant inside the window, as each window class defines it.
};
