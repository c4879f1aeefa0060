#pragma once

#include "platform/Export.h"
#include "series/ESeriesId.h"

#include <cstddef>

/// Rules of number input and display, by series. Stateless, safe from any thread.
class KALVENTO_API NIUtilities {
public:
    /// False for prices and price limits, whose last digit matters.
    static bool AllowToRoundDownForUIPresentation(ESeriesId a_seriesId);
    /// False for the theoretical opening price and the offer prices.
    static bool ForceMinPrecisionForSeries(ESeriesId a_seriesId);
    /// True for volumes, open interest, turnover and counts of orders.
    static bool PreventSettingConstantPrecision(ESeriesId a_seriesId);
    /// Decimal places of a number that belongs to no series.
    static std::size_t NumericValueDefaultPrecision() { return 2; }
};
