#pragma once

#include "provider_kit/IMarketStore.h"
#include "support/BlockTools.h"
#include "support/Testing.h"

/// A store in memory, which a test fills, breaks and restores. Tells its listener on the thread that calls it.
class MemoryStore : public IMarketStore {
public:
    // What a test does.

    /// The day fields follow the rows. One with the same ISIN is replaced, rows included.
    void AddInstrument(const StoreInstrument& a_instrument)
    {
        const IntervalAndMultiplicity interval = a_instrument.interval;
        const Item item{
            a_instrument, {a_instrument.series, interval.GetInterval(), interval.GetMultiplicity()}, {}, {}};
        Change([&] { m_items.insert_or_assign(a_instrument.isin, item); });
    }
    void RemoveInstrument(const std::string& a_isin)
    {
        Change([&] { m_items.erase(a_isin); });
    }
    /// a_values: by series, ascending.
    void AddRow(const std::string& a_isin, const NDateTime& a_time, const std::vector<double>& a_values)
    {
        {
            const std::lock_guard lock(m_mutex);
            History& rows = m_items.at(a_isin).rows;
            Record row = rows.GetEmptyRecord();
            row.SetTime(a_time);
            for (std::size_t series = 0; series < a_values.size(); ++series)
                (row.begin() + static_cast<std::ptrdiff_t>(series))->second = a_values[series];
            if (!rows.AddData(row))
                throw std::logic_error("a row that is not later");
            if (m_broken)
                return;
        }
        Tell([&](IMarketStoreListener& a_listener) { a_listener.RowsAdded(a_isin); });
    }
    void SetOperations(const std::string& a_isin, const HistoryOperations& a_operations)
    {
        Change([&] { m_items.at(a_isin).operations = a_operations; });
    }
    void SetOffers(const std::string& a_isin, const std::optional<Offers>& a_offers)
    {
        const std::lock_guard lock(m_mutex);
        m_items.at(a_isin).offers = a_offers;
    }
    /// Nothing can be read from now on, or after that many more readings.
    void Break(unsigned int a_afterReadings = 0)
    {
        {
            const std::lock_guard lock(m_mutex);
            m_readingsLeft = a_afterReadings;
            if (a_afterReadings > 0 || std::exchange(m_broken, true))
                return;
        }
        TellBroken();
    }
    /// What is read of rows goes through this from now on; it may spoil it or raise.
    void SetSpoiler(std::function<void(History&)> a_spoiler)
    {
        const std::lock_guard lock(m_mutex);
        m_spoiler = std::move(a_spoiler);
    }
    /// Called before each reading; it may raise. To be set before the store is opened.
    void SetReading(std::function<void()> a_reading) { m_reading = std::move(a_reading); }
    void Restore()
    {
        const std::lock_guard telling(m_telling);
        {
            const std::lock_guard lock(m_mutex);
            m_readingsLeft.reset();
            m_broken = false;
        }
        if (m_listener != nullptr)
            m_listener->Restored();
    }

    // What a provider does.

    void Open(IMarketStoreListener& a_listener) override
    {
        const std::lock_guard telling(m_telling);
        m_listener = &a_listener;
        m_listener->Restored();
    }
    void Close() override
    {
        const std::lock_guard telling(m_telling);
        m_listener = nullptr;
    }
    std::vector<StoreInstrument> ReadInstruments() override
    {
        CountReading();
        const std::lock_guard lock(m_mutex);
        std::vector<StoreInstrument> instruments;
        for (const auto& [isin, item] : m_items) {
            instruments.push_back(item.instrument);
            const auto& times = item.rows.TimeSeries();
            instruments.back().firstDay = times.empty() ? NDateTime(2099, 12, 31) : DayOf(times.front());
            instruments.back().lastDay = times.empty() ? NDateTime(1950, 1, 1) : DayOf(times.back());
        }
        return instruments;
    }
    HistoryOperations ReadOperations(const std::string& a_isin) override
    {
        CountReading();
        const std::lock_guard lock(m_mutex);
        const auto item = m_items.find(a_isin);
        return item != m_items.end() ? item->second.operations : HistoryOperations();
    }
    std::uint64_t GetRowCount(const std::string& a_isin) override
    {
        CountReading();
        const std::lock_guard lock(m_mutex);
        const auto item = m_items.find(a_isin);
        return item != m_items.end() ? item->second.rows.GetRecordsCount() : 0;
    }
    std::uint64_t FindRow(const std::string& a_isin, const NDateTime& a_time) override
    {
        CountReading();
        const std::lock_guard lock(m_mutex);
        const auto item = m_items.find(a_isin);
        if (item == m_items.end())
            return 0;
        const auto& times = item->second.rows.TimeSeries();
        return static_cast<std::uint64_t>(std::ranges::lower_bound(times, a_time) - times.begin());
    }
    History ReadRows(const std::string& a_isin, std::uint64_t a_first, std::uint64_t a_last) override
    {
        CountReading();
        const std::lock_guard lock(m_mutex);
        const History& all = m_items.at(a_isin).rows;
        const std::uint64_t count = all.GetRecordsCount();
        auto rows = Slice<History>(all, std::min(a_first, count), std::min(a_last, count));
        if (m_spoiler)
            m_spoiler(rows);
        return rows;
    }
    std::optional<Offers> ReadOffers(const std::string& a_isin) override
    {
        CountReading();
        const std::lock_guard lock(m_mutex);
        return m_items.at(a_isin).offers;
    }

private:
    struct Item {
        StoreInstrument instrument;
        History rows;
        HistoryOperations operations;
        std::optional<Offers> offers;
    };

    static NDateTime DayOf(const NDateTime& a_time)
    {
        return {a_time.GetYear(), a_time.GetMonth(), a_time.GetDay()};
    }
    template<class Call>
    void Change(const Call& a_change)
    {
        {
            const std::lock_guard lock(m_mutex);
            a_change();
        }
        Tell([](IMarketStoreListener& a_listener) { a_listener.InstrumentsChanged(); });
    }
    template<class Call>
    void Tell(const Call& a_call)
    {
        const std::lock_guard telling(m_telling);
        if (m_listener != nullptr)
            a_call(*m_listener);
    }
    void TellBroken()
    {
        Tell([this](IMarketStoreListener& a_listener) {
            {
                // News comes in order: a break that is already over is none.
                const std::lock_guard lock(m_mutex);
                if (!m_broken)
                    return;
            }
            a_listener.Broken(L"Próba");
        });
    }
    void CountReading()
    {
        if (m_reading)
            m_reading();
        {
            const std::lock_guard lock(m_mutex);
            const bool breaks = !m_broken && m_readingsLeft && (*m_readingsLeft)-- == 0;
            if (!breaks && !m_broken)
                return;
            if (!std::exchange(m_broken, true))
                m_readingsLeft.reset();
            if (!breaks)
                throw std::runtime_error("broken");
        }
        TellBroken();
        throw std::runtime_error("broken");
    }

    std::mutex m_telling; // held while the listener is told; never taken by what reads while it is held
    IMarketStoreListener* m_listener = nullptr;
    std::mutex m_mutex; // of all that follows
    std::map<std::string, Item> m_items;
    bool m_broken = false;
    std::optional<unsigned int> m_readingsLeft;
    std::function<void(History&)> m_spoiler;
    std::function<void()> m_reading;
};
