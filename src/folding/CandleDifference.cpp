#include "folding/CandleDifference.h"

#include "series/DataSeriesSet.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <tuple>
#include <vector>

namespace {

bool SameBits(double a_left, double a_right)
{
    return std::bit_cast<std::uint64_t>(a_left) == std::bit_cast<std::uint64_t>(a_right) ||
           (std::isnan(a_left) && std::isnan(a_right));
}

// The fields beside the day number: what `==` of times forgives is a difference here.
bool SameBits(const NDateTime& a_left, const NDateTime& a_right)
{
    const auto parts = [](const NDateTime& a_time) {
        return std::tuple(std::bit_cast<std::uint64_t>(a_time.ToDouble()), a_time.ToOle().GetStatus(),
                          a_time.GetYear(), a_time.GetMonth(), a_time.GetDay(), a_time.GetAbsoluteTime(),
                          a_time.GetMilliSec(), a_time.GetDayOfYear());
    };
    return parts(a_left) == parts(a_right);
}

} // namespace

std::optional<CandleDifference> CandleDifference::Find(const DataSeriesSet& a_expected,
                                                       const DataSeriesSet& a_found, std::size_t a_first,
                                                       bool a_mayEndEarly)
{
    const std::vector<NDateTime>& expectedTimes = a_expected.TimeSeries();
    const std::vector<NDateTime>& foundTimes = a_found.TimeSeries();
    CandleDifference difference;
    difference.expectedCount = expectedTimes.size();
    difference.foundCount = a_first + foundTimes.size();
    if (a_expected.GetSeries() != a_found.GetSeries()) {
        difference.kind = EKindShape;
        return difference;
    }
    const std::size_t end = std::min(expectedTimes.size(), a_first + foundTimes.size());
    for (std::size_t candle = a_first; candle < end; ++candle) {
        difference.candle = candle;
        difference.expectedTime = expectedTimes[candle];
        difference.foundTime = foundTimes[candle - a_first];
        if (!SameBits(difference.expectedTime, difference.foundTime)) {
            difference.kind = EKindTime;
            return difference;
        }
        auto found = a_found.begin();
        for (const auto& [series, values] : a_expected) {
            difference.series = series;
            difference.expected = values[candle];
            difference.found = (found++)->second[candle - a_first];
            if (!SameBits(difference.expected, difference.found))
                return difference;
        }
    }
    const bool isShort = difference.foundCount < difference.expectedCount;
    if (difference.foundCount == difference.expectedCount || (isShort && a_mayEndEarly))
        return std::nullopt;
    difference.kind = EKindCount;
    difference.candle = end;
    difference.expectedTime = isShort ? expectedTimes[end] : foundTimes[end - a_first];
    difference.foundTime = difference.expectedTime;
    return difference;
}
