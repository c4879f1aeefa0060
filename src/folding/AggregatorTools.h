#pragma once

#include "aggregation/EAggrType.h"
#include "platform/Export.h"
#include "series/DSProp.h"
#include "time/EInterval.h"

#include <set>
#include <vector>

/// The stateless rules that go with AggregatorWrapper. Safe from any thread.
class KALVENTO_API AggregatorTools {
public:
    /// The output is not finer than the input. Divisibility isn't asked: 2 minutes fold into 5.
    static bool IsAggregationPossible(EInterval a_inputInterval, unsigned int a_inputMultiplicity,
                                      EInterval a_outputInterval, unsigned int a_outputMultiplicity);
    /// The first series, in set order, of a main type (below EAggrTypeSum). None raises KalventoException.
    static DSProp GetMainAggregationSeries(const std::set<DSProp>& a_series);
    /// One type for each series, the main one first, the others in set order. With two main types the later one takes
    /// the first place and the last place stays EAggrTypeLast.
    static std::vector<EAggrType> PrepareAggregationTypes(const std::set<DSProp>& a_series);
};
