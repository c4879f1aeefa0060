#pragma once

#include <cstdint>

/// The number of a series. The numbers are stored in files and exchanged between modules: append, never renumber.
/// 0 stands for no series; numbers from 56 upward are made by VeloTools::Series::GenerateId.
enum ESeriesId : std::uint32_t {
    Time = 1,  ///< Time of the row; kept in the time column, never a value column.
    Price = 2, ///< Last price: a tick's price, a candle's close.
    Volume = 3,
    Lop = 4,          ///< Open interest.
    Tko = 5,          ///< Theoretical opening price.
    IntervalOpen = 6, ///< Open of a candle; 6, 7 and 8 are made by aggregation and belong only to candles.
    IntervalMax = 7,  ///< High of a candle.
    IntervalMin = 8,  ///< Low of a candle.
    Open = 9,         ///< Session open; 9, 10 and 11 are delivered values.
    Max = 10,         ///< Session high.
    Min = 11,         ///< Session low.
    Close = 12,       ///< Session close.
    Reference = 13,
    Turnover = 14,
    VolumeTotal = 15, ///< Volume of the session.
    Status = 16,      ///< Trading status of the instrument.
    StaticMin = 17,   ///< Lower static price limit.
    StaticMax = 18,   ///< Upper static price limit.
    Settlement = 19,
    Bid1 = 20, ///< Buy offer price, best level.
    Bid2 = 21,
    Bid3 = 22,
    Bid4 = 23,
    Bid5 = 24,
    Ask1 = 25, ///< Sell offer price, best level.
    Ask2 = 26,
    Ask3 = 27,
    Ask4 = 28,
    Ask5 = 29,
    BidVolume1 = 30,
    BidVolume2 = 31,
    BidVolume3 = 32,
    BidVolume4 = 33,
    BidVolume5 = 34,
    AskVolume1 = 35,
    AskVolume2 = 36,
    AskVolume3 = 37,
    AskVolume4 = 38,
    AskVolume5 = 39,
    BidOrders1 = 40, ///< Number of buy orders, best level.
    BidOrders2 = 41,
    BidOrders3 = 42,
    BidOrders4 = 43,
    BidOrders5 = 44,
    AskOrders1 = 45, ///< Number of sell orders, best level.
    AskOrders2 = 46,
    AskOrders3 = 47,
    AskOrders4 = 48,
    AskOrders5 = 49,
    Indicator = 50,  ///< Value of an indicator; indicators are told apart by their labels.
    Two = 51,        ///< Theoretical opening volume.
    DynamicMin = 52, ///< Lower dynamic price limit.
    DynamicMax = 53, ///< Upper dynamic price limit.
    TradesCount = 54,
    VirtualSeries = 55
};
