#pragma once

#include "series/DSProp.h"
#include "series/DataSeriesSet.h"
#include "support/BlockTools.h"
#include "support/RaisedText.h"
#include "support/Testing.h"

namespace kalvento::tests {

/// Equal in every bit: columns, times with their reserved bytes, interval data.
inline bool SameBits(const DataSeriesSet& a_left, const DataSeriesSet& a_right)
{
    return BytesOf(a_left) == BytesOf(a_right);
}

/// Everything that a property says of its series.
inline auto AllOf(const DSProp& a_property)
{
    return std::tuple(a_property.GetSeriesID(), a_property.GetAggrType(), a_property.GetLabel(),
                      a_property.GetMinPrecision(), a_property.GetMaxPrecision());
}

/// A time of 2021-03-04.
inline NDateTime At(unsigned int a_hour, unsigned int a_minute, unsigned int a_second = 0,
                    unsigned int a_counter = 0)
{
    return NDateTime(2021, 3, 4, a_hour, a_minute, a_second, a_counter);
}

} // namespace kalvento::tests
