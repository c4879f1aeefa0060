#pragma once

#include <cstdint>

/// The unit of a series' interval. The order is from fine to coarse: rows can only be folded towards a greater number.
/// The numbers are stored in files and exchanged between modules.
enum EInterval : std::uint32_t {
    EIntervalEmpty = 0,
    EIntervalTick = 1,
    EIntervalSecond = 2,
    EIntervalMinute = 3,
    EIntervalHour = 4,
    EIntervalDay = 5,
    EIntervalWeek = 6,
    EIntervalMonth = 7,
    EIntervalYear = 8
};
