#include "console_consumer/PlainLines.h"

#include <fmt/format.h>

namespace {

std::string TimeText(const NDateTime& a_time)
{
    return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02}", a_time.GetYear(), a_time.GetMonth(),
                       a_time.GetDay(), a_time.GetHour(), a_time.GetMinute(), a_time.GetSecond());
}

template<typename Set>
std::string ValueText(const Set& a_set, ESeriesId a_seriesId)
{
    const auto found = a_set.find(a_seriesId);
    return found == a_set.end() ? std::string() : fmt::format("{}", found->second);
}

std::string OfferText(const Offers& a_offers, ESeriesId a_first, unsigned int a_level)
{
    const auto found = a_offers.find(static_cast<ESeriesId>(a_first + a_level));
    return found == a_offers.end() || !found->second.IsSet() ? std::string()
                                                             : fmt::format("{}", found->second.value);
}

} // namespace

std::string PlainLines::Candle(std::string_view a_symbol, std::string_view a_state, const Record& a_candle)
{
    return fmt::format("{};{};{};{};{};{};{};{}\n", a_symbol, TimeText(a_candle.GetTime()), a_state,
                       ValueText(a_candle, IntervalOpen), ValueText(a_candle, IntervalMax),
                       ValueText(a_candle, IntervalMin), ValueText(a_candle, Price),
                       ValueText(a_candle, Volume));
}

std::string PlainLines::Book(std::string_view a_symbol, const Offers& a_offers,
                             const std::optional<NDateTime>& a_time)
{
    const std::optional<NDateTime> time =
        a_offers.TimeFieldIsSet() ? std::optional(a_offers.GetTime().value) : a_time;
    std::string line = fmt::format("{};{};book", a_symbol, time ? TimeText(*time) : std::string());
    for (unsigned int level = 0; level < 5; ++level)
        line += fmt::format(";{};{};{};{}", OfferText(a_offers, BidVolume1, level),
                            OfferText(a_offers, Bid1, level), OfferText(a_offers, Ask1, level),
                            OfferText(a_offers, AskVolume1, level));
    return line + '\n';
}

std::string PlainLines::Trade(std::string_view a_symbol, const LatestRecords::LastRecord& a_trade)
{
    return fmt::format("{};{};trade;{};{}\n", a_symbol, TimeText(a_trade.time), a_trade.price,
                       a_trade.volume);
}
