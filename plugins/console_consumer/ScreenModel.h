#pragma once

#include "console_consumer/Watch.h"
#include "modules/EConnectionStatus.h"

#include <cstddef>
#include <string>

/// Everything that a screen shows of one instrument.
struct ScreenModel {
    std::wstring symbol;
    std::wstring name;
    std::wstring provider;
    EConnectionStatus status = EConnectionStatusDisconnected;
    std::size_t place = 0; ///< Of the instrument among a_count, from 0 on.
    std::size_t count = 1;
    bool frozen = false;
    bool asTable = false; ///< A table of candles in place of the chart.
    bool inColour = true; ///< Without colour, rising candles are drawn by a line and falling ones by a block.
    std::wstring message; ///< Shown in the last line, in place of the keys.
    Watch::Snapshot data;
};
