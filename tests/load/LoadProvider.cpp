#include "load/LoadClock.h"
#include "modules/IModuleRegistry.h"
#include "modules/PluginDescription.h"
#include "provider_kit/StoreProvider.h"
#include "settings/Settings.h"
#include "support/TickMaker.h"

namespace {

// A market with a given number of rows a second. A row's price is its number, so that a consumer sees what is missing;
// its volume is the moment at which the store told of it. All memory is taken beforehand: what grows during a run is
// not the market's.
class LoadStore : public IMarketStore {
public:
    LoadStore(unsigned int a_instruments, unsigned int a_rate, unsigned int a_seconds)
        : m_rate(a_rate), m_seconds(a_seconds)
    {
        const std::size_t rows = std::size_t(a_rate) * a_seconds / a_instruments + 1;
        for (unsigned int number = 0; number < a_instruments; ++number) {
            auto instrument = std::make_unique<Instrument>();
            instrument->isin = "LOAD" + std::to_string(100000 + number);
            instrument->stamps.resize(rows);
            m_instruments.push_back(std::move(instrument));
        }
        // Rows of one second differ by their counter. The first row of each instrument stands there from the start.
        for (std::size_t row = 0; row < rows; ++row) {
            const auto second = static_cast<unsigned long>(row / S_rowsOfASecond);
            m_times.emplace_back(2024UL, 1UL, 2UL, 9 + second / 3600, second / 60 % 60, second % 60,
                                 static_cast<unsigned long>(row % S_rowsOfASecond));
        }
    }
    ~LoadStore() override { LoadStore::Close(); }

    void Open(IMarketStoreListener& a_listener) override
    {
        m_open = true;
        m_listener = &a_listener;
        a_listener.Restored();
    }
    void Close() override
    {
        m_open = false;
        for (std::thread& maker : m_makers)
            maker.join();
        m_makers.clear();
    }
    /// From now on rows come.
    void Begin()
    {
        for (std::size_t maker = 0; maker < S_makers; ++maker)
            m_makers.emplace_back([this, maker] { MakeRows(maker); });
    }

    std::vector<StoreInstrument> ReadInstruments() override
    {
        std::vector<StoreInstrument> instruments;
        for (const auto& instrument : m_instruments) {
            instruments.push_back(TickMaker::Instrument(instrument->isin));
            instruments.back().firstDay = instruments.back().lastDay = NDateTime(2024, 1, 2);
        }
        return instruments;
    }
    HistoryOperations ReadOperations(const std::string& /*a_isin*/) override { return {}; }
    std::uint64_t GetRowCount(const std::string& a_isin) override
    {
        const Instrument* instrument = Find(a_isin);
        return instrument != nullptr ? instrument->visible.load() : 0;
    }
    std::uint64_t FindRow(const std::string& a_isin, const NDateTime& a_time) override
    {
        const auto last = m_times.begin() + static_cast<std::ptrdiff_t>(GetRowCount(a_isin));
        return static_cast<std::uint64_t>(std::lower_bound(m_times.begin(), last, a_time) - m_times.begin());
    }
    History ReadRows(const std::string& a_isin, std::uint64_t a_first, std::uint64_t a_last) override
    {
        const Instrument* instrument = Find(a_isin);
        a_last = std::min(a_last, GetRowCount(a_isin));
        if (instrument == nullptr || a_first >= a_last)
            return {std::set<ESeriesId>{Price, Volume}, EIntervalTick, 1};
        std::vector<NDateTime> times(m_times.begin() + static_cast<std::ptrdiff_t>(a_first),
                                     m_times.begin() + static_cast<std::ptrdiff_t>(a_last));
        std::vector<double> prices;
        std::vector<double> volumes;
        for (std::uint64_t row = a_first; row < a_last; ++row) {
            prices.push_back(static_cast<double>(row));
            volumes.push_back(instrument->stamps[row]);
        }
        return {
            EIntervalTick, 1, std::move(times), {{Price, std::move(prices)}, {Volume, std::move(volumes)}}};
    }
    std::optional<Offers> ReadOffers(const std::string& /*a_isin*/) override { return std::nullopt; }

private:
    static constexpr std::size_t S_makers = 2;
    static constexpr std::size_t S_rowsOfASecond = 1000;

    struct Instrument {
        std::string isin;
        std::vector<double> stamps; // written before `visible` rises over them
        std::atomic<std::uint64_t> visible = 1;
    };

    Instrument* Find(const std::string& a_isin) const
    {
        const std::size_t place =
            a_isin.size() == 10 ? std::stoul(a_isin.substr(4)) - 100000 : m_instruments.size();
        return place < m_instruments.size() ? m_instruments[place].get() : nullptr;
    }
    // One of the threads: every millisecond the rows that are due, spread over its instruments.
    void MakeRows(std::size_t a_maker)
    {
        const auto begin = std::chrono::steady_clock::now();
        const std::uint64_t total = std::uint64_t(m_rate) / S_makers * m_seconds;
        std::size_t place = a_maker;
        for (std::uint64_t made = 0; m_open && made < total;) {
            const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begin;
            const auto due = std::min(
                total, static_cast<std::uint64_t>(passed.count() * m_rate / static_cast<double>(S_makers)));
            for (; made < due; ++made) {
                Instrument& instrument = *m_instruments[place];
                if (const std::uint64_t row = instrument.visible; row < instrument.stamps.size()) {
                    instrument.stamps[row] = NowNanoseconds();
                    instrument.visible = row + 1;
                    m_listener->RowsAdded(instrument.isin);
                }
                place = place + S_makers < m_instruments.size() ? place + S_makers : a_maker;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

    const unsigned int m_rate;
    const unsigned int m_seconds;
    std::vector<std::unique_ptr<Instrument>> m_instruments;
    std::vector<NDateTime> m_times; // of the rows, the same for all instruments
    IMarketStoreListener* m_listener = nullptr;
    std::atomic<bool> m_open = false;
    std::vector<std::thread> m_makers;
};

class LoadProvider : public StoreProvider {
public:
    explicit LoadProvider(std::unique_ptr<LoadStore> a_store)
        : StoreProvider(EGenericModuleNone, L"Load", std::move(a_store))
    {}
    // The program's sign that all have subscribed.
    void SetAuthorizationToken(std::string_view /*a_token*/) override
    {
        static_cast<LoadStore&>(GetStore()).Begin();
    }
};

void CreateModules(IModuleRegistry& a_registry, const Settings& a_options)
{
    a_registry.AddProvider(std::make_unique<LoadProvider>(std::make_unique<LoadStore>(
        static_cast<unsigned int>(a_options["Instruments"]), static_cast<unsigned int>(a_options["Rate"]),
        static_cast<unsigned int>(a_options["Seconds"]))));
}

} // namespace

KALVENTO_PLUGIN("load_provider", "1.0", &CreateModules)
