#pragma once

#include "provider_kit/StoreProvider.h"
#include "support/MemoryStore.h"
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
    static double VolumeOf(std::size_t a_row) { return 0.1 + static_cast<double>(a_row % 7) / 3.0; }

    static StoreInstrument Instrument(const std::string& a_isin)
    {
        StoreInstrument instrument;
        instrument.isin = a_isin;
        instrument.shortName = a_isin.substr(2);
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

/// A provider over a store in memory.
struct StoreQuotes {
    explicit StoreQuotes(std::unique_ptr<MemoryStore> a_store = std::make_unique<MemoryStore>())
        : store(*a_store), provider(EGenericModuleNone, L"Magazyn", std::move(a_store))
    {}

    /// The next so many rows.
    void AddTicks(const std::string& a_isin, std::size_t a_count)
    {
        if (!m_rows.contains(a_isin))
            store.AddInstrument(TickMaker::Instrument(a_isin));
        std::size_t& next = m_rows[a_isin];
        for (const std::size_t end = next + a_count; next < end; ++next)
            store.AddRow(a_isin, TickMaker::TimeOf(next),
                         {TickMaker::PriceOf(next), TickMaker::VolumeOf(next)});
    }
    void Connect()
    {
        provider.SwitchConnection(true);
        while (provider.GetConnectionStatus() != EConnectionStatusConnected)
            std::this_thread::yield();
    }

    MemoryStore& store;
    StoreProvider provider;

private:
    std::map<std::string, std::size_t> m_rows; // how many there are
};
