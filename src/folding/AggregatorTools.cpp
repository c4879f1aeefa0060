#include "folding/AggregatorTools.h"

#include "platform/CodePage.h"
#include "time/KalventoException.h"

#include <algorithm>

namespace {

bool IsMainType(EAggrType a_type)
{
    return a_type < EAggrTypeSum;
}

} // namespace

bool AggregatorTools::IsAggregationPossible(EInterval a_inputInterval, unsigned int a_inputMultiplicity,
                                            EInterval a_outputInterval, unsigned int a_outputMultiplicity)
{
    return a_outputInterval > a_inputInterval ||
           (a_outputInterval == a_inputInterval && a_outputMultiplicity >= a_inputMultiplicity);
}

DSProp AggregatorTools::GetMainAggregationSeries(const std::set<DSProp>& a_series)
{
    const auto main = std::ranges::find_if(a_series, IsMainType, &DSProp::GetAggrType);
    if (main == a_series.end())
        throw KalventoException("AggregatorTools::GetMainAggregationSeries", __LINE__,
                                "Nie znaleziono głównego typu agregującego w rekordzie"_cp1250);
    return *main;
}

std::vector<EAggrType> AggregatorTools::PrepareAggregationTypes(const std::set<DSProp>& a_series)
{
    std::vector<EAggrType> types(a_series.size(), EAggrTypeLast);
    std::size_t nextOther = 1;
    for (const DSProp& series : a_series) {
        if (IsMainType(series.GetAggrType()))
            types.front() = series.GetAggrType();
        else if (nextOther < types.size()) // without a main type there is no place for the last one
            types[nextOther++] = series.GetAggrType();
    }
    return types;
}
