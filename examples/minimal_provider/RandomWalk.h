#pragma once

#include "provider_kit/IMarketStore.h"
#include "series/Record.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

/// One invented instrument: a price that walks up and down, one trade every tenth of a second of the clock on the wall.
class RandomWalk : public IMarketStore {
public:
    static constexpr const char* S_isin = "RANDOMWALK01";

    RandomWalk()
    {
        for (unsigned int second = 0; second < 3600; ++second)
            AddTrade();
    }
    ~RandomWalk() override { RandomWalk::Close(); }

    void Open(IMarketStoreListener& a_listener) override
    {
        m_open = true;
        m_thread = std::thread([this, &a_listener] { Trade(a_listener); });
    }
    void Close() override
    {
        {
            const std::lock_guard lock(m_mutex);
            m_open = false;
        }
        m_wake.notify_all();
        if (m_thread.joinable())
            m_thread.join();
    }

    std::vector<StoreInstrument> ReadInstruments() override
    {
        const std::lock_guard lock(m_mutex);
        StoreInstrument walk;
        walk.isin = S_isin;
        walk.shortName = "WALK";
        walk.longName = "A random walk";
        walk.market = "EXAMPLE";
        walk.series = m_properties;
        walk.firstDay = m_rows.TimeSeries().front();
        walk.lastDay = m_rows.TimeSeries().back();
        walk.live = true;
        return {walk};
    }
    HistoryOperations ReadOperations(const std::string& /*a_isin*/) override { return {}; }
    std::uint64_t GetRowCount(const std::string& a_isin) override
    {
        const std::lock_guard lock(m_mutex);
        return a_isin == S_isin ? m_rows.GetRecordsCount() : 0;
    }
    std::uint64_t FindRow(const std::string& a_isin, const NDateTime& a_time) override
    {
        const std::lock_guard lock(m_mutex);
        const auto& times = m_rows.TimeSeries();
        return a_isin == S_isin ? std::lower_bound(times.begin(), times.end(), a_time) - times.begin() : 0;
    }
    History ReadRows(const std::string& a_isin, std::uint64_t a_first, std::uint64_t a_last) override
    {
        const std::lock_guard lock(m_mutex);
        History part(m_properties, EIntervalTick, 1);
        if (a_isin != S_isin)
            return part;
        for (std::uint64_t row = a_first; row < std::min<std::uint64_t>(a_last, m_rows.GetRecordsCount());
             ++row) {
            Record::Values values;
            for (const auto& [series, column] : m_rows)
                values.emplace_back(series, column[row]);
            part.AddData(Record(m_rows.TimeSeries()[row], std::move(values)));
        }
        return part;
    }
    std::optional<Offers> ReadOffers(const std::string& /*a_isin*/) override { return std::nullopt; }

private:
    void Trade(IMarketStoreListener& a_listener)
    {
        a_listener.Restored(); // there is nothing to connect to
        std::unique_lock lock(m_mutex);
        while (!m_wake.wait_for(lock, std::chrono::milliseconds(100), [this] { return !m_open; })) {
            AddTrade();
            lock.unlock();
            a_listener.RowsAdded(S_isin);
            lock.lock();
        }
    }
    void AddTrade() // with m_mutex held, or before there is a thread
    {
        m_random = m_random * 6364136223846793005U + 1442695040888963407U;
        m_price += static_cast<double>(m_random >> 62) - 1.5;
        m_time.ShiftSec(1);
        m_rows.AddData(
            Record(m_time, {{Price, m_price}, {Volume, 1.0 + static_cast<double>(m_random >> 40 & 15)}}));
    }

    const std::set<DSProp> m_properties{DSProp(Price), DSProp(Volume)};
    std::mutex m_mutex; // guards the rest but the thread
    std::condition_variable m_wake;
    bool m_open = false;
    std::uint64_t m_random = 1;
    double m_price = 1000.0;
    NDateTime m_time = NDateTime(2024, 1, 2, 9, 0, 0, 0);
    History m_rows = History(m_properties, EIntervalTick, 1);
    std::thread m_thread;
};
