#include "kalvento/SessionGenerator.h"

#include "time/TimeParts.h"

#include <algorithm>
#include <bit>
#include <numeric>
#include <stdexcept>
#include <string>

namespace kalvento::tool {

namespace {

constexpr std::uint32_t S_open = TimeParts::SecondOfDay(9U, 0U, 0U);
constexpr std::uint32_t S_continuousSeconds = TimeParts::SecondOfDay(7U, 50U, 0U);
constexpr std::uint32_t S_close = TimeParts::SecondOfDay(17U, 0U, 0U);
constexpr std::uint32_t S_afterCloseSeconds = 300;
constexpr std::uint64_t S_maxAuctionTrades = 400;
constexpr std::uint32_t S_secondsOfOffers = 20; // the offers at a price stay for so long
constexpr std::uint64_t S_step = 0x9E3779B97F4A7C15U;

std::uint64_t Stir(std::uint64_t a_number)
{
    a_number = (a_number ^ (a_number >> 30U)) * 0xBF58476D1CE4E5B9U;
    a_number = (a_number ^ (a_number >> 27U)) * 0x94D049BB133111EBU;
    return a_number ^ (a_number >> 31U);
}

/// Shares a_total out in proportion to the weights, to the last unit: each part is the difference of two rounded-down
/// running totals. The running total is kept below 2^32, so that its product with a_total (below 2^32 too) fits.
template<typename T>
void ShareOut(std::uint64_t a_total, const std::vector<std::uint64_t>& a_weights, std::vector<T>& a_parts)
{
    const auto sum = std::accumulate(a_weights.begin(), a_weights.end(), std::uint64_t{0});
    const auto shift = static_cast<unsigned int>(std::max(0, static_cast<int>(std::bit_width(sum)) - 32));
    const std::uint64_t whole = std::max<std::uint64_t>(sum >> shift, 1);
    a_parts.resize(a_weights.size());
    std::uint64_t running = 0;
    std::uint64_t given = 0;
    for (std::size_t i = 0; i < a_weights.size(); ++i) {
        running += a_weights[i];
        const std::uint64_t upTo = i + 1 == a_weights.size() ? a_total : a_total * (running >> shift) / whole;
        a_parts[i] = static_cast<T>(upTo - given);
        given = upTo;
    }
}

std::chrono::sys_days SkipWeekend(std::chrono::sys_days a_day)
{
    while (std::chrono::weekday(a_day).iso_encoding() > 5)
        a_day += std::chrono::days(1);
    return a_day;
}

/// a_price in whole ticks, to the nearest; 0 where it can't be held.
std::int64_t InTicks(Decimal a_price, Decimal a_tick)
{
    const auto widen = [](Decimal& a_number, unsigned int a_scale) {
        for (; a_number.scale < a_scale && a_number.digits < 1'000'000'000'000'000; ++a_number.scale)
            a_number.digits *= 10;
    };
    widen(a_price, a_tick.scale);
    widen(a_tick, a_price.scale);
    if (a_price.scale != a_tick.scale)
        return 0;
    return (a_price.digits + a_tick.digits / 2) / a_tick.digits;
}

} // namespace

std::optional<Decimal> Decimal::Parse(std::string_view a_text)
{
    Decimal number;
    bool pointSeen = false;
    unsigned int digits = 0;
    for (const char character : a_text) {
        if (character == '.' && !pointSeen) {
            pointSeen = true;
            continue;
        }
        if (character < '0' || character > '9' || ++digits > 15)
            return std::nullopt;
        number.digits = number.digits * 10 + (character - '0');
        number.scale += pointSeen ? 1 : 0;
    }
    if (digits == 0 || number.scale > 9)
        return std::nullopt;
    return number;
}

SessionGenerator::SessionGenerator(const GeneratorOptions& a_options)
    : m_options(a_options), m_random(a_options.seed), m_day(SkipWeekend(a_options.from))
{
    using std::chrono::year_month_day;
    if (m_options.rows == 0 || m_options.sessions == 0)
        throw std::invalid_argument("a market needs at least one row and one session");
    if (m_options.rows < m_options.sessions)
        throw std::invalid_argument("there must be at least one row for each session");
    if (m_options.rows > S_maxRows || m_options.sessions > S_maxSessions)
        throw std::invalid_argument("at most " + std::to_string(S_maxRows) + " rows and " +
                                    std::to_string(S_maxSessions) + " sessions");
    if (m_options.rows / m_options.sessions > S_maxRowsPerSession)
        throw std::invalid_argument("at most " + std::to_string(S_maxRowsPerSession) +
                                    " rows a session: ask for more sessions");
    const auto lastDay = m_day + std::chrono::days(m_options.sessions / 5 * 7 + 7);
    if (year_month_day(m_day).year() < std::chrono::year(1900) ||
        year_month_day(lastDay).year() > std::chrono::year(9999))
        throw std::invalid_argument("the sessions must lie in the years 1900 to 9999");
    const auto start = m_options.tickSize.digits > 0 ? InTicks(m_options.startPrice, m_options.tickSize) : 0;
    if (start < 1 || start > 1'000'000'000)
        throw std::invalid_argument("the start price must be 1 to 1000000000 ticks");
    m_fair = start << S_fairShift;
    // A long walk may lead far up. No price in units of the tick's last place goes above what a double holds exactly.
    m_greatestFair =
        std::min<std::int64_t>(4'000'000'000, 9'000'000'000'000'000 / m_options.tickSize.digits - 1)
        << S_fairShift;

    std::vector<std::uint64_t> weights(m_options.sessions);
    for (auto& weight : weights)
        weight = 800 + Below(400);
    // Each session gets one row first: a day without any would be no session.
    ShareOut(m_options.rows - m_options.sessions, weights, m_rowsOf);
    for (auto& rows : m_rowsOf)
        ++rows;
    OpenSession();
}

// SplitMix64 (Steele, Lea, Flood 2014): a counter that is stirred, so every seed is as good as any other.
std::uint64_t SessionGenerator::Random()
{
    m_random += S_step;
    return Stir(m_random);
}

// Sum of four uniform 16-bit numbers less its mean: a bell of standard deviation 37837.
std::int64_t SessionGenerator::Bell()
{
    const std::uint64_t bits = Random();
    const std::uint64_t sum =
        (bits & 0xFFFFU) + (bits >> 16U & 0xFFFFU) + (bits >> 32U & 0xFFFFU) + (bits >> 48U);
    return static_cast<std::int64_t>(sum) - std::int64_t{2} * 0xFFFF;
}

void SessionGenerator::MovePrice(std::int64_t a_size)
{
    // About 2% a day is 0.012% a second, of which the busy seconds take more than their share. The price loses its
    // lowest bits first, so that the product stays within 64 bits at any price.
    m_fair += (m_fair >> 10U) * (Bell() * a_size) / 400'000;
    m_fair = std::clamp(m_fair, std::int64_t{1} << S_fairShift, m_greatestFair);
}

void SessionGenerator::OpenSession()
{
    std::uint64_t rows = m_rowsOf[m_session];
    if (m_session > 0)
        MovePrice(40); // the leap of a night

    const auto take = [&rows](std::uint64_t a_wanted) {
        const auto taken = std::min(rows, a_wanted);
        rows -= taken;
        return taken;
    };
    m_opening = take(std::min(m_rowsOf[m_session] / 200 + 1, S_maxAuctionTrades));
    m_closing = take(std::min(m_rowsOf[m_session] / 150 + 1, S_maxAuctionTrades));
    m_afterClose = take(std::min(m_rowsOf[m_session] / 400, S_maxAuctionTrades));
    PlanSeconds(rows);
    m_busy = static_cast<std::uint32_t>(4 * rows / S_continuousSeconds + 2);
    m_second = 0;
    m_leftInSecond = m_perSecond[0];
    m_sinceClose = 0;
    m_auctionPrice = Fair();
}

void SessionGenerator::PlanSeconds(std::uint64_t a_rows)
{
    std::vector<std::uint64_t> weights(S_continuousSeconds);
    std::int64_t activity = 256; // 256 is calm
    for (std::uint32_t second = 0; second < S_continuousSeconds; ++second) {
        // News: about once in eight minutes activity leaps, and then dies down within a minute or two.
        if (Below(480) == 0)
            activity += 512 + static_cast<std::int64_t>(Below(4096));
        activity -= (activity - 256) / 64;
        const std::int64_t fromNoon = 2 * std::int64_t{second} - S_continuousSeconds;
        const auto dayShape = static_cast<std::uint64_t>(
            1000 + 3000 * fromNoon * fromNoon / (std::int64_t{S_continuousSeconds} * S_continuousSeconds));
        // Most seconds are quiet, few hold many trades: a weight is doubled as often as a coin falls heads.
        const auto heads = std::min(std::countr_zero(Random() | (1U << 8U)), 8);
        weights[second] = (dayShape * static_cast<std::uint64_t>(activity) >> 8U)
                          << static_cast<unsigned int>(heads);
    }
    ShareOut(a_rows, weights, m_perSecond);

    // What a crowded second can't hold goes to the next one, and from the last back to those before.
    std::uint32_t excess = 0;
    const auto spread = [&excess](std::uint32_t& a_rowsOfSecond) {
        a_rowsOfSecond += excess;
        excess = a_rowsOfSecond - std::min(a_rowsOfSecond, S_maxRowsPerSecond);
        a_rowsOfSecond -= excess;
    };
    std::for_each(m_perSecond.begin(), m_perSecond.end(), spread);
    std::for_each(m_perSecond.rbegin(), m_perSecond.rend(), spread);
}

std::int64_t SessionGenerator::TradePrice()
{
    // Orders come in runs of one side: buyers pay the price above, sellers get the price below. One in eight eats into
    // the next level of the book.
    if (Below(3) == 0)
        m_buyer = !m_buyer;
    const auto depth = std::min(std::countr_zero(Random() | 8U), 3) / 3;
    return std::max<std::int64_t>(m_buyer ? Fair() + 1 + depth : Fair() - depth, 1);
}

std::int64_t SessionGenerator::TradeVolume()
{
    // Half of the orders are a few pieces; a long tail is large; one in four is a round lot.
    const auto size = static_cast<std::int64_t>(1 + Below(40))
                      << std::min(std::countr_zero(Random() | (1U << 9U)), 9);
    return Below(4) == 0 ? (size / 10 + 1) * 10 : size;
}

bool SessionGenerator::Next(GeneratedTrade& a_trade)
{
    if (m_opening > 0) {
        --m_opening;
        a_trade = {m_day, S_open, m_auctionPrice, TradeVolume() * 4};
        return true;
    }
    while (m_leftInSecond == 0 && m_second < S_continuousSeconds) {
        if (++m_second == S_continuousSeconds) {
            m_auctionPrice = Fair();
            break;
        }
        m_leftInSecond = m_perSecond[m_second];
        // A second that is busy for its session moves the price more than a quiet one.
        MovePrice(m_leftInSecond > m_busy ? 2 : 1);
    }
    if (m_leftInSecond > 0) {
        --m_leftInSecond;
        a_trade = {m_day, S_open + m_second, TradePrice(), TradeVolume()};
        return true;
    }
    if (m_closing > 0) {
        --m_closing;
        a_trade = {m_day, S_close, m_auctionPrice, TradeVolume() * 8};
        return true;
    }
    if (m_afterClose > 0) {
        // A uniform step within the time left for each of the trades left keeps the order.
        const auto room = (S_afterCloseSeconds - 1 - m_sinceClose) / m_afterClose;
        m_sinceClose += static_cast<std::uint32_t>(Below(room + 1));
        --m_afterClose;
        a_trade = {m_day, S_close + m_sinceClose, m_auctionPrice, TradeVolume()};
        return true;
    }
    if (m_session + 1 == m_rowsOf.size())
        return false;
    ++m_session;
    m_day = SkipWeekend(m_day + std::chrono::days(1));
    OpenSession(); // with one trade in its opening at least
    return Next(a_trade);
}

// What is offered at a price follows from the price and the time alone, so the trades are those of a market without a
// book. Buyers pay the price above the fair one, sellers get the fair one or less.
GeneratedBook SessionGenerator::GetBook(const GeneratedTrade& a_last) const
{
    const auto levelAt = [&](std::int64_t a_price, bool a_isBid) {
        if (a_price < 1)
            return GeneratedBook::Level{};
        const auto slot =
            static_cast<std::uint64_t>(a_last.day.time_since_epoch().count()) * TimeParts::S_secondsOfDay +
            a_last.second / S_secondsOfOffers;
        const std::uint64_t bits = Stir(Stir(m_options.seed + slot * S_step) +
                                        static_cast<std::uint64_t>(a_price) * 2 + (a_isBid ? 1 : 0));
        const auto orders = static_cast<std::int64_t>(1 + bits % 12);
        return GeneratedBook::Level{a_price, orders * static_cast<std::int64_t>(1 + (bits >> 32U) % 60),
                                    orders};
    };
    GeneratedBook book;
    const std::int64_t bid = std::max<std::int64_t>(Fair(), 1);
    for (std::size_t level = 0; level < GeneratedBook::S_levels; ++level) {
        const auto step = static_cast<std::int64_t>(level);
        book.bids[level] = levelAt(bid - step, true);
        book.asks[level] = levelAt(bid + 1 + step, false);
    }
    return book;
}

} // namespace kalvento::tool
