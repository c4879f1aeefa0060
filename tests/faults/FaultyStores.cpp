// Providers of the kit over stores that break what IMarketStore asks of them: the kit keeps the promises to the
// consumers all the same. Without a fault it is the honest provider beside them.
#include "faults/FaultReport.h"
#include "modules/IModuleRegistry.h"
#include "modules/PluginDescription.h"
#include "settings/Settings.h"
#include "support/Testing.h"

namespace {

enum EFault : std::uint32_t {
    EFaultNone,
    EFaultManyThreads, // news from many threads at once, also what isn't so
    EFaultRaises,
    EFaultRaisesNumbers,
    EFaultSpoiltList,
    EFaultTellsAfterClose
};

const char* const S_isins[] = {"PLTEST000001", "PLTEST000002"};

class RudeStore : public MemoryStore {
public:
    explicit RudeStore(EFault a_fault) : m_fault(a_fault)
    {
        for (const char* isin : S_isins) {
            AddInstrument(TickMaker::Instrument(isin));
            for (std::size_t row = 0; row < FaultReport::S_rows / 2; ++row)
                AddNext(isin, row);
        }
        SetReading([this] { Stumble(); });
    }
    ~RudeStore() override { EndThreads(); }

    void Open(IMarketStoreListener& a_listener) override
    {
        m_told = &a_listener;
        MemoryStore::Open(a_listener);
        m_threads.emplace_back([this] { MakeRows(); });
        if (m_fault == EFaultManyThreads || m_fault == EFaultTellsAfterClose)
            for (unsigned int teller = 0; teller < 4; ++teller)
                m_threads.emplace_back([this, teller] { TellAnything(teller); });
    }
    void Close() override
    {
        MemoryStore::Close();
        if (m_fault != EFaultTellsAfterClose)
            EndThreads();
        Stumble(true);
    }
    std::vector<StoreInstrument> ReadInstruments() override
    {
        auto list = MemoryStore::ReadInstruments();
        if (m_fault != EFaultSpoiltList)
            return list;
        const auto add = [&](auto a_change) {
            StoreInstrument spoilt = list.front();
            a_change(spoilt);
            list.push_back(std::move(spoilt));
        };
        add([](StoreInstrument&) {}); // a second time
        add([](StoreInstrument& a_spoilt) { a_spoilt.isin.clear(); });
        add([](StoreInstrument& a_spoilt) { a_spoilt.isin = "../../outside"; });
        add([](StoreInstrument& a_spoilt) { a_spoilt.isin = "NOPRICE", a_spoilt.series = {DSProp(Volume)}; });
        add([](StoreInstrument& a_spoilt) {
            a_spoilt.isin = "LIVEDAYS", a_spoilt.interval = {EIntervalDay, 1};
        });
        add([](StoreInstrument& a_spoilt) {
            a_spoilt.isin = "NEVER", a_spoilt.interval = {EIntervalMinute, 0};
        });
        return list;
    }

private:
    void EndThreads()
    {
        m_quit = true;
        for (std::thread& thread : m_threads)
            thread.join();
        m_threads.clear();
    }
    void AddNext(const char* a_isin, std::size_t a_row)
    {
        AddRow(a_isin, TickMaker::TimeOf(a_row), {TickMaker::PriceOf(a_row), TickMaker::VolumeOf(a_row)});
    }
    void MakeRows()
    {
        constexpr auto pause = std::chrono::microseconds(std::chrono::seconds(1)) / (FaultReport::S_rows / 2);
        for (std::size_t row = FaultReport::S_rows / 2; row < FaultReport::S_rows && !m_quit; ++row) {
            for (const char* isin : S_isins)
                AddNext(isin, row);
            std::this_thread::sleep_for(pause);
        }
    }
    void TellAnything(unsigned int a_teller)
    {
        for (unsigned int round = a_teller; !m_quit; ++round) {
            if (round % 50 == 0)
                m_told->Broken(L"Nieprawda");
            if (round % 50 == 0 || round % 50 == 1)
                m_told->Restored();
            if (round % 70 == 0)
                m_told->InstrumentsChanged();
            m_told->RowsAdded(round % 9 == 0 ? "UNKNOWN" : S_isins[round % 2]);
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
    // Often, but rarely enough for each step of the provider to come to its end sometimes.
    void Stumble(bool a_always = false)
    {
        if (m_fault == EFaultRaises && (a_always || ++m_readings % 17 == 0))
            throw std::runtime_error("the store stumbles");
        if (m_fault == EFaultRaisesNumbers && (a_always || ++m_readings % 17 == 0))
            throw 7;
    }
    const EFault m_fault;
    IMarketStoreListener* m_told = nullptr;
    std::atomic<bool> m_quit = false;
    std::atomic<unsigned int> m_readings = 0;
    std::vector<std::thread> m_threads;
};

void CreateModules(IModuleRegistry& a_registry, const Settings& /*a_options*/)
{
    const auto add = [&](const wchar_t* a_name, EFault a_fault) {
        a_registry.AddProvider(std::make_unique<StoreProvider>(EGenericModuleNone, a_name,
                                                               std::make_unique<RudeStore>(a_fault)));
    };
    if (FAULT_HONEST)
        return add(L"Honest", EFaultNone);
    add(L"Store: news from many threads", EFaultManyThreads);
    add(L"Store: raises std::exception", EFaultRaises);
    add(L"Store: raises an int", EFaultRaisesNumbers);
    add(L"Store: spoilt list", EFaultSpoiltList);
    add(L"Store: news after its close", EFaultTellsAfterClose);
}

} // namespace

KALVENTO_PLUGIN(FAULT_PLUGIN, "1.0", &CreateModules)
