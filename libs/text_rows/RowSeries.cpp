#include "text_rows/RowSeries.h"

#include "series/Series.h"
#include "text_rows/RowReader.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace kalvento::rows {

std::set<DSProp> PropertiesOf(const RowLayout& a_layout)
{
    std::set<DSProp> properties;
    for (std::size_t place = 0; place < a_layout.series.size(); ++place) {
        const ESeriesId series = a_layout.series[place];
        properties.emplace(series, a_layout.folds[place], VeloTools::Series::DefaultLabel(series),
                           EPrecisionNone);
    }
    return properties;
}

unsigned int DecimalsOf(double a_price)
{
    double scaled = std::abs(a_price);
    for (unsigned int decimals = 0; decimals < S_mostDecimals; ++decimals, scaled *= 10.0) {
        if (std::abs(scaled - std::round(scaled)) <= 1e-9 * std::max(1.0, scaled))
            return decimals;
    }
    return S_mostDecimals;
}

void SetDecimals(const std::set<DSProp>& a_series, unsigned int a_decimals)
{
    for (const DSProp& property : a_series)
        if (property.GetSeriesID() == Price || property.IsAggregationSeries())
            property.SetPrecision(static_cast<EPrecision>(std::max(a_decimals, 2U)));
}

} // namespace kalvento::rows
