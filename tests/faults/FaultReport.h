#pragma once

#include "libs/provider_kit/StoreTestTools.h"
#include "support/BlockTools.h"
#include "support/Testing.h"

/// What the program and its plug-ins share. The program makes one and gives its address to the plug-in of the
/// consumers.
struct FaultReport {
    struct Seen {
        std::size_t sum = 0; // SumOf the candles
        std::vector<std::string> breaches;
    };
    std::mutex mutex;
    std::map<std::pair<std::wstring, std::string>, Seen> seen; // by provider and ISIN

    static constexpr std::size_t S_rows =
        15 * TickMaker::S_rowsPerDay; // of each instrument, half of them live
    static constexpr EInterval S_interval = EIntervalMinute;
    static constexpr unsigned short S_multiplicity = 5;

    /// A number that every bit of the rows takes part in.
    static std::size_t SumOf(const DataSeriesSet& a_rows)
    {
        return std::hash<std::string>()(BytesOf(a_rows));
    }
};
