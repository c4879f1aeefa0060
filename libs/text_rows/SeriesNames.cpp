#include "text_rows/SeriesNames.h"

#include "series/ESeriesId.h"
#include "series/SeriesTable.h"
#include "text_rows/TextFields.h"

#include <array>
#include <charconv>
#include <unordered_map>

namespace kalvento::rows {

namespace {

constexpr std::string_view S_generatedPrefix = "series";

struct Aliases {
    ESeriesId series;
    std::array<std::string_view, 6> names; // already plain; empty after the last
};

// What exchanges and charting tools call the same things.
constexpr Aliases S_aliases[] = {
    {Time, {"datetime", "timestamp", "date", "data", "ts", "opentime"}},
    {Price, {"close", "last", "lastprice", "rate", "c"}},
    {Volume, {"vol", "qty", "quantity", "size", "v"}},
    {IntervalOpen, {"o"}},
    {IntervalMax, {"h"}},
    {IntervalMin, {"l"}},
    {Lop, {"oi", "openinterest", "openint"}},
    {VolumeTotal, {"dayvolume"}},
    {Bid1, {"bid", "bidprice"}},
    {Ask1, {"ask", "askprice"}},
    {BidVolume1, {"bidsize", "bidvolume"}},
    {AskVolume1, {"asksize", "askvolume"}},
    {TradesCount, {"tradescount"}},
    {Max, {"najwyzszy"}},
    {Min, {"najnizszy"}},
    {Settlement, {"settle"}},
};

std::unordered_map<std::string, ESeriesId> MakeNames()
{
    std::unordered_map<std::string, ESeriesId> names;
    for (const kalvento::internal::SeriesInfo& info : kalvento::internal::SeriesTable())
        names.emplace(PlainName(info.name), info.id);
    for (const kalvento::internal::SeriesInfo& info : kalvento::internal::SeriesTable()) {
        if (!info.key.empty())
            names.emplace(PlainName(info.key), info.id);
    }
    for (const Aliases& aliases : S_aliases) {
        for (const std::string_view name : aliases.names)
            names.emplace(name, aliases.series);
    }
    names.erase(std::string()); // what follows the last alias
    return names;
}

} // namespace

std::string PlainName(std::string_view a_name)
{
    std::string plain = LowerCase(a_name);
    std::erase_if(plain, [](char a_sign) {
        return std::string_view(" _-\t<>").find(a_sign) != std::string_view::npos;
    });
    return plain;
}

std::string ColumnName(ESeriesId a_series, bool a_candles)
{
    if (a_series == Price && a_candles)
        return "close";
    if (const auto* info = kalvento::internal::FindSeries(a_series))
        return std::string(info->name);
    return "series_" + std::to_string(static_cast<std::uint32_t>(a_series));
}

std::optional<ESeriesId> SeriesFromName(std::string_view a_name)
{
    static const std::unordered_map<std::string, ESeriesId> S_names = MakeNames();
    const std::string plain = PlainName(a_name);
    if (const auto found = S_names.find(plain); found != S_names.end())
        return found->second;
    if (!plain.starts_with(S_generatedPrefix))
        return std::nullopt;
    std::uint32_t number = 0;
    const char* end = plain.data() + plain.size();
    const auto [rest, error] = std::from_chars(plain.data() + S_generatedPrefix.size(), end, number);
    if (error != std::errc() || rest != end || number <= Time)
        return std::nullopt;
    return static_cast<ESeriesId>(number);
}

} // namespace kalvento::rows
