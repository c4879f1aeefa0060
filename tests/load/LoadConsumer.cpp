#include "assets/Asset.h"
#include "folding/AggregatorWrapper.h"
#include "load/LoadClock.h"
#include "modules/IAppMediator.h"
#include "modules/IModuleRegistry.h"
#include "modules/PluginDescription.h"
#include "modules/ProviderBase.h"
#include "modules/RequestParams.h"
#include "modules/Subscribe.h"
#include "series/History.h"
#include "series/Record.h"
#include "series/Synchronization.h"
#include "settings/Settings.h"
#include "support/IdleConsumer.h"
#include "support/Testing.h"

namespace {

// Counts of times by their size, 32 steps to a doubling: a percentile is right to about two percent.
class Latencies {
public:
    void Add(double a_nanoseconds)
    {
        m_most = std::max(m_most, a_nanoseconds);
        const auto whole = static_cast<std::uint64_t>(std::max(a_nanoseconds, 32.0));
        const auto doubling = std::max<std::size_t>(std::bit_width(whole), 6) - 6;
        ++m_counts[std::min(doubling * 32 + (whole >> doubling) - 32, m_counts.size() - 1)];
        ++m_count;
    }
    double Percentile(double a_part) const
    {
        std::uint64_t left = static_cast<std::uint64_t>(a_part * static_cast<double>(m_count));
        for (std::size_t place = 0; place < m_counts.size(); ++place) {
            if (left < m_counts[place])
                return static_cast<double>((place % 32 + 33) << (place / 32));
            left -= m_counts[place];
        }
        return m_most;
    }
    double Most() const { return m_most; }

private:
    std::array<std::uint64_t, 58 * std::size_t{32}> m_counts = {};
    std::uint64_t m_count = 0;
    double m_most = 0.0;
};

/// Holds a candle of one minute for each instrument. On the main thread, as a window would, or on the provider's.
class LoadConsumer : public IdleConsumer {
public:
    LoadConsumer(std::wstring a_name, bool a_mainThread)
        : IdleConsumer(std::move(a_name)), m_mainThread(a_mainThread)
    {}

    unsigned int AddInstrument(HWND /*a_window*/, const Asset& a_asset) override
    {
        unsigned int number = 0;
        {
            const std::lock_guard lock(m_mutex);
            m_candles.push_back(std::make_unique<Candle>());
            number = static_cast<unsigned int>(m_candles.size());
            m_assets.push_back(a_asset);
        }
        RequestParams wanted(ParamsBase::S_kindDataHistory | ParamsBase::S_kindDataSynchro |
                             ParamsBase::S_kindDataRecord);
        wanted.SetIntervalAndMultiplicity(EIntervalMinute, 1);
        return a_asset.GetProvider()->StartSubscription({this, number, a_asset, wanted}) ? number : 0;
    }
    /// What was measured so far. Any thread.
    void SerialiseState(Settings& a_settings) const override
    {
        const std::lock_guard lock(m_mutex);
        a_settings["Rows"] = m_rows;
        a_settings["Synchronized"] = m_synchronized;
        a_settings["Faults"] = m_faults;
        a_settings["Half"] = m_latencies.Percentile(0.5);
        a_settings["Most"] = m_latencies.Percentile(0.99);
        a_settings["All"] = m_latencies.Most();
    }
    void OnStopWork() override
    {
        for (unsigned int number = 1; number <= m_assets.size(); ++number) {
            const Asset& asset = m_assets[number - 1];
            asset.GetProvider()->StopSubscription({this, number, asset, std::nullopt});
        }
        TakeQueue();
    }

    void ProcessSynchronization(unsigned int a_requestId, Synchronization&& a_block) override
    {
        const std::lock_guard lock(m_mutex);
        Candle& candle = *m_candles[a_requestId - 1];
        candle.next = a_block.GetLastRecord().find(Price)->second + 1.0;
        m_faults += candle.wrapper.AgregateSynchro(a_block) ? 0U : 1U;
        ++m_synchronized;
    }
    void ProcessRecord(unsigned int a_requestId, const Record& a_record) override
    {
        const std::lock_guard lock(m_mutex);
        if (!m_mainThread)
            return Fold(a_requestId, a_record);
        m_queue.emplace_back(a_requestId, a_record);
        if (m_queue.size() == 1)
            GetAppMediator()->PostToMainThread([this] { TakeQueue(); });
    }
    void RequestRefused(unsigned int, std::wstring_view) override { ++m_faults; }
    void RequestEnded(unsigned int) override { ++m_faults; }

private:
    struct Candle {
        AggregatorWrapper wrapper =
            AggregatorWrapper({DSProp(Price), DSProp(Volume)}, ELastRecordTime, EIntervalMinute, 1);
        double next = 0.0; // the number of the row that is to come
    };
    void Fold(unsigned int a_requestId, Record a_record) // with m_mutex held
    {
        Candle& candle = *m_candles[a_requestId - 1];
        const double number = a_record.find(Price)->second;
        const double told = a_record.find(Volume)->second;
        bool replaces = false;
        if (!candle.wrapper.AggregateRecord(a_record, replaces) || number != candle.next)
            ++m_faults;
        candle.next = number + 1.0;
        ++m_rows;
        m_latencies.Add(NowNanoseconds() - told);
    }
    void TakeQueue()
    {
        std::vector<std::pair<unsigned int, Record>> queue;
        const std::lock_guard lock(m_mutex);
        queue.swap(m_queue);
        for (auto& [number, record] : queue)
            Fold(number, std::move(record));
    }

    const bool m_mainThread;
    mutable std::mutex m_mutex;                     // callbacks of different numbers may run at once
    std::vector<std::unique_ptr<Candle>> m_candles; // by request number - 1
    std::vector<Asset> m_assets;
    std::vector<std::pair<unsigned int, Record>> m_queue;
    Latencies m_latencies;
    std::uint64_t m_rows = 0;
    std::uint64_t m_synchronized = 0;
    std::uint64_t m_faults = 0;
};

void CreateModules(IModuleRegistry& a_registry, const Settings& /*a_options*/)
{
    a_registry.AddConsumer(std::make_unique<LoadConsumer>(L"provider's thread, first", false));
    a_registry.AddConsumer(std::make_unique<LoadConsumer>(L"provider's thread, second", false));
    a_registry.AddConsumer(std::make_unique<LoadConsumer>(L"main thread", true));
}

} // namespace

KALVENTO_PLUGIN("load_consumer", "1.0", &CreateModules)
