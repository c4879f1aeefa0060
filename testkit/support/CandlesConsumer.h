#pragma once

#include "contract_kit/CheckingConsumer.h"
#include "folding/SubscriptionCandles.h"
#include "support/Testing.h"

/// Checks the order of what comes for one subscription, and builds its candles.
class CandlesConsumer : public CheckingConsumer {
public:
    CandlesConsumer(const std::set<DSProp>& a_series, IntervalAndMultiplicity a_interval)
        : m_candles(a_series, a_interval.GetInterval(),
                    static_cast<unsigned short>(a_interval.GetMultiplicity()))
    {}

    void ProcessHistory(unsigned int a_number, History&& a_history) override
    {
        Fold([&] { return m_candles.AddHistory(History(a_history)); });
        CheckingConsumer::ProcessHistory(a_number, std::move(a_history));
    }
    void ProcessHistoryEnd(unsigned int a_number) override
    {
        Fold([&] {
            m_candles.HistoryEnd();
            return true;
        });
        CheckingConsumer::ProcessHistoryEnd(a_number);
    }
    void ProcessSynchronization(unsigned int a_number, Synchronization&& a_block) override
    {
        Fold([&] { return m_candles.SetSynchronization(Synchronization(a_block)); });
        CheckingConsumer::ProcessSynchronization(a_number, std::move(a_block));
    }
    void ProcessRecord(unsigned int a_number, const Record& a_record) override
    {
        Fold([&] { return m_candles.AddRecord(a_record).has_value(); });
        CheckingConsumer::ProcessRecord(a_number, a_record);
    }

    /// Until the last candle bears that time. False after a_patience.
    bool WaitForTime(const NDateTime& a_time, std::chrono::seconds a_patience = S_patience)
    {
        std::unique_lock lock(m_foldMutex);
        return m_folded.wait_for(lock, a_patience, [&] {
            const std::size_t count = m_candles.GetCount();
            return count > 0 && m_candles.GetCandle(count - 1).GetTime() == a_time;
        });
    }
    /// Whether all that came was what the candles can be made of.
    bool AllFitted()
    {
        const std::lock_guard lock(m_foldMutex);
        return m_allFitted;
    }
    History Candles()
    {
        const std::lock_guard lock(m_foldMutex);
        return m_candles.GetLastCandles(m_candles.GetCount());
    }

private:
    template<class Call>
    void Fold(const Call& a_call)
    {
        {
            const std::lock_guard lock(m_foldMutex);
            m_allFitted = a_call() && m_allFitted;
        }
        m_folded.notify_all();
    }

    std::mutex m_foldMutex; // of all that follows
    std::condition_variable m_folded;
    SubscriptionCandles m_candles;
    bool m_allFitted = true;
};
