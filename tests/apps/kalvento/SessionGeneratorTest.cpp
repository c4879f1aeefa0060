#include "kalvento/SessionGenerator.h"

#include "apps/kalvento/RunToolHere.h"
#include "support/Testing.h"

using namespace kalvento::tool;

namespace {

std::uint64_t HashOf(const std::string& a_bytes)
{
    std::uint64_t hash = 0xcbf29ce484222325U;
    for (const char byte : a_bytes)
        hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001b3U;
    return hash;
}

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
    EXPECT_EQ(HashOf(run.out), 17313132055169582695U);
    EXPECT_NE(RunToolHere({"generate", "--rows", "5000", "--sessions", "3", "--seed", "43"}).out, run.out);
}

TEST(SessionGeneratorTest, EverySessionLooksLikeADayOfAnExchange)
{
    struct Case {
        std::uint64_t rows;
        std::uint32_t sessions;
        Decimal price;
        Decimal tick;
    };
    const Case cases[] = {{1, 1, {100, 0}, {1, 2}},         {7, 7, {100, 0}, {1, 2}},
                          {2331, 1, {1351, 2}, {1, 5}},     {30000, 12, {1, 2}, {1, 2}},
                          {3000000, 1, {2450, 0}, {25, 2}}, {10, 3, {999999999, 9}, {1, 9}}};
    for (const Case& shape : cases) {
        SCOPED_TRACE(std::to_string(shape.rows) + " rows, " + std::to_string(shape.sessions) + " sessions");
        GeneratorOptions options;
        options.rows = shape.rows;
        options.sessions = shape.sessions;
        options.startPrice = shape.price;
        options.tickSize = shape.tick;
        const auto trades = TradesOf(options);
        ASSERT_EQ(trades.size(), shape.rows);

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
        EXPECT_EQ(days.size(), shape.sessions);
    }
}

TEST(SessionGeneratorTest, OptionsThatMakeNoMarketAreRefused)
{
    using Options = GeneratorOptions;
    const std::vector<void (*)(Options&)> changes = {
        [](Options& a_options) { a_options.rows = 0; },
        [](Options& a_options) { a_options.sessions = 0; },
        [](Options& a_options) {
            a_options.rows = 4;
            a_options.sessions = 5;
        },
        [](Options& a_options) { a_options.rows = SessionGenerator::S_maxRows + 1; },
        [](Options& a_options) { a_options.rows = SessionGenerator::S_maxRowsPerSession + 1; },
        [](Options& a_options) {
            a_options.tickSize = Decimal{0, 2};
        },
        [](Options& a_options) {
            a_options.startPrice = Decimal{4, 3};
        },
        [](Options& a_options) {
            a_options.startPrice = Decimal{999'999'999'999'999, 0};
        },
        [](Options& a_options) { a_options.from = std::chrono::sys_days(std::chrono::year(9999) / 12 / 29); },
        [](Options& a_options) {
            a_options.from = std::chrono::sys_days(std::chrono::year(1899) / 12 / 29);
        }};
    for (const auto& change : changes) {
        Options options;
        change(options);
        EXPECT_THROW(SessionGenerator{options}, std::invalid_argument) << &change - changes.data();
    }
}

TEST(SessionGeneratorTest, DecimalsKeepTheirPlaces)
{
    struct Case {
        const char* text;
        Decimal number;
    };
    for (const Case& shape : {Case{"100", {100, 0}}, Case{"0.05", {5, 2}}, Case{".5", {5, 1}},
                              Case{"7.", {7, 0}}, Case{"1.20", {120, 2}}}) {
        SCOPED_TRACE(shape.text);
        const auto number = Decimal::Parse(shape.text);
        ASSERT_TRUE(number);
        EXPECT_EQ(number->digits, shape.number.digits);
        EXPECT_EQ(number->scale, shape.number.scale);
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
