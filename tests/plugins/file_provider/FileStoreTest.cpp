#include "file_provider/FileStore.h"

#include "platform/CodePage.h"
#include "plugins/file_provider/StoreFixture.h"
#include "support/MarketData.h"
#include "support/Testing.h"
#include "text_rows/ByteSource.h"
#include "text_rows/ReadOptions.h"
#include "text_rows/RowReader.h"

using namespace std::chrono_literals;

namespace {

constexpr const char* S_ticks = "ticks/coinbase_btcusd_2023-09-05_16h.csv";
constexpr const char* S_candles = "candles/bitstamp_btcusd_1min_2020-01-01.csv";

/// The rows of a text by symbol, without the store.
std::map<std::string, History> ReadDirectly(const std::filesystem::path& a_path,
                                            const std::string& a_symbolColumn)
{
    const auto source = kalvento::rows::ByteSource::Open(a_path.string());
    kalvento::rows::ReadOptions options;
    options.symbolColumn = a_symbolColumn;
    kalvento::rows::RowReader reader(*source, options);
    const auto& layout = reader.GetLayout();
    const std::set<ESeriesId> series(layout.series.begin(), layout.series.end());
    std::map<std::string, History> histories;
    kalvento::rows::RowBlock block;
    while (reader.Read(block, 1000)) {
        for (std::size_t row = 0; row < block.rows; ++row) {
            const std::string symbol = a_symbolColumn.empty() ? "" : reader.GetSymbols()[block.symbols[row]];
            History& history = histories
                                   .try_emplace(symbol, series, layout.interval.GetInterval(),
                                                layout.interval.GetMultiplicity())
                                   .first->second;
            Record record = history.GetEmptyRecord();
            auto column = block.columns.begin();
            for (auto& value : record)
                value.second = (*column++)[row];
            record.SetTime(block.times[row]);
            EXPECT_TRUE(history.AddData(record));
        }
    }
    return histories;
}

} // namespace

TEST_F(FileStoreTest, RowsAreThoseOfTheFiles)
{
    CopyMarket(S_ticks, "BTCUSD.csv");
    WriteSource("usa/shares.csv", MarketData::DealtOut(S_ticks, 9));
    CopyMarket(S_candles, "usa/MINUTES.csv");
    FileStore& store = OpenStore();

    std::map<std::string, History> expected = ReadDirectly(m_sources / "usa/shares.csv", "symbol");
    expected.emplace("BTCUSD", ReadDirectly(m_sources / "BTCUSD.csv", "").at(""));
    expected.emplace("MINUTES", ReadDirectly(m_sources / "usa/MINUTES.csv", "").at(""));
    const auto instruments = store.ReadInstruments();
    ASSERT_EQ(instruments.size(), expected.size());
    for (const StoreInstrument& instrument : instruments) {
        SCOPED_TRACE(instrument.isin);
        const History& rows = expected.at(instrument.isin);
        const std::uint64_t count = rows.GetRecordsCount();
        ASSERT_EQ(store.GetRowCount(instrument.isin), count);
        EXPECT_EQ(AllBytes(instrument.isin), BytesOf(rows));
        EXPECT_EQ(instrument.live, instrument.isin != "MINUTES");
        EXPECT_EQ(instrument.market, instrument.isin == "BTCUSD" ? "PLIKI" : "usa");
        EXPECT_TRUE(instrument.firstDay.SameDay(rows.TimeSeries().front()));
        EXPECT_TRUE(instrument.lastDay.SameDay(rows.TimeSeries().back()));
        for (std::uint64_t row = 0; row < count; row += 1 + count / 13) {
            const NDateTime time = rows.TimeSeries()[row];
            EXPECT_EQ(store.FindRow(instrument.isin, time), row);
            const History some = store.ReadRows(instrument.isin, row, row + 7);
            ASSERT_EQ(some.GetRecordsCount(), std::min<std::uint64_t>(7, count - row));
            EXPECT_EQ(some.TimeSeries().front(), time);
        }
    }
    EXPECT_EQ(store.GetRowCount("nobody"), 0U);
    EXPECT_TRUE(store.ReadRows("nobody", 0, 5).IsEmpty());
}

TEST_F(FileStoreTest, ManyPartsAreOneHistory)
{
    std::string text = "time,price,volume\n";
    constexpr std::uint64_t rows = 150'000;
    for (std::uint64_t row = 0; row < rows; ++row) {
        const auto minute = row / 1000;
        text += "2024-08-08 " + std::to_string(10 + minute / 60) + ":" + (minute % 60 < 10 ? "0" : "") +
                std::to_string(minute % 60) + ":00," + std::to_string(row) + ",1\n";
    }
    WriteSource("MANY.csv", text);
    FileStore& store = OpenStore();
    ASSERT_EQ(Parts("MANY").size(), 3U);
    ASSERT_EQ(store.GetRowCount("MANY"), rows);
    for (const std::uint64_t first : std::vector<std::uint64_t>{0, 65'530, 65'536, 131'071, 149'999}) {
        SCOPED_TRACE(first);
        const History some = store.ReadRows("MANY", first, first + 70'000);
        ASSERT_EQ(some.GetRecordsCount(), std::min<std::uint64_t>(70'000, rows - first));
        const auto& prices = std::as_const(some).find(Price)->second;
        EXPECT_EQ(prices.front(), static_cast<double>(first));
        EXPECT_EQ(prices.back(), static_cast<double>(first + prices.size() - 1));
        EXPECT_EQ(store.FindRow("MANY", some.TimeSeries().front()), first);
    }
}

TEST_F(FileStoreTest, TheTextIsReadOnce)
{
    CopyMarket(S_ticks, "BTCUSD.csv");
    WriteSource("shares.csv", MarketData::DealtOut(S_ticks, 9));
    EXPECT_EQ(OpenStore().GetTextsRead(), 2U);
    const std::string bytes = AllBytes("BTCUSD");
    EXPECT_EQ(OpenStore().GetTextsRead(), 0U);
    EXPECT_EQ(AllBytes("BTCUSD"), bytes);

    WriteSource("BTCUSD.csv", "time,price\n2024-08-08 10:00:00,1.5\n");
    EXPECT_EQ(OpenStore().GetTextsRead(), 1U);
    EXPECT_EQ(m_store->GetRowCount("BTCUSD"), 1U);
    EXPECT_EQ(Parts("BTCUSD").size(), 1U) << "parts of the older text are left";
}

// Whatever a kill, a full disk or a bad sector leaves: the rows are those of the text.
TEST_F(FileStoreTest, DamagedCachesAreMadeAgain)
{
    CopyMarket(S_ticks, "BTCUSD.csv");
    OpenStore();
    const std::string bytes = AllBytes("BTCUSD");
    const auto index = m_histories / "BTCUSD/Index.xml";
    const auto change = [](const std::filesystem::path& a_path, const auto& a_how) {
        std::string text = TemporaryFolder::ReadFile(a_path.string());
        a_how(text);
        std::ofstream(a_path, std::ios::binary) << text;
    };
    const auto halve = [](std::string& a_text) { a_text.resize(a_text.size() / 2); };
    const auto flip = [](std::string& a_text) { a_text[a_text.size() / 2] ^= 1; };
    const auto count = [](std::string& a_text) { a_text.replace(a_text.find("5882"), 4, "5883"); };
    const auto part = [&] { return Parts("BTCUSD").front(); };
    const std::pair<const char*, std::function<void()>> cases[] = {
        {"a flipped bit", [&] { change(part(), flip); }},
        {"half a part", [&] { change(part(), halve); }},
        {"no part", [&] { std::filesystem::remove(part()); }},
        {"half an index", [&] { change(index, halve); }},
        {"no index", [&] { std::filesystem::remove(index); }},
        {"an index of other rows", [&] { change(index, count); }},
        {"parts of a build that was killed",
         [&] { std::filesystem::copy_file(part(), m_histories / "BTCUSD/Rows-999-0-0.block"); }},
    };
    for (const auto& [name, damage] : cases) {
        SCOPED_TRACE(name);
        damage();
        OpenStore();
        EXPECT_EQ(AllBytes("BTCUSD"), bytes);
        EXPECT_EQ(Parts("BTCUSD").size(), 1U);
        OpenStore();
        EXPECT_EQ(m_store->GetTextsRead(), 0U) << "not whole again";
        EXPECT_EQ(AllBytes("BTCUSD"), bytes);
    }
    std::size_t aside = 0;
    for (const auto& entry : std::filesystem::directory_iterator(m_histories / "BTCUSD"))
        aside += entry.path().filename().string().find(".block.damaged-") == std::string::npos ? 0 : 1;
    EXPECT_GE(aside, 1U) << "a damaged part was not kept";
}

TEST_F(FileStoreTest, WithoutAFolderToWriteItWorksFromMemory)
{
    CopyMarket(S_ticks, "BTCUSD.csv");
    std::ofstream(m_histories / "BTCUSD") << "a file where the folder should be";
    FileStore& store = OpenStore();
    EXPECT_EQ(BytesOf(store.ReadRows("BTCUSD", 0, 10'000)),
              BytesOf(ReadDirectly(m_sources / "BTCUSD.csv", "").at("")));
}

TEST_F(FileStoreTest, FilesThatCannotBeReadLeaveTheOthersServed)
{
    WriteSource("GOOD.csv", "time,price\n2024-08-08 10:00:00,1.5\n");
    WriteSource("bad.csv", "time,price\n2024-08-08 10:00:00,1.5\n2024-08-08 10:00:01,abc\n");
    WriteSource("empty.csv", "");
    WriteSource("other.csv", "a,b\n1,2\n");
    WriteSource("cut.block", std::string("\x01\0\0\0\x05\0\0\0", 8));
    WriteSource("Dziwna nazwa ż.csv", "time,price\n2024-08-08 10:00:00,1.5\n");
    WriteSource("GOOD.book.csv", "time,bid1\n2024-08-08 10:00:00,9\n2024-08-08 10:00:01,9;5\n");
    WriteSource("deep/deeper/LOST.csv", "time,price\n2024-08-08 10:00:00,1.5\n");
    WriteSource("notes.md", "nothing");
    WriteSource("MIXED.csv", "time,price\n2024-08-08 09:00,1\n"
                             "2024-08-08 10:00,2\n2024-08-08 09:01,3\n2024-08-08 09:03,4\n"
                             "2024-08-08 09:02,5\n2024-08-08 09:01,6\n");
    std::vector<std::string> isins;
    for (const StoreInstrument& instrument : OpenStore().ReadInstruments())
        isins.push_back(instrument.isin);
    EXPECT_EQ(isins, (std::vector<std::string>{"Dziwna_nazwa_z", "GOOD"}));
    EXPECT_FALSE(m_store->ReadOffers("GOOD"));
    const std::vector<std::wstring> leftOut = m_listener->GetLeftOut();
    EXPECT_EQ(leftOut.size(), 6U);
    for (const wchar_t* name :
         {L"bad.csv:3", L"GOOD.book.csv:3", L"MIXED.csv:4", L"empty.csv", L"other.csv", L"cut.block"})
        EXPECT_TRUE(std::ranges::any_of(leftOut, [&](const std::wstring& a_fault) {
            return a_fault.find(name) != std::wstring::npos;
        })) << CodePage::WideToUtf8(name);
}

TEST_F(FileStoreTest, OperationsAndBooksLieBesideTheirFile)
{
    WriteSource("AAA.csv", "time,price\n2024-08-08 10:00:00,10\n2024-08-08 10:00:05,11\n");
    WriteSource("AAA.operations.txt", "3\n1,240101,2,0.5\n");
    WriteSource("AAA.book.csv", "time,bid1,qty_none,ask1,bid_volume1,bid2,bid_volume2\n"
                                "2024-08-08 10:00:00,9,0,12,5,0,0\n2024-08-08 10:00:03,9.5,0,11.5,6,9,1\n");
    WriteSource("BBB.csv", "time,price\n2024-08-08 10:00:00,10\n");
    WriteSource("operations_bbb.txt", "7\n");
    FileStore& store = OpenStore(1.0);
    EXPECT_EQ(store.ReadInstruments().size(), 2U);
    EXPECT_EQ(store.ReadOperations("AAA").Version(), 3);
    EXPECT_EQ(store.ReadOperations("BBB").Version(), 7);
    EXPECT_FALSE(store.ReadOffers("BBB"));
    const auto bid = [&] { return store.ReadOffers("AAA")->find(Bid1)->second.value; };
    EXPECT_EQ(bid(), 9.0);
    EXPECT_EQ(store.ReadOffers("AAA")->find(Ask1)->second.value, 12.0);
    EXPECT_FALSE(store.ReadOffers("AAA")->find(Bid2)->second.IsSet()) << "a price of 0";
    EXPECT_FALSE(store.ReadOffers("AAA")->find(BidVolume2)->second.IsSet());
    Move(3s);
    ASSERT_TRUE(m_listener->WaitFor("rows AAA"));
    EXPECT_EQ(bid(), 9.5);
    EXPECT_EQ(store.GetRowCount("AAA"), 1U) << "the book came before the row";
    // No list is not an empty list, which would take the place of the one that is kept.
    WriteSource("AAA.operations.txt", "4\n1,240101,2,0.5\n2,24");
    EXPECT_THROW(store.ReadOperations("AAA"), std::exception);
}

TEST_F(FileStoreTest, PlaybackIsRepeatable)
{
    WriteSource("shares.csv", MarketData::DealtOut(S_ticks, 9));
    CopyMarket(S_ticks, "BTCUSD.csv");
    std::vector<std::vector<std::string>> told;
    for (const auto pace : {1s, 37s}) {
        SCOPED_TRACE(pace.count());
        FileStore& store = OpenStore(60.0, "2023-09-05", "16:10");
        const std::uint64_t before = store.GetRowCount("S1");
        EXPECT_GT(before, 0U);
        EXPECT_EQ(store.FindRow("S1", NDateTime(2023, 9, 5, 16, 10, 1, 0)), before);
        while (store.GetTimeToNextRow("S1") || store.GetTimeToNextRow("BTCUSD"))
            Move(pace);
        // Open again: what a busy thread has not told yet is there by then.
        store.Close();
        store.Open(*m_listener);
        ASSERT_TRUE(m_listener->WaitFor("restored", 2));
        for (const auto& [symbol, rows] : ReadDirectly(m_sources / "shares.csv", "symbol"))
            EXPECT_EQ(AllBytes(symbol), BytesOf(rows)) << symbol;
    }
}

TEST_F(FileStoreTest, RowsComeSecondBySecondInOrder)
{
    WriteSource("A.csv", "time,price\n2024-08-07 09:00:00,1\n2024-08-08 10:00:00,2\n2024-08-08 10:00:02,3\n"
                         "2024-08-08 10:00:02,4\n2024-08-08 10:00:09,5\n2024-08-09 10:00:00,6\n");
    WriteSource("B.csv", "time,price\n2024-08-08 10:00:02,2\n2024-08-08 10:00:04,3\n");
    FileStore& store = OpenStore(2.0, "2024-08-08");
    EXPECT_EQ(store.GetRowCount("A"), 2U);
    EXPECT_EQ(store.GetRowCount("B"), 0U);
    ASSERT_TRUE(Step("B"));
    EXPECT_EQ(store.GetRowCount("A"), 4U);
    EXPECT_EQ(store.ReadRows("A", 0, 99).GetRecordsCount(), 4U) << "what comes later can be read";
    EXPECT_EQ(store.FindRow("A", NDateTime(2024, 8, 9)), 4U);
    Move(1h);
    ASSERT_TRUE(m_listener->WaitFor("rows A", 2));
    EXPECT_EQ(m_listener->Told(),
              (std::vector<std::string>{"restored", "rows A", "rows B", "rows B", "rows A"}));
    EXPECT_EQ(store.GetRowCount("A"), 5U) << "a later day never comes";
    EXPECT_FALSE(store.GetTimeToNextRow("A"));
}

TEST_F(FileStoreTest, TheMarketGoesOnWhileClosed)
{
    WriteSource("A.csv", "time,price\n2024-08-08 10:00:00,2\n2024-08-08 10:00:02,3\n2024-08-08 10:00:09,5\n");
    FileStore& store = OpenStore(1.0);
    store.Close();
    const auto told = m_listener->Told().size();
    Move(5s);
    store.Open(*m_listener);
    ASSERT_TRUE(m_listener->WaitFor("restored", 2));
    EXPECT_EQ(store.GetRowCount("A"), 2U);
    EXPECT_EQ(m_listener->Told().size(), told + 1);
    ASSERT_TRUE(Step("A"));
    EXPECT_EQ(store.GetRowCount("A"), 3U);
}

TEST_F(FileStoreTest, ChangedFilesAreServedAnew)
{
    const std::string start = "time,price\n2024-08-08 10:00:00,2\n2024-08-08 10:00:01,3\n";
    WriteSource("A.csv", start);
    FileStore& store = OpenStore(1.0);
    const auto generation = [&] { return store.ReadInstruments().front().generation; };
    const auto served = generation();
    Move(1s); // too early for the thread to look at the folder, which is about to change
    ASSERT_TRUE(m_listener->WaitFor("rows A"));

    // Rows that were appended break nothing.
    WriteSource("A.csv", start + "2024-08-08 10:00:03,4\n2024-08-08 10:00:50,5\n");
    WriteSource("B.csv", start);
    Move(2s);
    ASSERT_TRUE(m_listener->WaitFor("changed"));
    ASSERT_TRUE(m_listener->WaitFor("rows A", 2));
    EXPECT_EQ(store.GetRowCount("A"), 3U);
    EXPECT_EQ(store.ReadInstruments().size(), 2U);
    EXPECT_EQ(m_listener->Count("broken"), 0U);
    EXPECT_EQ(generation(), served);

    // Rows that were seen and are others now make a break of the connection, and end whoever was served from them.
    // Nothing of the old ones is left, even if nothing on the disk tells of them.
    std::filesystem::remove_all(m_histories / "A");
    WriteSource("A.csv", "time,price\n2024-08-08 10:00:00,7\n");
    Move(2s);
    ASSERT_TRUE(m_listener->WaitFor("changed", 2));
    EXPECT_EQ(store.GetRowCount("A"), 1U);
    const auto told = m_listener->Told();
    EXPECT_EQ(std::vector<std::string>(told.end() - 3, told.end()),
              (std::vector<std::string>{"broken", "restored", "changed"}));
    EXPECT_NE(generation(), served);
    EXPECT_EQ(store.ReadRows("A", 0, 1).find(Price)->second.front(), 7.0);

    // Somebody is writing just now: what was read before is served on.
    WriteSource("A.csv", "time,price\n2024-08-08 10:00:00,7\n2024-08-08 10:0");
    Move(2s);
    ASSERT_TRUE(m_listener->WaitFor("changed", 3));
    EXPECT_EQ(store.GetRowCount("A"), 1U);
}

// A disk of the network that is away for a moment ends nobody's subscription; a folder that was removed does.
TEST_F(FileStoreTest, ASubFolderThatCannotBeReadIsServedOn)
{
    const std::string rows = "time,price\n2024-08-08 10:00:00,2\n";
    WriteSource("GPW/A.csv", rows);
    WriteSource("B.csv", rows);
    FileStore& store = OpenStore();
    const auto generation = store.ReadInstruments().front().generation;
    const std::filesystem::path aside = m_sources.GetPath().string() + "-aside";
    std::filesystem::rename(m_sources / "GPW", aside);
    std::filesystem::create_symlink("GPW", m_sources / "GPW"); // leads to itself
    Move(2s);
    ASSERT_TRUE(m_listener->WaitFor("changed"));
    ASSERT_EQ(store.ReadInstruments().size(), 2U);
    EXPECT_EQ(store.ReadInstruments().front().generation, generation);
    EXPECT_EQ(store.ReadRows("A", 0, 1).find(Price)->second.front(), 2.0);

    std::filesystem::remove(m_sources / "GPW");
    std::filesystem::remove_all(aside);
    Move(2s);
    ASSERT_TRUE(m_listener->WaitFor("changed", 2));
    EXPECT_EQ(store.ReadInstruments().size(), 1U);
}

TEST_F(FileStoreTest, AFolderMayBeMissingAndCome)
{
    WriteSource("A.csv", "time,price\n2024-08-08 10:00:00,2\n");
    const auto aside = m_sources.GetPath().string() + "-aside";
    std::filesystem::rename(m_sources.GetPath(), aside);
    MakeStore().Open(*m_listener);
    ASSERT_TRUE(m_listener->WaitFor("broken"));
    EXPECT_THROW(m_store->GetRowCount("A"), std::exception);
    std::filesystem::rename(aside, m_sources.GetPath());
    Move(2s);
    ASSERT_TRUE(m_listener->WaitFor("restored"));
    EXPECT_EQ(m_store->GetRowCount("A"), 1U);
}
