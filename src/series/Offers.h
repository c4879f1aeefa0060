#pragma once

#include "platform/Export.h"
#include "series/SettableVariables.h"

#include <array>
#include <set>
#include <vector>

/// The order book of an instrument: five levels on each side, with price, volume and number of orders. Level 1 is the
/// best offer. Providers fill it from the live feed.
class KALVENTO_API Offers : public SettableVariables {
public:
    /// The numbers 20 to 49. Ready once the library's static objects are; so is DefaultDSProp.
    static const std::set<ESeriesId> Series;
    /// What PrepareDefaultDSProps gives.
    static const std::set<DSProp> DefaultDSProp;

    /// All of Series.
    Offers();
    /// Of the given series; fails as SettableVariables does.
    using SettableVariables::SettableVariables;

    // One line of the book, the best level first, each by SetDataIfChanged. Deeper levels than the vector has keep what
    // they held, a surplus is ignored, and so are levels that the object doesn't hold.
    void SetBuyIfChanged(const std::vector<double>& a_prices);
    void SetSellIfChanged(const std::vector<double>& a_prices);
    void SetQBuyIfChanged(const std::vector<double>& a_volumes);
    void SetQSellIfChanged(const std::vector<double>& a_volumes);
    void SetNBuyIfChanged(const std::vector<double>& a_orderCounts);
    void SetNSellIfChanged(const std::vector<double>& a_orderCounts);

    /// One property for each number of Series: the last value is for counts; prices have 2 decimal places and the rest
    /// none.
    static std::set<DSProp> PrepareDefaultDSProps();

private:
    void SetLineDataIfChanged(const std::array<ESeriesId, 5>& a_line, const std::vector<double>& a_values);
};
