#include "series/Offers.h"

#include "series/Series.h"

#include <algorithm>
#include <cstddef>

namespace {

using Line = std::array<ESeriesId, 5>;

constexpr Line LineFrom(ESeriesId a_first)
{
    Line line{};
    for (std::size_t level = 0; level < line.size(); ++level)
        line[level] = static_cast<ESeriesId>(a_first + level);
    return line;
}

std::set<ESeriesId> MakeSeries()
{
    std::set<ESeriesId> series;
    for (std::uint32_t id = Bid1; id <= AskOrders5; ++id)
        series.insert(static_cast<ESeriesId>(id));
    return series;
}

} // namespace

const std::set<ESeriesId> Offers::Series = MakeSeries();
const std::set<DSProp> Offers::DefaultDSProp = PrepareDefaultDSProps();

Offers::Offers() : SettableVariables(Series) {}

void Offers::SetBuyIfChanged(const std::vector<double>& a_prices)
{
    SetLineDataIfChanged(LineFrom(Bid1), a_prices);
}

void Offers::SetSellIfChanged(const std::vector<double>& a_prices)
{
    SetLineDataIfChanged(LineFrom(Ask1), a_prices);
}

void Offers::SetQBuyIfChanged(const std::vector<double>& a_volumes)
{
    SetLineDataIfChanged(LineFrom(BidVolume1), a_volumes);
}

void Offers::SetQSellIfChanged(const std::vector<double>& a_volumes)
{
    SetLineDataIfChanged(LineFrom(AskVolume1), a_volumes);
}

void Offers::SetNBuyIfChanged(const std::vector<double>& a_orderCounts)
{
    SetLineDataIfChanged(LineFrom(BidOrders1), a_orderCounts);
}

void Offers::SetNSellIfChanged(const std::vector<double>& a_orderCounts)
{
    SetLineDataIfChanged(LineFrom(AskOrders1), a_orderCounts);
}

std::set<DSProp> Offers::PrepareDefaultDSProps()
{
    std::set<DSProp> properties;
    for (const ESeriesId id : MakeSeries())
        properties.emplace(id, EAggrTypeLast, VeloTools::Series::DefaultLabel(id),
                           id < BidVolume1 ? EPrecision2 : EPrecision0);
    return properties;
}

void Offers::SetLineDataIfChanged(const std::array<ESeriesId, 5>& a_line, const std::vector<double>& a_values)
{
    const std::size_t levels = std::min(a_line.size(), a_values.size());
    for (std::size_t level = 0; level < levels; ++level)
        SetDataIfChanged(a_line[level], a_values[level]);
}
