#include "series/Series.h"

#include "platform/CodePage.h"
#include "series/SeriesTable.h"

#include <algorithm>
#include <cstdint>
#include <stdexcept>

using namespace kalvento::internal;

namespace {

/// FNV-1a over 64 bits.
class NameHash {
public:
    void AddByte(unsigned int a_byte)
    {
        m_hash ^= a_byte & 0xFFU;
        m_hash *= 0x100000001b3ULL;
    }
    void AddUnit(std::uint32_t a_codeUnit)
    {
        AddByte(a_codeUnit);
        AddByte(a_codeUnit >> 8U);
    }
    ESeriesId ToSeriesId() const { return static_cast<ESeriesId>(static_cast<std::uint32_t>(m_hash)); }

private:
    std::uint64_t m_hash = 0xcbf29ce484222325ULL;
};

bool IsOfferSeries(ESeriesId a_seriesId)
{
    return a_seriesId >= Bid1 && a_seriesId <= AskOrders5;
}

} // namespace

namespace VeloTools::Series {

std::wstring_view DefaultLabel(ESeriesId a_seriesId)
{
    const SeriesInfo* const series = FindSeries(a_seriesId);
    return series ? series->label : std::wstring_view();
}

EAggrType DefaultAggregationType(ESeriesId a_seriesId)
{
    const SeriesInfo* const series = FindSeries(a_seriesId);
    return series ? series->aggrType : EAggrTypeLast;
}

EPrecision DefaultPrecision(ESeriesId a_seriesId)
{
    if (a_seriesId == 0)
        return EPrecisionNone;
    const SeriesInfo* const series = FindSeries(a_seriesId);
    if (!series || !series->precision)
        throw std::invalid_argument("NIepoprawna seria: a_seriesId"_cp1250);
    return *series->precision;
}

bool IsContinuousSeries(ESeriesId a_seriesId)
{
    switch (a_seriesId) {
    case Price:
    case Volume:
    case Lop:
    case IntervalOpen:
    case IntervalMax:
    case IntervalMin:
    case Indicator:
    case VirtualSeries:
        return true;
    default:
        return false;
    }
}

bool IsValueSeries(ESeriesId a_seriesId)
{
    return std::ranges::find(S_valueSeries, a_seriesId) != S_valueSeries.end();
}

bool IsVolumeSeries(ESeriesId a_seriesId)
{
    return std::ranges::find(S_volumeSeries, a_seriesId) != S_volumeSeries.end();
}

std::vector<std::size_t> ReadingOrder(std::span<const ESeriesId> a_series)
{
    std::vector<std::size_t> order;
    for (const ESeriesId leading : {IntervalOpen, IntervalMax, IntervalMin, Price})
        if (const auto found = std::ranges::find(a_series, leading); found != a_series.end())
            order.push_back(static_cast<std::size_t>(found - a_series.begin()));
    // Tested against these few alone: a damaged count makes thousands of columns.
    const std::vector<std::size_t> leading = order;
    for (std::size_t place = 0; place < a_series.size(); ++place)
        if (std::ranges::find(leading, place) == leading.end())
            order.push_back(place);
    return order;
}

bool CheckIfCSorOffersContainsGivenSeries(const std::set<ESeriesId>& a_series, ESeriesId a_seriesId)
{
    return IsOfferSeries(a_seriesId) || a_series.contains(a_seriesId);
}

ESeriesId GenerateId(std::string_view a_name)
{
    NameHash hash;
    for (const char byte : a_name)
        hash.AddByte(static_cast<unsigned char>(byte));
    return hash.ToSeriesId();
}

ESeriesId GenerateId(std::wstring_view a_name)
{
    NameHash hash;
    for (const wchar_t character : a_name) {
        const auto codePoint = static_cast<char32_t>(character);
        if (codePoint < 0x10000U) {
            hash.AddUnit(codePoint);
        } else {
            hash.AddUnit(0xD800U + ((codePoint - 0x10000U) >> 10U));
            hash.AddUnit(0xDC00U + (codePoint & 0x3FFU));
        }
    }
    return hash.ToSeriesId();
}

} // namespace VeloTools::Series
