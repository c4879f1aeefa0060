#include "provider_kit/TickShape.h"

std::set<DSProp> TickShapeOf(const std::set<DSProp>& a_series)
{
    std::set<DSProp> shape = a_series;
    std::erase_if(shape, [](const DSProp& a_property) { return a_property.IsAggregationSeries(); });
    return shape;
}
