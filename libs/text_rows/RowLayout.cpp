#include "text_rows/RowLayout.h"

#include "series/Series.h"
#include "text_rows/RowsFault.h"
#include "text_rows/SeriesNames.h"
#include "text_rows/TextFields.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <utility>

namespace kalvento::rows {

namespace {

std::optional<EAggrType> FoldFromName(std::string_view a_name)
{
    constexpr std::array<std::pair<std::string_view, EAggrType>, 5> names = {{{"ohlc", EAggrTypeOhlc},
                                                                              {"ohlcsum", EAggrTypeOhlcSum},
                                                                              {"ohlclast", EAggrTypeOhlcLast},
                                                                              {"sum", EAggrTypeSum},
                                                                              {"last", EAggrTypeLast}}};
    for (const auto& [name, type] : names) {
        if (name == a_name)
            return type;
    }
    return std::nullopt;
}

} // namespace

bool RowLayout::Has(ESeriesId a_series) const
{
    return std::find(series.begin(), series.end(), a_series) != series.end();
}

void RowLayout::PlanFolds(const std::map<std::string, std::string>& a_folds, const std::string& a_input)
{
    folds.clear();
    for (const ESeriesId each : series)
        folds.push_back(VeloTools::Series::DefaultAggregationType(each));
    for (const auto& [name, fold] : a_folds) {
        const auto meant = SeriesFromName(name);
        const auto found = meant ? std::find(series.begin(), series.end(), *meant) : series.end();
        if (found == series.end())
            RefuseOption(EOptionFolds, "there is no column " + Quote(name) + " in " + a_input);
        const auto type = FoldFromName(fold);
        const bool fits = type && (*found == Price) == (*type < EAggrTypeSum);
        if (!fits || VeloTools::Series::IsAggregationSeries(*found))
            RefuseOption(EOptionFolds,
                         "found " + Quote(std::string(name).append("=").append(fold)) +
                             ", accepted are ohlc, ohlcsum, ohlclast for the price, sum and last for "
                             "the others; open, high and low follow the price");
        folds[static_cast<std::size_t>(found - series.begin())] = *type;
    }
}

} // namespace kalvento::rows
