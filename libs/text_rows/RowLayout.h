#pragma once

#include "aggregation/EAggrType.h"
#include "series/ESeriesId.h"
#include "time/IntervalAndMultiplicity.h"

#include <map>
#include <string>
#include <vector>

namespace kalvento::rows {

/// The shape of the rows of one input.
struct RowLayout {
    std::vector<ESeriesId> series; ///< Ascending, without Time: the order of RowBlock::columns.
    std::vector<EAggrType> folds;  ///< How each of them folds.
    IntervalAndMultiplicity
        interval; ///< (EIntervalTick, 1) for ticks; a candle interval where there are open, high and low.
    bool hasSymbols = false;   ///< Rows of several instruments may come, told apart by RowBlock::symbols.
    bool symbolsFound = false; ///< Their column was found by its name, nobody asked for it.
    unsigned int fractionDigits = 0; ///< Of the first rows' seconds: 0, 3, 6 or 9.
    ESeriesId priceMeans = Price;    ///< What the column of the prices holds (ReadOptions::pricesFrom).

    /// Whether there is a column of that series.
    bool Has(ESeriesId a_series) const;
    /// Fills `folds`: the defaults of the series, and the user's choices (ReadOptions::folds). Raises RowsFault
    /// (EFaultOptions) for what doesn't fit. a_input: its name, for messages.
    void PlanFolds(const std::map<std::string, std::string>& a_folds, const std::string& a_input);
};

} // namespace kalvento::rows
