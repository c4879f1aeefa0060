#pragma once

#include "support/CandlesConsumer.h"
#include "support/NotingListener.h"

/// An instrument of single ticks with price and volume.
inline StoreInstrument TickInstrument(const std::string& a_isin)
{
    StoreInstrument instrument;
    instrument.isin = a_isin;
    instrument.shortName = a_isin;
    instrument.longName = a_isin;
    instrument.market = "GPW";
    instrument.series = {DSProp(Price), DSProp(Volume)};
    instrument.live = true;
    return instrument;
}

/// The time of the row with that number: ten rows a second from 2024-05-06 9:00 on, told apart by the counter; 20000 rows a
/// day.
inline NDateTime TimeOfRow(std::uint64_t a_number)
{
    const auto second = static_cast<unsigned long>(a_number % 20000 / 10);
    NDateTime time(2024, 5, 6, 9 + second / 3600, second / 60 % 60, second % 60, a_number % 10);
    time.ShiftDays(static_cast<int>(a_number / 20000));
    return time;
}

/// Rows a_first to before a_last; the volume is the number of the row.
inline History RowsOf(std::uint64_t a_first, std::uint64_t a_last)
{
    std::vector<NDateTime> times;
    DataSeriesSet::Columns columns{{Price, {}}, {Volume, {}}};
    for (std::uint64_t number = a_first; number < a_last; ++number) {
        times.push_back(TimeOfRow(number));
        columns[0].second.push_back(100.0 + static_cast<double>(number % 7) / 3);
        columns[1].second.push_back(static_cast<double>(number));
    }
    return {EIntervalTick, 1, std::move(times), std::move(columns)};
}
