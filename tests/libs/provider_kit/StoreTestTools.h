#pragma once

#include "provider_kit/StoreProvider.h"
#include "support/MemoryStore.h"
#include "support/Testing.h"
#include "support/TickMaker.h"

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
