#include "series/SeriesTable.h"

#include <algorithm>

namespace kalvento::internal {

namespace {

// The open, high and low of a candle have the same labels as those of the session: the two triples differ in what fills
// them, not in how they are shown. The label of VirtualSeries is spelt as users know it.
// clang-format off
constexpr std::array<SeriesInfo, 55> S_table{{
    {Time, "Time", "czas", L"Data", "time", EAggrTypeLast, {}},
    {Price, "Price", "kurs", L"Kurs", "price", EAggrTypeOhlc, EPrecision2},
    {Volume, "Volume", "wolumen", L"Wolumen", "volume", EAggrTypeSum, EPrecision0},
    {Lop, "Lop", "lop", L"LOP", "open_interest", EAggrTypeLast, EPrecision0},
    {Tko, "Tko", "tko", L"TKO", "theoretical_open", EAggrTypeLast, EPrecision2},
    {IntervalOpen, "IntervalOpen", "", L"Otwarcie", "open", EAggrTypeLast, EPrecision2},
    {IntervalMax, "IntervalMax", "", L"Maksimum", "high", EAggrTypeLast, EPrecision2},
    {IntervalMin, "IntervalMin", "", L"Minimum", "low", EAggrTypeLast, EPrecision2},
    {Open, "Open", "otwarcie", L"Otwarcie", "session_open", EAggrTypeLast, EPrecision2},
    {Max, "Max", "max", L"Maksimum", "session_high", EAggrTypeLast, EPrecision2},
    {Min, "Min", "min", L"Minimum", "session_low", EAggrTypeLast, EPrecision2},
    {Close, "Close", "zamkniecie", L"Zamknięcie", "session_close", EAggrTypeLast, EPrecision2},
    {Reference, "Reference", "odniesienie", L"Odniesienie", "reference", EAggrTypeLast, EPrecision2},
    {Turnover, "Turnover", "obrot", L"Obrót", "turnover", EAggrTypeLast, EPrecision2},
    {VolumeTotal, "VolumeTotal", "wrazem", L"Wolumen razem", "session_volume", EAggrTypeLast, EPrecision0},
    {Status, "Status", "", L"Status", "status", EAggrTypeLast, EPrecision0},
    {StaticMin, "StaticMin", "smin", L"S min widełki", "static_min", EAggrTypeLast, EPrecision2},
    {StaticMax, "StaticMax", "smax", L"S max widełki", "static_max", EAggrTypeLast, EPrecision2},
    {Settlement, "Settlement", "rozliczeniowy", L"Kurs rozliczeniowy", "settlement", EAggrTypeLast, EPrecision2},
    {Bid1, "Bid1", "kupi", L"Oferta K", "bid1", EAggrTypeLast, EPrecision2},
    {Bid2, "Bid2", "kupi2", L"Oferta K2", "bid2", EAggrTypeLast, EPrecision2},
    {Bid3, "Bid3", "kupi3", L"Oferta K3", "bid3", EAggrTypeLast, EPrecision2},
    {Bid4, "Bid4", "kupi4", L"Oferta K4", "bid4", EAggrTypeLast, EPrecision2},
    {Bid5, "Bid5", "kupi5", L"Oferta K5", "bid5", EAggrTypeLast, EPrecision2},
    {Ask1, "Ask1", "sprzeda", L"Oferta S", "ask1", EAggrTypeLast, EPrecision2},
    {Ask2, "Ask2", "sprzeda2", L"Oferta S2", "ask2", EAggrTypeLast, EPrecision2},
    {Ask3, "Ask3", "sprzeda3", L"Oferta S3", "ask3", EAggrTypeLast, EPrecision2},
    {Ask4, "Ask4", "sprzeda4", L"Oferta S4", "ask4", EAggrTypeLast, EPrecision2},
    {Ask5, "Ask5", "sprzeda5", L"Oferta S5", "ask5", EAggrTypeLast, EPrecision2},
    {BidVolume1, "BidVolume1", "ikupi", L"Wolumen K", "bid_volume1", EAggrTypeLast, EPrecision0},
    {BidVolume2, "BidVolume2", "ikupi2", L"Wolumen K2", "bid_volume2", EAggrTypeLast, EPrecision0},
    {BidVolume3, "BidVolume3", "ikupi3", L"Wolumen K3", "bid_volume3", EAggrTypeLast, EPrecision0},
    {BidVolume4, "BidVolume4", "ikupi4", L"Wolumen K4", "bid_volume4", EAggrTypeLast, EPrecision0},
    {BidVolume5, "BidVolume5", "ikupi5", L"Wolumen K5", "bid_volume5", EAggrTypeLast, EPrecision0},
    {AskVolume1, "AskVolume1", "isprzeda", L"Wolumen S", "ask_volume1", EAggrTypeLast, EPrecision0},
    {AskVolume2, "AskVolume2", "isprzeda2", L"Wolumen S2", "ask_volume2", EAggrTypeLast, EPrecision0},
    {AskVolume3, "AskVolume3", "isprzeda3", L"Wolumen S3", "ask_volume3", EAggrTypeLast, EPrecision0},
    {AskVolume4, "AskVolume4", "isprzeda4", L"Wolumen S4", "ask_volume4", EAggrTypeLast, EPrecision0},
    {AskVolume5, "AskVolume5", "isprzeda5", L"Wolumen S5", "ask_volume5", EAggrTypeLast, EPrecision0},
    {BidOrders1, "BidOrders1", "nkupi", L"Zleceń K", "bid_orders1", EAggrTypeLast, EPrecision0},
    {BidOrders2, "BidOrders2", "nkupi2", L"Zleceń K2", "bid_orders2", EAggrTypeLast, EPrecision0},
    {BidOrders3, "BidOrders3", "nkupi3", L"Zleceń K3", "bid_orders3", EAggrTypeLast, EPrecision0},
    {BidOrders4, "BidOrders4", "nkupi4", L"Zleceń K4", "bid_orders4", EAggrTypeLast, EPrecision0},
    {BidOrders5, "BidOrders5", "nkupi5", L"Zleceń K5", "bid_orders5", EAggrTypeLast, EPrecision0},
    {AskOrders1, "AskOrders1", "nsprzeda", L"Zleceń S", "ask_orders1", EAggrTypeLast, EPrecision0},
    {AskOrders2, "AskOrders2", "nsprzeda2", L"Zleceń S2", "ask_orders2", EAggrTypeLast, EPrecision0},
    {AskOrders3, "AskOrders3", "nsprzeda3", L"Zleceń S3", "ask_orders3", EAggrTypeLast, EPrecision0},
    {AskOrders4, "AskOrders4", "nsprzeda4", L"Zleceń S4", "ask_orders4", EAggrTypeLast, EPrecision0},
    {AskOrders5, "AskOrders5", "nsprzeda5", L"Zleceń S5", "ask_orders5", EAggrTypeLast, EPrecision0},
    {Indicator, "Indicator", "", L"Wskaźnik", "indicator", EAggrTypeLast, EPrecisionNone},
    {Two, "Two", "two", L"TWO", "theoretical_open_volume", EAggrTypeLast, EPrecision0},
    {DynamicMin, "DynamicMin", "dmin", L"D min widełki", "dynamic_min", EAggrTypeLast, EPrecision2},
    {DynamicMax, "DynamicMax", "dmax", L"D max widełki", "dynamic_max", EAggrTypeLast, EPrecision2},
    {TradesCount, "TradesCount", "liczbatr", L"Liczba transakcji", "trades", EAggrTypeLast, EPrecision0},
    {VirtualSeries, "VirtualSeries", "", L"Wirtalna seria", "virtual", EAggrTypeLast, {}},
}};
// clang-format on

constexpr bool IsNumberedInOrder()
{
    for (std::size_t row = 0; row < S_table.size(); ++row)
        if (S_table[row].id != row + 1)
            return false;
    return true;
}
static_assert(IsNumberedInOrder());

const SeriesInfo* FindBy(std::string_view SeriesInfo::*a_column, std::string_view a_text)
{
    const auto row = std::ranges::find(S_table, a_text, a_column);
    return row == S_table.end() ? nullptr : &*row;
}

} // namespace

std::span<const SeriesInfo> SeriesTable()
{
    return S_table;
}

const SeriesInfo* FindSeries(ESeriesId a_seriesId)
{
    // 0 wraps round to a number outside the table too.
    const std::size_t row = static_cast<std::uint32_t>(a_seriesId) - 1U;
    return row < S_table.size() ? &S_table[row] : nullptr;
}

const SeriesInfo* FindSeriesByName(std::string_view a_name)
{
    if (a_name.empty())
        return nullptr;
    if (a_name == "close")
        return FindSeries(Price);
    for (const auto column : {&SeriesInfo::name, &SeriesInfo::enumerator, &SeriesInfo::key})
        if (const SeriesInfo* series = FindBy(column, a_name))
            return series;
    return nullptr;
}

} // namespace kalvento::internal
