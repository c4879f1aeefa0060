#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace kalvento::tool {

/// A decimal number as it is written, so that "0.05" stays five hundredths: digits / 10^scale.
struct Decimal {
    std::int64_t digits = 0;
    unsigned int scale = 0; // 0 to 9

    /// Digits with at most one point and at most 9 places after it, no sign; at most 15 digits. Empty for anything
    /// else.
    static std::optional<Decimal> Parse(std::string_view a_text);
};

/// What a generated market looks like. Equal options give equal trades on every machine.
struct GeneratorOptions {
    std::uint64_t rows = 20000; // over all sessions
    std::uint32_t sessions = 1; // weekdays, one after another
    std::uint64_t seed = 1;
    Decimal startPrice{100, 0}; // rounded to a whole number of ticks
    Decimal tickSize{1, 2};     // the grid of prices
    std::chrono::sys_days from = std::chrono::sys_days(std::chrono::year(2024) / 1 / 2);
};

/// One trade. The price is counted in ticks of the grid, so that no rounding comes between the options and the text.
struct GeneratedTrade {
    std::chrono::sys_days day;
    std::uint32_t second = 0;      // of the day
    std::int64_t priceInTicks = 0; // > 0
    std::int64_t volume = 0;       // > 0
};

/// The offers that stand after a trade, the best in front.
struct GeneratedBook {
    struct Level {
        std::int64_t priceInTicks = 0; // 0: nothing is offered
        std::int64_t volume = 0;
        std::int64_t orders = 0;
    };
    static constexpr std::size_t S_levels = 5;

    std::array<Level, S_levels> bids;
    std::array<Level, S_levels> asks;
};

/// Makes the trades of an invented exchange: an opening auction at 9:00, continuous trading to 16:50 that is busy at
/// both ends of the day and comes in bursts, a closing auction at 17:00 and five minutes of trading at its price.
/// Several trades share a second. Prices walk on the grid of ticks with about 2% a day, and leap a little overnight.
///
/// Integers only: floating point and the mathematical library differ in last bits between machines, and a price that
/// differs by a tick would make another session of the same seed. One thread at a time.
class SessionGenerator {
public:
    static constexpr std::uint64_t S_maxRows = 4'000'000'000;
    static constexpr std::uint64_t S_maxRowsPerSession = 100'000'000;
    static constexpr std::uint32_t S_maxSessions = 100'000;
    /// The ordering counter of a time tells trades of one second apart with certainty only below half a second, which
    /// is 57,870 of them.
    static constexpr std::uint32_t S_maxRowsPerSecond = 20'000;

    /// Raises std::invalid_argument, in English for the tool's user, for options that make no market: no rows, more
    /// sessions than rows, too many of either, a start price below a tick, days outside the years 1900 to 9999.
    explicit SessionGenerator(const GeneratorOptions& a_options);

    /// The next trade, in the order of time; false after the last one.
    bool Next(GeneratedTrade& a_trade);
    /// The book after the trade that Next gave last. Whoever asks for books gets the same trades.
    GeneratedBook GetBook(const GeneratedTrade& a_last) const;

private:
    std::uint64_t Random();
    std::uint64_t Below(std::uint64_t a_limit) { return (Random() >> 32U) * a_limit >> 32U; }
    std::int64_t Bell();
    void OpenSession();
    void PlanSeconds(std::uint64_t a_rows);
    /// One random step of the price, a_size times the usual one.
    void MovePrice(std::int64_t a_size);
    std::int64_t TradePrice();
    std::int64_t TradeVolume();
    std::int64_t Fair() const { return m_fair >> S_fairShift; }

    static constexpr unsigned int S_fairShift = 16;

    GeneratorOptions m_options;
    std::uint64_t m_random;
    std::vector<std::uint64_t> m_rowsOf; // by session
    std::size_t m_session = 0;
    std::chrono::sys_days m_day;
    std::uint64_t m_opening = 0; // rows left of each phase, but for continuous trading
    std::uint64_t m_closing = 0;
    std::uint64_t m_afterClose = 0;
    std::vector<std::uint32_t> m_perSecond; // trades of each second of continuous trading
    std::uint32_t m_second = 0;             // of continuous trading, from its start
    std::uint32_t m_busy = 0;               // a second with more trades than this is busy
    std::uint32_t m_leftInSecond = 0;
    std::uint32_t m_sinceClose = 0; // second of the last trade after the close
    std::int64_t m_greatestFair = 0;
    std::int64_t m_fair = 0; // price in ticks, with S_fairShift binary places
    std::int64_t m_auctionPrice = 0;
    bool m_buyer = false; // who began the last trade: orders come in runs
};

} // namespace kalvento::tool
