#include "sql_store/SqlStore.h"

#include "history_operations/OperationsText.h"
#include "sql_store/SqlWriter.h"
#include "support/BlockTools.h"
#include "support/DatabaseTest.h"
#include "support/NotingListener.h"
#include "support/Testing.h"
#include "support/TickMaker.h"

#include <netinet/in.h>
#include <pqxx/pqxx>
#include <sys/socket.h>
#include <unistd.h>

namespace {

class SqlStoreTest : public DatabaseTest {
protected:
    std::unique_ptr<SqlStore> OpenStore(NotingListener& a_listener)
    {
        auto store = std::make_unique<SqlStore>(SqlAddress(m_connection), S_quick);
        store->Open(a_listener);
        EXPECT_TRUE(a_listener.WaitFor("restored"));
        return store;
    }

    static constexpr SqlStore::Pauses S_quick{std::chrono::milliseconds(5), std::chrono::milliseconds(50)};
};

} // namespace

TEST_F(SqlStoreTest, RowsComeBackBitForBit)
{
    using Limits = std::numeric_limits<double>;
    const NDateTime withShare(2024, 2, 29, 12, 0, 0, 7);
    NDateTime shifted = withShare;
    shifted.ShiftMilliSec();
    NDateTime moved(2024, 2, 29, 12, 0, 1, 0);
    moved.ShiftSec(3600);
    const std::vector<NDateTime> times = {NDateTime(100, 1, 1),
                                          NDateTime(1899, 12, 29, 6, 0, 0, 5),
                                          NDateTime(1970, 1, 1, 23, 59, 59, 0),
                                          withShare,
                                          shifted,
                                          moved,
                                          NDateTime::FromDouble(45418.75),
                                          NDateTime(4095, 12, 31, 23, 59, 58, 0)};
    const std::vector<double> prices = {
        0.1, -0.0, HUGE_VAL, -HUGE_VAL, std::nan(""), Limits::denorm_min(), Limits::max(), 1.0 / 3};
    const std::vector<double> volumes = {1, 2, 3, 4, 5, 6, 7, 1e15 + 1};
    const History rows(EIntervalTick, 1, std::vector(times), {{Price, prices}, {Volume, volumes}});
    m_writer->CreateInstrument(TickMaker::Instrument("A"));
    EXPECT_EQ(m_writer->AppendRows("A", 0, rows).count, rows.GetRecordsCount());

    NotingListener listener;
    const auto store = OpenStore(listener);
    EXPECT_EQ(BytesOf(store->ReadRows("A", 0, 100)), BytesOf(rows));
    EXPECT_EQ(store->ReadRows("A", 3, 5).TimeSeries(), std::vector(times.begin() + 3, times.begin() + 5));
    EXPECT_EQ(store->ReadInstruments()[0].firstDay, NDateTime(100, 1, 1));
    EXPECT_EQ(store->ReadInstruments()[0].lastDay, NDateTime(4095, 12, 31));
    EXPECT_TRUE(store->ReadRows("no such", 0, 9).IsEmpty());
    EXPECT_EQ(store->GetRowCount("no such"), 0U);
    EXPECT_EQ(store->FindRow("no such", withShare), 0U);
}

TEST_F(SqlStoreTest, BulkLoadsAndPagesFitTogether)
{
    constexpr std::uint64_t count = 60'000; // more than a page
    m_writer->CreateInstrument(TickMaker::Instrument("A"));
    const History rows = TickMaker::Rows(0, count);
    ASSERT_EQ(m_writer->AppendRows("A", 0, rows).count, count);
    NotingListener listener;
    const auto store = OpenStore(listener);
    EXPECT_EQ(store->GetRowCount("A"), count);
    EXPECT_EQ(BytesOf(store->ReadRows("A", 0, count)), BytesOf(rows));
    EXPECT_EQ(BytesOf(store->ReadRows("A", 49'990, 50'010)), BytesOf(TickMaker::Rows(49'990, 50'010)));

    // Where a time lies is what a search through all rows says.
    const auto& times = rows.TimeSeries();
    for (const NDateTime& time :
         {times[0], times[1], times[19'999], times[20'000], times[40'123], times[count - 1],
          NDateTime(2021, 1, 3), NDateTime(2020, 12, 27, 9, 0, 0, 1), NDateTime(2020, 12, 27, 9, 0, 0, 99),
          NDateTime(2020, 12, 26), NDateTime(2030, 1, 1), NDateTime()}) {
        SCOPED_TRACE(testing::Message() << time.ToDouble() << " " << time.GetMilliSec());
        const auto found = std::lower_bound(times.begin(), times.end(), time);
        EXPECT_EQ(store->FindRow("A", time), static_cast<std::uint64_t>(found - times.begin()));
    }
}

TEST_F(SqlStoreTest, InstrumentsOperationsAndBooksComeBack)
{
    StoreInstrument instrument = TickMaker::Instrument(std::string("\0'\\\xE9\xFF", 5));
    instrument.shortName = "\x9C\xB9";
    instrument.groups = {L"Spółki", L"Indeks \"20\""};
    instrument.series = {DSProp(Price, EAggrTypeOhlcLast, L"Kurs łączny", EPrecision2, EPrecision4),
                         DSProp(Turnover)};
    m_writer->CreateInstrument(instrument);
    m_writer->CreateInstrument(instrument);

    HistoryOperations operations;
    ASSERT_TRUE(operations.Parse("7\n1,240506,1,0.333333333333\n2,240507,4,3\n"));
    m_writer->SetOperations(instrument.isin, operations);
    Offers offers;
    offers.SetTime(NDateTime(2024, 5, 6, 9, 0, 1, 3));
    offers.SetBuyIfChanged({10.5, 10.25});
    offers.SetQSellIfChanged({100});
    m_writer->SetOffers(instrument.isin, offers);

    NotingListener listener;
    const auto store = OpenStore(listener);
    const auto found = store->ReadInstruments();
    ASSERT_EQ(found.size(), 1U);
    const auto told = [](const StoreInstrument& a_instrument) {
        const DSProp& first = *a_instrument.series.begin();
        return std::tuple(a_instrument.isin, a_instrument.shortName, a_instrument.groups, a_instrument.series,
                          first.GetAggrType(), first.GetLabel(), first.GetMaxPrecision());
    };
    EXPECT_EQ(told(found[0]), told(instrument));
    EXPECT_TRUE(found[0].live);
    EXPECT_LT(found[0].lastDay, found[0].firstDay);

    EXPECT_EQ(OperationsText::Write(store->ReadOperations(instrument.isin)),
              OperationsText::Write(operations));
    const auto book = store->ReadOffers(instrument.isin);
    ASSERT_TRUE(book);
    EXPECT_EQ(book->GetTime().value, offers.GetTime().value);
    EXPECT_EQ(book->find(Bid2)->second.value, 10.25);
    EXPECT_EQ(book->find(AskVolume1)->second.value, 100);
    EXPECT_FALSE(book->find(Ask1)->second.IsSet());

    EXPECT_TRUE(m_writer->RemoveInstrument(instrument.isin));
    EXPECT_FALSE(m_writer->RemoveInstrument(instrument.isin));
    EXPECT_FALSE(store->ReadOffers(instrument.isin));
    EXPECT_TRUE(store->ReadInstruments().empty());
    m_writer->CreateInstrument(instrument);
    EXPECT_NE(store->ReadInstruments().at(0).generation, found[0].generation) << "its rows are others";
}

TEST_F(SqlStoreTest, ARepeatedAppendDoublesNothing)
{
    m_writer->CreateInstrument(TickMaker::Instrument("A"));
    EXPECT_EQ(m_writer->AppendRows("A", 0, TickMaker::Rows(0, 10)).count, 10U);
    EXPECT_EQ(m_writer->AppendRows("A", 0, TickMaker::Rows(0, 10)).count, 10U);
    EXPECT_EQ(m_writer->AppendRows("A", 5, TickMaker::Rows(5, 15)).count, 15U);
    EXPECT_EQ(m_writer->AppendRows("A", 2, TickMaker::Rows(2, 4)).count, 15U);

    const History daily(std::set{ESeriesId::Price, Volume}, EIntervalDay, 1);
    const struct {
        const char* what;
        const char* isin;
        std::uint64_t position;
        History rows;
    } conflicts[] = {
        {"another row there", "A", 14, TickMaker::Rows(15, 16)},
        {"a gap", "A", 16, TickMaker::Rows(16, 17)},
        {"a time that goes back", "A", 15, TickMaker::Rows(14, 15)},
        {"another interval", "A", 15, daily},
        {"other series", "A", 15, History(std::set{ESeriesId::Price}, EIntervalTick, 1)},
        {"nobody", "B", 0, TickMaker::Rows(0, 1)},
        {"a column too short", "A", 15,
         History(EIntervalTick, 1, {TickMaker::TimeOf(15)}, {{ESeriesId::Price, {1.0}}, {Volume, {}}})},
    };
    for (const auto& conflict : conflicts) {
        SCOPED_TRACE(conflict.what);
        EXPECT_THROW(m_writer->AppendRows(conflict.isin, conflict.position, conflict.rows), SqlConflict);
        EXPECT_EQ(m_writer->GetRowCount("A"), 15U);
    }
    StoreInstrument other = TickMaker::Instrument("A");
    other.series.insert(DSProp(Lop));
    EXPECT_THROW(m_writer->CreateInstrument(other), SqlConflict);
}

// Each appender numbers its row by what it believes is there; who comes second is refused and tries again. The reader
// goes from what it has seen to what is there, as a subscription does.
TEST_F(SqlStoreTest, RowsOfManyAppendersAreSeenInOrderAndOnce)
{
    constexpr std::uint64_t count = 300;
    m_writer->CreateInstrument(TickMaker::Instrument("A"));
    NotingListener listener;
    const auto store = OpenStore(listener);
    std::vector<std::thread> appenders;
    appenders.reserve(4);
    for (int appender = 0; appender < 4; ++appender) {
        appenders.emplace_back([&] {
            SqlWriter writer(m_connection);
            for (std::uint64_t next = 0; (next = writer.GetRowCount("A")) < count;) {
                History row = TickMaker::Rows(next, next + 1);
                row.find(ESeriesId::Price)->second[0] =
                    static_cast<double>(std::hash<std::thread::id>()(std::this_thread::get_id()) % 1000);
                try {
                    writer.AppendRows("A", next, row);
                } catch (const SqlConflict&) {
                    continue; // another one was faster
                }
            }
        });
    }
    std::uint64_t seen = 0;
    std::vector<double> volumes;
    std::size_t told = 0;
    while (seen < count) {
        ASSERT_TRUE(listener.WaitFor("rows A", told + 1)) << seen;
        told = listener.Count("rows A");
        const std::uint64_t there = store->GetRowCount("A");
        const History rows = store->ReadRows("A", seen, there);
        ASSERT_EQ(rows.GetRecordsCount(), there - seen);
        volumes.insert(volumes.end(), rows.find(Volume)->second.begin(), rows.find(Volume)->second.end());
        seen = there;
    }
    for (std::thread& appender : appenders)
        appender.join();
    EXPECT_EQ(volumes, TickMaker::Rows(0, count).find(Volume)->second);
}

TEST_F(SqlStoreTest, TerminalsThatStartAtOnceMakeTheTablesOnceAndAllHearOfAChange)
{
    NotingListener listeners[6];
    std::vector<std::unique_ptr<SqlStore>> stores;
    for (NotingListener& listener : listeners) {
        stores.push_back(std::make_unique<SqlStore>(SqlAddress(m_connection), S_quick));
        stores.back()->Open(listener);
    }
    const auto allAreTold = [&](const char* a_what, std::size_t a_times = 1) {
        return std::ranges::all_of(
            listeners, [&](NotingListener& a_listener) { return a_listener.WaitFor(a_what, a_times); });
    };
    EXPECT_TRUE(allAreTold("restored"));
    m_writer->CreateInstrument(TickMaker::Instrument("A"));
    EXPECT_TRUE(allAreTold("changed"));
    m_writer->AppendRows("A", 0, TickMaker::Rows(0, 1));
    EXPECT_TRUE(allAreTold("rows A"));
    m_writer->SetOffers("A", Offers());
    EXPECT_TRUE(allAreTold("rows A", 2));
    stores.clear();
    for (const NotingListener& listener : listeners)
        EXPECT_EQ(listener.Count("broken"), 0U);
}

TEST_F(SqlStoreTest, TablesOfAnotherVersionAreLeftAlone)
{
    m_writer->GetRowCount("A");
    {
        pqxx::connection connection(m_connection);
        pqxx::nontransaction(connection).exec("UPDATE kalvento.state SET version = 77");
    }
    NotingListener listener;
    SqlStore store(SqlAddress(m_connection), S_quick);
    store.Open(listener);
    EXPECT_TRUE(listener.WaitFor("broken"));
    EXPECT_THROW(store.GetRowCount("A"), std::runtime_error);
    store.Close();
    EXPECT_EQ(listener.Count("restored"), 0U);
    EXPECT_NE(listener.Reason().find(L"77"), std::wstring::npos);
}

TEST_F(SqlStoreTest, WhatChangedDuringABreakIsToldAfterIt)
{
    m_writer->CreateInstrument(TickMaker::Instrument("A"));
    NotingListener listener;
    const auto store = OpenStore(listener);
    m_cluster->StopAtOnce();
    EXPECT_TRUE(listener.WaitFor("broken"));
    EXPECT_THROW(store->GetRowCount("A"), std::runtime_error);
    m_cluster->Start();
    ASSERT_TRUE(listener.WaitFor("restored", 2));
    EXPECT_EQ(store->GetRowCount("A"), 0U);

    // A read that fails for any reason is followed by Restored, so that whoever waits for it asks again.
    pqxx::connection connection(m_connection);
    pqxx::nontransaction(connection).exec("ALTER TABLE kalvento.instruments RENAME COLUMN row_count TO gone");
    EXPECT_THROW(store->GetRowCount("A"), std::runtime_error);
    ASSERT_TRUE(listener.WaitFor("restored", 3));
    pqxx::nontransaction(connection).exec("ALTER TABLE kalvento.instruments RENAME COLUMN gone TO row_count");
    EXPECT_TRUE(listener.WaitFor("broken", listener.Count("restored") - 1));
}

// A frozen server answers neither a statement nor a request to cancel it; only the end of the test's patience would
// tell.
TEST_F(SqlStoreTest, ClosingDoesNotWaitForAServerThatHangs)
{
    m_writer->CreateInstrument(TickMaker::Instrument("A"));
    NotingListener listener;
    const auto store = OpenStore(listener);
    store->GetRowCount("A");
    m_cluster->Freeze();
    std::atomic<bool> reading = false;
    std::thread reader([&] {
        reading = true;
        reading.notify_all();
        EXPECT_THROW(store->GetRowCount("A"), std::runtime_error);
    });
    reading.wait(false);
    store->Close();
    reader.join();
    m_cluster->Thaw();
    store->Open(listener);
    EXPECT_TRUE(listener.WaitFor("restored", 2));
}

TEST_F(SqlStoreTest, ClosingDoesNotWaitForAConnection)
{
    // It takes connections and never says a word.
    const int silent = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    ASSERT_EQ(::bind(silent, reinterpret_cast<sockaddr*>(&address), size), 0);
    ASSERT_EQ(::listen(silent, 5), 0);
    ASSERT_EQ(::getsockname(silent, reinterpret_cast<sockaddr*>(&address), &size), 0);
    NotingListener listener;
    SqlStore store(
        SqlAddress("host=127.0.0.1 connect_timeout=600 port=" + std::to_string(ntohs(address.sin_port))));
    store.Open(listener);
    const int accepted = ::accept(silent, nullptr, nullptr); // so it is on its way
    store.Close();
    EXPECT_TRUE(listener.Told().empty());
    ::close(accepted);
    ::close(silent);
}

TEST(SqlStoreWithoutADatabaseTest, SaysSoAndHasNothing)
{
    NotingListener listener;
    SqlStore store{SqlAddress("")};
    store.Open(listener);
    EXPECT_TRUE(listener.WaitFor("broken"));
    EXPECT_EQ(listener.Reason(), L"nie wskazano bazy");
    EXPECT_TRUE(store.ReadInstruments().empty());
}
