#include "text_rows/RowSeries.h"

#include "series/Series.h"
#include "text_rows/RowReader.h"

#include <algorithm>
#include <cmath>
#include <utility>

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

DataSeriesSet SeriesOf(const RowBlock& a_block, const RowLayout& a_layout,
                       const std::vector<std::size_t>& a_rows)
{
    std::vector<NDateTime> times;
    for (const std::size_t row : a_rows)
        times.push_back(a_block.times[row]);
    DataSeriesSet::Columns columns;
    for (std::size_t place = 0; place < a_layout.series.size(); ++place) {
        std::vector<double>& values =
            columns.emplace_back(a_layout.series[place], std::vector<double>()).second;
        for (const std::size_t row : a_rows)
            values.push_back(a_block.columns[place][row]);
    }
    return {a_layout.interval.GetInterval(), a_layout.interval.GetMultiplicity(), std::move(times),
            std::move(columns)};
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
