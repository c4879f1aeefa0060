#include "text_rows/SeriesNames.h"

#include "series/ESeriesId.h"
#include "series/SeriesTable.h"

#include <charconv>
#include <unordered_map>

namespace kalvento::rows {

namespace {

constexpr std::string_view S_generatedPrefix = "series";

struct Alias {
    std::string_view name;
    ESeriesId series;
};

// What exchanges and charting tools call the same things; already plain.
constexpr Alias S_aliases[] = {
    {"datetime", Time},
    {"timestamp", Time},
    {"date", Time},
    {"data", Time},
    {"ts", Time},
    {"opentime", Time},
    {"close", Price},
    {"last", Price},
    {"lastprice", Price},
    {"rate", Price},
    {"vol", Volume},
    {"qty", Volume},
    {"quantity", Volume},
    {"size", Volume},
    {"o", IntervalOpen},
    {"h", IntervalMax},
    {"l", IntervalMin},
    {"c", Price},
    {"v", Volume},
    {"oi", Lop},
    {"openinterest", Lop},
    {"dayvolume", VolumeTotal},
    {"bid", Bid1},
    {"ask", Ask1},
    {"bidprice", Bid1},
    {"askprice", Ask1},
    {"bidsize", BidVolume1},
    {"asksize", AskVolume1},
    {"bidvolume", BidVolume1},
    {"askvolume", AskVolume1},
    {"tradescount", TradesCount},
    {"najwyzszy", Max},
    {"najnizszy", Min},
    {"settle", Settlement},
};

std::string Plain(std::string_view a_name)
{
    std::string plain;
    for (const char sign : a_name) {
        if (sign >= 'A' && sign <= 'Z')
            plain += static_cast<char>(sign - 'A' + 'a');
        else if (sign != ' ' && sign != '_' && sign != '-' && sign != '\t')
            plain += sign;
    }
    return plain;
}

std::unordered_map<std::string, ESeriesId> MakeNames()
{
    std::unordered_map<std::string, ESeriesId> names;
    for (const kalvento::internal::SeriesInfo& info : kalvento::internal::SeriesTable())
        names.emplace(Plain(info.name), info.id);
    for (const kalvento::internal::SeriesInfo& info : kalvento::internal::SeriesTable()) {
        if (!info.key.empty())
            names.emplace(Plain(info.key), info.id);
    }
    for (const Alias& alias : S_aliases)
        names.emplace(alias.name, alias.series);
    return names;
}

} // namespace

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
    const std::string plain = Plain(a_name);
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
