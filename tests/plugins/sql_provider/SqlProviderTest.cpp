#include "sql_provider/SqlProvider.h"

#include "contract_kit/ProviderContract.h"
#include "sql_store/SqlWriter.h"
#include "support/CandlesConsumer.h"
#include "support/DatabaseTest.h"
#include "support/LogWatch.h"
#include "support/Testing.h"
#include "support/TickMaker.h"

#include <pqxx/pqxx>

namespace {

/// Instruments in a database of their own, served by the plug-in's provider.
class SqlSubject : public ProviderSubject {
public:
    SqlSubject()
        : m_connection(PostgresCluster::Get()->NewDatabase()),
          m_writer(m_connection),
          m_provider(m_connection)
    {
        for (const char* isin : {"PLSQL0000001", "PLSQL0000002"}) {
            m_writer.CreateInstrument(TickMaker::Instrument(isin));
            m_writer.AppendRows(isin, 0, TickMaker::Rows(0, 200));
        }
        m_provider.SwitchConnection(true);
        while (m_provider.GetConnectionStatus() != EConnectionStatusConnected ||
               m_provider.GetAssets().empty())
            std::this_thread::yield();
    }
    ProviderBase& Provider() override { return m_provider; }
    bool MakeLiveData(const Asset& a_asset) override
    {
        const std::lock_guard lock(m_mutex);
        const std::uint64_t next = m_writer.GetRowCount(a_asset.GetIsin());
        m_writer.AppendRows(a_asset.GetIsin(), next, TickMaker::Rows(next, next + 1));
        return true;
    }

private:
    std::mutex m_mutex;
    std::string m_connection;
    SqlWriter m_writer;
    SqlProvider m_provider;
};

std::vector<ProviderContractCase> Cases()
{
    if (PostgresCluster::Get() == nullptr)
        return {};
    return {{"Sql", [] { return std::make_unique<SqlSubject>(); }}};
}

// Repeats until the server took it: what SqlWriter promises to be harmless.
void AppendStubbornly(SqlWriter& a_writer, std::uint64_t a_number)
{
    for (;;) {
        try {
            a_writer.AppendRows("A", a_number, TickMaker::Rows(a_number, a_number + 1));
            return;
        } catch (const SqlConflict&) {
            throw;
        } catch (const std::exception&) {
            std::this_thread::yield(); // the server is away
        }
    }
}

class SqlProviderTest : public DatabaseTest {
protected:
    void AddInstrument(const std::string& a_isin, std::size_t a_rows)
    {
        m_writer->CreateInstrument(TickMaker::Instrument(a_isin));
        m_writer->AppendRows(a_isin, 0, TickMaker::Rows(0, a_rows));
    }
    /// The provider, once it has so many instruments.
    SqlProvider& Connect(std::size_t a_instruments)
    {
        m_provider.emplace(m_connection,
                           SqlStore::Pauses{std::chrono::milliseconds(5), std::chrono::milliseconds(50)});
        m_provider->SwitchConnection(true);
        while (m_provider->GetAssets().size() < a_instruments)
            std::this_thread::yield();
        return *m_provider;
    }
    void Start(CheckingConsumer& a_consumer, unsigned int a_number, const std::string& a_isin,
               unsigned int a_kinds)
    {
        const RequestParams params(a_kinds, EIntervalTick, 1, NDateTime(1990, 1, 1), NDateTime(2099, 12, 31),
                                   false);
        a_consumer.Open(a_number, params);
        EXPECT_TRUE(m_provider->StartSubscription(
            {&a_consumer, a_number, *m_provider->GetAssetByIsin(a_isin), params}));
    }
    /// Damages the instrument HURT, whose number the statements get as current_setting('test.hurt').
    void Hurt(const std::string& a_statements)
    {
        pqxx::connection connection(m_connection);
        pqxx::nontransaction transaction(connection);
        const int number =
            transaction.exec1("SELECT number FROM kalvento.instruments WHERE isin = 'HURT'")[0].as<int>();
        transaction.exec_params("SELECT set_config('test.hurt', $1, false)", number);
        transaction.exec("SET search_path = kalvento; " + a_statements);
    }

    const TestMediator m_mediator;
    CandlesConsumer m_keeper{TickMaker::Instrument("A").series, {EIntervalTick, 1}}; // before the provider
    std::optional<SqlProvider> m_provider;
};

} // namespace

INSTANTIATE_TEST_SUITE_P(Databases, ProviderContract, testing::ValuesIn(Cases()),
                         [](const auto& a_info) { return std::string(a_info.param.name); });

// Whoever writes repeats what was not acknowledged; whoever reads has each row once, in order, though the server died
// in the midst of all of it.
TEST_F(SqlProviderTest, AServerThatIsKilledLosesNoRowAndDoublesNone)
{
    constexpr std::uint64_t past = 500;
    constexpr std::uint64_t between = 200; // rows between two kills
    constexpr int kills = 5;
    AddInstrument("A", past);
    SqlProvider& provider = Connect(1);
    Start(m_keeper, 1, "A", 15);

    constexpr std::uint64_t all = past + between * (kills + 1);
    std::atomic<std::uint64_t> acknowledged = past;
    std::thread writing([&] {
        SqlWriter writer(m_connection);
        for (std::uint64_t number = past; number < all; ++number) {
            AppendStubbornly(writer, number);
            acknowledged = number + 1;
        }
    });
    for (int kill = 1; kill <= kills; ++kill) {
        // Both ends are at work then.
        while (acknowledged < past + between * static_cast<std::uint64_t>(kill) ||
               provider.GetConnectionStatus() != EConnectionStatusConnected)
            std::this_thread::yield();
        if (kill % 2 == 1)
            m_cluster->Kill();
        else
            m_cluster->StopAtOnce();
        m_cluster->Start();
    }
    writing.join();
    EXPECT_TRUE(m_keeper.WaitForTime(TickMaker::TimeOf(all - 1), std::chrono::seconds(90)));
    provider.StopWork();
    EXPECT_TRUE(m_keeper.AllFitted());
    EXPECT_EQ(m_keeper.Candles().find(Volume)->second, TickMaker::Rows(0, all).find(Volume)->second);
    EXPECT_EQ(m_keeper.Violations(), std::vector<std::string>());
}

// What can't be read ends the subscriptions that came upon it, says which instrument and row, and breaks no connection.
TEST_F(SqlProviderTest, ADamagedRowConcernsItsInstrumentAlone)
{
    for (const char* isin : {"GOOD", "HURT"})
        AddInstrument(isin, 200);
    Hurt(
        "UPDATE rows SET values = '{1}' WHERE position = 50 AND instrument = current_setting('test.hurt')::int");
    const LogWatch log;
    CheckingConsumer consumer;
    SqlProvider& provider = Connect(2);
    constexpr unsigned int live = ParamsBase::S_kindDataSynchro | ParamsBase::S_kindDataRecord;
    Start(consumer, 1, "GOOD", live);
    Start(consumer, 2, "HURT", live); // begins after the damage
    Start(consumer, 3, "HURT", ParamsBase::S_kindDataHistory);
    EXPECT_TRUE(consumer.WaitFor(1, CheckingConsumer::ESynchronization));
    EXPECT_TRUE(consumer.WaitFor(2, CheckingConsumer::ESynchronization));
    EXPECT_TRUE(consumer.WaitForEnd(3));
    EXPECT_EQ(consumer.Events(3).back(), CheckingConsumer::ERefused);

    // One that the server itself can't compute with, and live.
    Hurt("INSERT INTO rows SELECT instrument, 200, 'infinity', second, counter, day_number, values FROM rows"
         " WHERE position = 199 AND instrument = current_setting('test.hurt')::int;"
         "UPDATE instruments SET row_count = 201 WHERE isin = 'HURT';"
         "SELECT pg_notify('kalvento_rows', current_setting('test.hurt'))");
    EXPECT_TRUE(consumer.WaitForEnd(2));
    EXPECT_EQ(consumer.Events(2).back(), CheckingConsumer::EEnded);

    Hurt("UPDATE instruments SET interval_kind = -1 WHERE isin = 'HURT'; NOTIFY kalvento_instruments");
    while (provider.GetAssetByIsin("HURT") != nullptr)
        std::this_thread::yield();
    m_writer->AppendRows("GOOD", 200, TickMaker::Rows(200, 201));
    EXPECT_TRUE(consumer.WaitFor(1, CheckingConsumer::ERecord));
    provider.StopWork();
    EXPECT_EQ(consumer.Count(1, CheckingConsumer::ESynchronization), 1U) << "a break brings another one";
    EXPECT_EQ(consumer.Violations(), std::vector<std::string>());
    for (const char* told :
         {"HURT w bazie: wiersz 50:", "HURT w bazie: wiersze od 200 do 200:", "opis waloru HURT"})
        EXPECT_TRUE(log.Has(told)) << told << "\n" << testing::PrintToString(log.lines);
}
