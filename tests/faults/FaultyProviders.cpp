// Providers without the kit: some raise from each operation that others call, one delivers whatever it likes, on
// several threads at once and to the very end.
#include "contract_kit/TestProvider.h"
#include "modules/IConsumer.h"
#include "modules/IModuleRegistry.h"
#include "modules/PluginDescription.h"
#include "modules/Subscribe.h"
#include "series/CurrentState.h"
#include "series/History.h"
#include "series/LatestRecords.h"
#include "series/Offers.h"
#include "series/Record.h"
#include "series/Synchronization.h"
#include "support/Testing.h"

namespace {

class OneAssetProvider : public TestProvider {
public:
    explicit OneAssetProvider(std::wstring a_name) : TestProvider(std::move(a_name))
    {
        series = alternativeSeries = {DSProp(Price), DSProp(Volume)};
        params.emplace(
            "FAULTY000001",
            AssetParams(15, 1, {{EIntervalTick, RangeData(NDateTime(2020, 1, 1), NDateTime(2021, 1, 1))}}));
    }
    std::vector<std::shared_ptr<Asset>> GetAssets() const override { return {m_asset}; }
    std::shared_ptr<Asset> GetAssetByIsin(const std::string&) override { return m_asset; }

private:
    const std::shared_ptr<Asset> m_asset =
        std::make_shared<Asset>(this, "FAULTY", "FAULTY", "TEST", "FAULTY000001");
};

/// Raises in the operation of that number.
class RaisingProvider : public OneAssetProvider {
public:
    RaisingProvider(std::wstring a_name, unsigned int a_operation, bool a_number)
        : OneAssetProvider(std::move(a_name)), m_operation(a_operation), m_number(a_number)
    {}
    static constexpr const wchar_t* S_operations[] = {
        L"SwitchConnection",  L"GetAssets",        L"GetAssetParams", L"GetAssetSeries",
        L"StartSubscription", L"StopSubscription", L"OnStopWork"};

    void SwitchConnection(bool) override { RaiseIn(0); }
    std::vector<std::shared_ptr<Asset>> GetAssets() const override
    {
        RaiseIn(1);
        return OneAssetProvider::GetAssets();
    }
    AssetParams GetAssetParams(const std::string& a_isin) override
    {
        RaiseIn(2);
        return OneAssetProvider::GetAssetParams(a_isin);
    }
    std::set<DSProp> GetAssetSeries(const Asset& a_asset) override
    {
        RaiseIn(3);
        return OneAssetProvider::GetAssetSeries(a_asset);
    }
    bool StartSubscription(const Subscribe::StartParams&) override
    {
        RaiseIn(4);
        return true;
    }
    void StopSubscription(const Subscribe::StopParams&) override { RaiseIn(5); }
    void OnStopWork() override { RaiseIn(6); }

private:
    void RaiseIn(unsigned int a_operation) const
    {
        if (a_operation == m_operation && m_number)
            throw 7;
        if (a_operation == m_operation)
            throw std::runtime_error("no line");
    }
    const unsigned int m_operation;
    const bool m_number;
};

/// Its stop ends nothing: only OnStopWork does, since behind that its consumers may be gone.
class UnrulyProvider : public OneAssetProvider {
public:
    UnrulyProvider() : OneAssetProvider(L"Unruly") {}
    ~UnrulyProvider() override { UnrulyProvider::OnStopWork(); }

    bool StartSubscription(const Subscribe::StartParams& a_params) override
    {
        const std::lock_guard lock(m_mutex);
        for (unsigned int seed = 1; seed <= 4; ++seed)
            m_threads.emplace_back([this, consumer = a_params.GetConsumer(), number = a_params.GetRequestId(),
                                    seed] { Deliver(*consumer, number, seed); });
        return true;
    }
    void OnStopWork() override
    {
        m_quit = true;
        const std::lock_guard lock(m_mutex);
        for (std::thread& thread : m_threads)
            thread.join();
        m_threads.clear();
    }

private:
    void Deliver(IConsumer& a_consumer, unsigned int a_number, unsigned int a_seed) const
    {
        std::mt19937 random(a_seed);
        while (!m_quit) {
            try {
                DeliverOne(a_consumer, random() % 10 == 0 ? a_number + 1000 : a_number, random);
            } catch (...) {
                continue; // its own affair
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    }
    static NDateTime AnyTime(std::mt19937& a_random)
    {
        switch (a_random() % 4) {
        case 0:
            return {2020, 13, 40}; // invalid
        case 1:
            return {1900, 1, 1};
        default:
            return {2020, 1 + a_random() % 12, 1 + a_random() % 28, a_random() % 24, a_random() % 60, 0, 0};
        }
    }
    // Columns of any series, of any length.
    static std::pair<std::vector<NDateTime>, DataSeriesSet::Columns> AnyBlock(std::mt19937& a_random)
    {
        std::pair<std::vector<NDateTime>, DataSeriesSet::Columns> block;
        for (auto row = a_random() % 4; row > 0; --row)
            block.first.push_back(AnyTime(a_random));
        for (const ESeriesId series : {Price, Volume, IntervalOpen}) {
            const std::size_t length = a_random() % 3 == 0 ? a_random() % 5 : block.first.size();
            if (a_random() % 4 != 0)
                block.second.emplace_back(
                    series, std::vector<double>(length, std::numeric_limits<double>::quiet_NaN()));
        }
        return block;
    }
    static void DeliverOne(IConsumer& a_consumer, unsigned int a_number, std::mt19937& a_random)
    {
        const EInterval interval = a_random() % 2 == 0 ? EIntervalTick : EIntervalDay;
        const auto multiplicity = static_cast<unsigned int>(a_random() % 3);
        auto [times, columns] = AnyBlock(a_random);
        switch (a_random() % 12) {
        case 0:
            return a_consumer.ProcessHistory(a_number,
                                             {interval, multiplicity, std::move(times), std::move(columns)});
        case 1:
            return a_consumer.ProcessSynchronization(
                a_number, {interval, multiplicity, std::move(times), std::move(columns)});
        case 2:
            return a_consumer.ProcessHistoryEnd(a_number);
        case 3:
            return a_consumer.ProcessRecord(a_number, Record(AnyTime(a_random), {}));
        case 4:
            return a_consumer.ProcessRecord(a_number, Record(AnyTime(a_random), {{Volume, 1.0}}));
        case 5:
            return a_consumer.ProcessRecord(
                a_number,
                Record(AnyTime(a_random),
                       {{Price, std::numeric_limits<double>::infinity()}, {Volume, -1.0}, {Bid1, 0.0}}));
        case 6:
            return a_consumer.ProcessCurrentState(a_number, CurrentState(std::set<ESeriesId>{}));
        case 7:
            return a_consumer.ProcessOffers(a_number, Offers());
        case 8:
            return a_consumer.ProcessLatestRecords(a_number, LatestRecords());
        case 9:
            return a_consumer.ProcessOperations(a_number, HistoryOperations());
        case 10:
            return a_random() % 2 == 0 ? a_consumer.RequestEnded(a_number)
                                       : a_consumer.RequestRefused(a_number, L"");
        default:
            return a_consumer.SymbolDeleted(a_number, "");
        }
    }

    std::atomic<bool> m_quit = false;
    std::mutex m_mutex;
    std::vector<std::thread> m_threads;
};

void CreateModules(IModuleRegistry& a_registry, const Settings& /*a_options*/)
{
    for (const bool number : {false, true})
        for (unsigned int operation = 0; operation < std::size(RaisingProvider::S_operations); ++operation)
            a_registry.AddProvider(
                std::make_unique<RaisingProvider>((number ? L"Raises an int: " : L"Raises std::exception: ") +
                                                      std::wstring(RaisingProvider::S_operations[operation]),
                                                  operation, number));
    a_registry.AddProvider(std::make_unique<UnrulyProvider>());
}

} // namespace

KALVENTO_PLUGIN(FAULT_PLUGIN, "1.0", &CreateModules)
