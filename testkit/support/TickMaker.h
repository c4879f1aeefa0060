#pragma once

#include "provider_kit/IMarketStore.h"
#include "support/Testing.h"

/// Ticks of one instrument: so many a day, on days that cross weeks, a month and a year.
struct TickMaker {
    static constexpr std::size_t S_rowsPerDay = 40;

    static NDateTime TimeOf(std::size_t a_row)
    {
        NDateTime day(2020, 12, 27);
        day.ShiftDays(static_cast<int>(a_row / S_rowsPerDay));
        const std::size_t inDay = a_row % S_rowsPerDay;
        // Two of three rows share their second with the one before, apart by the counter alone.
        const std::size_t second = std::size_t(9) * 3600 + inDay / 3 * 97;
        return {day.GetYear(),    day.GetMonth(), day.GetDay(), second / 3600,
                second / 60 % 60, second % 60,    inDay % 3};
    }
    // Numbers that don't add up exactly, so that an order of folding shows.
    static double PriceOf(std::size_t a_row) { return 10.0 + std::sin(static_cast<double>(a_row)) / 3.0; }
    static double VolumeOf(std::size_t a_row) { return 0.1 + static_cast<double>(a_row) / 3.0; }

    static StoreInstrument Instrument(const std::string& a_isin)
    {
        StoreInstrument instrument;
        instrument.isin = a_isin;
        instrument.shortName = a_isin;
        instrument.longName = a_isin;
        instrument.market = "TEST";
        instrument.groups = {L"Wszystkie"};
        instrument.series = {DSProp(Price), DSProp(Volume)};
        instrument.live = true;
        return instrument;
    }
    static History Rows(std::size_t a_first, std::size_t a_last)
    {
        History rows(std::set<ESeriesId>{Price, Volume}, EIntervalTick, 1);
        for (std::size_t row = a_first; row < a_last; ++row)
            rows.AddData(Record(TimeOf(row), {{Price, PriceOf(row)}, {Volume, VolumeOf(row)}}));
        return rows;
    }
};
