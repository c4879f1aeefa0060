#include "kalvento/SessionGenerator.h"

#include "apps/kalvento/RunToolHere.h"
#include "series/Offers.h"
#include "series/Series.h"
#include "support/TemporaryFolder.h"
#include "support/Testing.h"
#include "text_rows/ByteSource.h"
#include "text_rows/RowReader.h"
#include "time/TimeParts.h"

using namespace kalvento::tool;

namespace {

std::vector<GeneratedTrade> TradesOf(const GeneratorOptions& a_options)
{
    SessionGenerator generator(a_options);
    std::vector<GeneratedTrade> trades;
    GeneratedTrade trade;
    while (generator.Next(trade))
        trades.push_back(trade);
    return trades;
}

} // namespace

// Benchmarks and examples of other machines are compared by seed: these bytes never change.
TEST(SessionGeneratorTest, ASeedGivesTheSameBytesForEver)
{
    const ToolRun run = RunToolHere({"generate", "--rows", "5000", "--sessions", "3", "--seed", "42"});
    ASSERT_EQ(run.exitCode, EExitOk) << run.err;
    EXPECT_EQ(static_cast<std::uint32_t>(VeloTools::Series::GenerateId(run.out)), 298829415U);
    EXPECT_NE(RunToolHere({"generate", "--rows", "5000", "--sessions", "3", "--seed", "43"}).out, run.out);
}

// What is written is what a reader of books gets back; the trades are those of the market without a book.
TEST(SessionGeneratorTest, TheBookIsReadAsItWasMade)
{
    const TemporaryFolder folder;
    const std::string path = folder.Path("ticks.csv");
    const std::vector<std::string> market = {"generate", "--rows",      "3000", "--sessions",
                                             "2",        "--seed",      "5",    "--start-price",
                                             "0.04",     "--tick-size", "0.01"};
    std::vector<std::string> withBook = market;
    withBook.insert(withBook.end(), {"--output", path, "--book"});
    ASSERT_EQ(RunToolHere(withBook).exitCode, EExitOk);
    EXPECT_EQ(folder.Read("ticks.csv"), RunToolHere(market).out);

    GeneratorOptions options;
    options.rows = 3000;
    options.sessions = 2;
    options.seed = 5;
    options.startPrice = {4, 2};
    SessionGenerator generator(options);
    std::map<std::pair<std::chrono::sys_days, std::uint32_t>, GeneratedBook>
        books; // at the end of each second
    GeneratedTrade trade;
    while (generator.Next(trade))
        books[{trade.day, trade.second}] = generator.GetBook(trade);

    const auto file = kalvento::rows::ByteSource::Open(folder.Path("ticks.book.csv"));
    kalvento::rows::ReadOptions readOptions;
    readOptions.pricesFrom = Offers::Series;
    kalvento::rows::RowReader reader(*file, readOptions);
    kalvento::rows::RowBlock block;
    ASSERT_TRUE(reader.Read(block, books.size() + 1));
    ASSERT_EQ(block.rows, books.size());
    const auto& layout = reader.GetLayout();
    EXPECT_EQ(layout.series.size(), Offers::Series.size());
    std::size_t row = 0;
    std::size_t missing = 0;
    for (const auto& [time, book] : books) {
        ASSERT_TRUE(block.times[row] == TimeParts::TimeOf(time.first, time.second));
        for (std::size_t column = 0; column < layout.series.size(); ++column) {
            const ESeriesId series =
                layout.series[column] == Price ? layout.priceMeans : layout.series[column];
            const std::size_t place = static_cast<std::size_t>(series - Bid1) % 5;
            const std::size_t kind =
                static_cast<std::size_t>(series - Bid1) / 5; // two of prices, volumes, orders
            const GeneratedBook::Level& level = kind % 2 == 0 ? book.bids[place] : book.asks[place];
            const double values[] = {static_cast<double>(level.priceInTicks) / 100.0,
                                     static_cast<double>(level.volume), static_cast<double>(level.orders)};
            ASSERT_EQ(block.columns[column][row], values[kind / 2]) << "row " << row << " series " << series;
            missing += level.priceInTicks == 0 ? 1 : 0;
        }
        ++row;
    }
    EXPECT_GT(missing, 0U) << "no level was ever without an offer";
}

TEST(SessionGeneratorTest, EverySessionLooksLikeADayOfAnExchange)
{
    const std::tuple<std::uint64_t, std::uint32_t, Decimal, Decimal> cases[] = {
        {1, 1, {100, 0}, {1, 2}},    {7, 7, {100, 0}, {1, 2}},         {2331, 1, {1351, 2}, {1, 5}},
        {30000, 12, {1, 2}, {1, 2}}, {3000000, 1, {2450, 0}, {25, 2}}, {10, 3, {999999999, 9}, {1, 9}}};
    for (const auto& [rows, sessions, price, tick] : cases) {
        SCOPED_TRACE(std::to_string(rows) + " rows, " + std::to_string(sessions) + " sessions");
        GeneratorOptions options;
        options.rows = rows;
        options.sessions = sessions;
        options.startPrice = price;
        options.tickSize = tick;
        const auto trades = TradesOf(options);
        ASSERT_EQ(trades.size(), rows);

        std::set<std::chrono::sys_days> days;
        std::uint32_t inSecond = 0;
        for (std::size_t row = 0; row < trades.size(); ++row) {
            const GeneratedTrade& trade = trades[row];
            const bool newDay = days.insert(trade.day).second;
            ASSERT_GE(trade.priceInTicks, 1);
            ASSERT_GE(trade.volume, 1);
            ASSERT_LE(std::chrono::weekday(trade.day).iso_encoding(), 5U);
            ASSERT_GE(trade.second, 9U * 3600);
            ASSERT_LT(trade.second, 17U * 3600 + 300);
            // Orders are collected for the closing auction in these ten minutes.
            ASSERT_FALSE(trade.second >= 16U * 3600 + 50 * 60 && trade.second < 17U * 3600);
            if (newDay) {
                ASSERT_EQ(trade.second, 9U * 3600);
                inSecond = 1;
                continue;
            }
            ASSERT_EQ(trade.day, trades[row - 1].day);
            ASSERT_GE(trade.second, trades[row - 1].second);
            inSecond = trade.second == trades[row - 1].second ? inSecond + 1 : 1;
            ASSERT_LE(inSecond, SessionGenerator::S_maxRowsPerSecond + 1000);
            if (trade.second >= 17U * 3600 && trades[row - 1].second >= 17U * 3600) {
                ASSERT_EQ(trade.priceInTicks, trades[row - 1].priceInTicks);
            }
        }
        EXPECT_EQ(days.size(), sessions);
    }
}

TEST(SessionGeneratorTest, OptionsThatMakeNoMarketAreRefused)
{
    using Options = GeneratorOptions;
    using namespace std::chrono;
    const auto with = [](auto Options::*a_member, auto a_value) {
        Options options;
        options.*a_member = a_value;
        return options;
    };
    Options fewerRowsThanSessions;
    fewerRowsThanSessions.rows = 4;
    fewerRowsThanSessions.sessions = 5;
    const Options refused[] = {fewerRowsThanSessions,
                               with(&Options::rows, 0U),
                               with(&Options::sessions, 0U),
                               with(&Options::rows, SessionGenerator::S_maxRows + 1),
                               with(&Options::rows, SessionGenerator::S_maxRowsPerSession + 1),
                               with(&Options::tickSize, Decimal{0, 2}),
                               with(&Options::startPrice, Decimal{4, 3}),
                               with(&Options::startPrice, Decimal{999'999'999'999'999, 0}),
                               with(&Options::from, sys_days(year(9999) / 12 / 29)),
                               with(&Options::from, sys_days(year(1899) / 12 / 29))};
    for (const Options& options : refused)
        EXPECT_THROW(SessionGenerator{options}, std::invalid_argument) << &options - refused;
}

TEST(SessionGeneratorTest, DecimalsKeepTheirPlaces)
{
    for (const auto& [text, expected] : {std::pair("100", Decimal{100, 0}),
                                         {"0.05", {5, 2}},
                                         {".5", {5, 1}},
                                         {"7.", {7, 0}},
                                         {"1.20", {120, 2}}}) {
        SCOPED_TRACE(text);
        const auto number = Decimal::Parse(text);
        ASSERT_TRUE(number);
        EXPECT_EQ(number->digits, expected.digits);
        EXPECT_EQ(number->scale, expected.scale);
    }
    for (const char* text : {"", ".", "-1", "1e3", "1.2.3", "1,5", "0.0000000001", "1234567890123456"})
        EXPECT_FALSE(Decimal::Parse(text)) << text;
}

TEST(GenerateCommandTest, BlockHoldsWhatTheTextHolds)
{
    std::vector<std::string> market{"generate", "--rows", "3000", "--sessions", "2", "--tick-size", "0.05"};
    const std::string text = RunToolHere(market).out;
    market.insert(market.end(), {"--format", "block"});
    const std::string block = RunToolHere(market).out;
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 3001);
    EXPECT_TRUE(RunToolHere({"candles", "-", "-i", "tick", "--format", "block"}, text).out == block);
}
