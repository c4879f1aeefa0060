#include "rows/RowSeries.h"

#include "rows/RowReader.h"
#include "series/Series.h"

#include <cstddef>

namespace kalvento::tool {

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

} // namespace kalvento::tool
