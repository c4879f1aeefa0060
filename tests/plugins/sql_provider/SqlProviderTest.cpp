#include "sql_provider/SqlProvider.h"

#include "contract_kit/ProviderContract.h"
#include "sql_store/SqlWriter.h"
#include "support/LogWatch.h"
#include "support/PostgresCluster.h"
#include "support/SqlTestTools.h"
#include "support/Testing.h"

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
            m_writer.CreateInstrument(TickInstrument(isin));
            m_writer.AppendRows(isin, 0, RowsOf(19'900, 20'100));
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
        m_writer.AppendRows(a_asset.GetIsin(), next, RowsOf(19'900 + next, 19'901 + next));
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
            a_writer.AppendRows("A", a_number, RowsOf(a_number, a_number + 1));
            return;
        } catch (const SqlConflict&) {
            throw;
        } catch (const std::exception&) {
            std::this_thread::yield(); // the server is away
        }
    }
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Databases, ProviderContract, testing::ValuesIn(Cases()),
                         [](const auto& a_info) { return std::string(a_info.param.name); });

// Whoever writes repeats what was not acknowledged; whoever reads has each row once, in order, though the server died
// in the midst of all of it.
TEST(SqlProviderTest, AServerThatIsKilledLosesNoRowAndDoublesNone)
{
    PostgresCluster* cluster = PostgresCluster::Get();
    if (cluster == nullptr)
        GTEST_SKIP() << "no PostgreSQL server here: install the package postgresql";
    constexpr std::uint64_t past = 500;
    constexpr std::uint64_t between = 200; // rows between two kills
    constexpr int kills = 5;
    const std::string connection = cluster->NewDatabase();
    SqlWriter first(connection);
    first.CreateInstrument(TickInstrument("A"));
    first.AppendRows("A", 0, RowsOf(0, past));

    const TestMediator mediator;
    CandlesConsumer keeper(TickInstrument("A").series, {EIntervalTick, 1});
    SqlProvider provider(connection, {std::chrono::milliseconds(5), std::chrono::milliseconds(50)});
    provider.SwitchConnection(true);
    while (provider.GetAssets().empty())
        std::this_thread::yield();
    const auto asset = provider.GetAssetByIsin("A");
    RequestParams params(15);
    params.SetIntervalAndMultiplicity(EIntervalTick, 1);
    params.SetDates(asset->GetParams().begin()->second.GetDates());
    keeper.Open(1, params);
    ASSERT_TRUE(provider.StartSubscription({&keeper, 1, *asset, params}));

    constexpr std::uint64_t all = past + between * (kills + 1);
    std::atomic<std::uint64_t> acknowledged = past;
    std::thread writing([&] {
        SqlWriter writer(connection);
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
            cluster->Kill();
        else
            cluster->StopAtOnce();
        cluster->Start();
    }
    writing.join();
    EXPECT_TRUE(keeper.WaitForTime(TimeOfRow(all - 1), std::chrono::seconds(90)));
    provider.StopSubscription({&keeper, 1, *asset, std::nullopt});
    EXPECT_EQ(keeper.Candles().find(Volume)->second, RowsOf(0, all).find(Volume)->second);
    EXPECT_EQ(keeper.Violations(), std::vector<std::string>());
    provider.StopWork();
}

// What can't be read ends the subscriptions that came upon it, says which instrument and row, and breaks no connection.
TEST(SqlProviderTest, ADamagedRowConcernsItsInstrumentAlone)
{
    PostgresCluster* cluster = PostgresCluster::Get();
    if (cluster == nullptr)
        GTEST_SKIP() << "no PostgreSQL server here: install the package postgresql";
    const std::string connection = cluster->NewDatabase();
    SqlWriter writer(connection);
    for (const char* isin : {"GOOD", "HURT"}) {
        writer.CreateInstrument(TickInstrument(isin));
        writer.AppendRows(isin, 0, RowsOf(0, 200));
    }
    pqxx::connection raw(connection);
    const auto hurt = [&](const std::string& a_statements) {
        pqxx::nontransaction transaction(raw);
        const int number =
            transaction.exec1("SELECT number FROM kalvento.instruments WHERE isin = 'HURT'")[0].as<int>();
        transaction.exec_params("SELECT set_config('test.hurt', $1, false)", number);
        transaction.exec("SET search_path = kalvento; " + a_statements);
    };
    hurt(
        "UPDATE rows SET values = '{1}' WHERE position = 50 AND instrument = current_setting('test.hurt')::int");

    const LogWatch log;
    const TestMediator mediator;
    CheckingConsumer consumer;
    SqlProvider provider(connection, {std::chrono::milliseconds(5), std::chrono::milliseconds(50)});
    provider.SwitchConnection(true);
    while (provider.GetAssets().size() < 2)
        std::this_thread::yield();
    const auto start = [&](unsigned int a_number, const std::string& a_isin, unsigned int a_kinds) {
        const RequestParams params(a_kinds, EIntervalTick, 1, NDateTime(1990, 1, 1), NDateTime(2099, 12, 31),
                                   false);
        consumer.Open(a_number, params);
        EXPECT_TRUE(
            provider.StartSubscription({&consumer, a_number, *provider.GetAssetByIsin(a_isin), params}));
    };
    constexpr unsigned int live = ParamsBase::S_kindDataSynchro | ParamsBase::S_kindDataRecord;
    start(1, "GOOD", live);
    start(2, "HURT", live); // begins behind the damage
    start(3, "HURT", ParamsBase::S_kindDataHistory);
    EXPECT_TRUE(consumer.WaitFor(1, CheckingConsumer::ESynchronization));
    EXPECT_TRUE(consumer.WaitFor(2, CheckingConsumer::ESynchronization));
    EXPECT_TRUE(consumer.WaitForEnd(3));
    EXPECT_EQ(consumer.Events(3).back(), CheckingConsumer::ERefused);

    // One that the server itself can't compute with, and live.
    hurt("INSERT INTO rows SELECT instrument, 200, 'infinity', second, counter, day_number, values FROM rows"
         " WHERE position = 199 AND instrument = current_setting('test.hurt')::int;"
         "UPDATE instruments SET row_count = 201 WHERE isin = 'HURT';"
         "SELECT pg_notify('kalvento_rows', current_setting('test.hurt'))");
    EXPECT_TRUE(consumer.WaitForEnd(2));
    EXPECT_EQ(consumer.Events(2).back(), CheckingConsumer::EEnded);

    hurt("UPDATE instruments SET interval_kind = -1 WHERE isin = 'HURT'; NOTIFY kalvento_instruments");
    while (provider.GetAssetByIsin("HURT") != nullptr)
        std::this_thread::yield();
    writer.AppendRows("GOOD", 200, RowsOf(200, 201));
    EXPECT_TRUE(consumer.WaitFor(1, CheckingConsumer::ERecord));
    provider.StopWork();
    EXPECT_EQ(consumer.Count(1, CheckingConsumer::ESynchronization), 1U) << "a break brings another one";
    EXPECT_EQ(consumer.Violations(), std::vector<std::string>());
    for (const char* told :
         {"HURT w bazie: wiersz 50:", "HURT w bazie: wiersze od 200 do 200:", "opis waloru HURT"})
        EXPECT_TRUE(std::ranges::any_of(
            log.lines, [&](const std::string& a_line) { return a_line.find(told) != std::string::npos; }))
            << told << "\n"
            << testing::PrintToString(log.lines);
}
