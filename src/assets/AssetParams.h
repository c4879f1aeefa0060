#pragma once

#include "aggregation/EAggrTimeResult.h"
#include "assets/ParamsBase.h"
#include "assets/RangeData.h"
#include "platform/Export.h"
#include "time/EInterval.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

class Settings;

/// What a provider can deliver for one asset: the kinds of data, and for each interval the dates on hand. RequestParams
/// is its counterpart in a request. A plain value without a lock.
class KALVENTO_API AssetParams : public ParamsBase {
public:
    /// In the provider's order, which matters to GetDates.
    using Intervals = std::vector<std::pair<EInterval, RangeData>>;

    static constexpr std::string_view XML_AGGR_TIME = "AggrTime";
    static constexpr std::string_view XML_MULTIPLICITY = "Multipl";
    static constexpr std::string_view XML_INTERVALS = "Intervals";
    static constexpr std::string_view XML_INTERVAL = "Interval";

    /// Nothing is offered.
    AssetParams() = default;
    explicit AssetParams(unsigned int a_kindData) : ParamsBase(a_kindData) {}
    /// Raises KalventoException where history is offered and a_intervals is empty.
    AssetParams(unsigned int a_kindData, unsigned int a_multiplicity, Intervals&& a_intervals);
    /// Reads what SerializeState wrote; a missing number reads as 0. Nothing is checked: see IsValid.
    explicit AssetParams(const Settings& a_settings);

    void SerializeState(Settings& a_settings) const override;

    Intervals::iterator begin() { return m_intervals.begin(); }
    Intervals::iterator end() { return m_intervals.end(); }
    Intervals::const_iterator begin() const { return m_intervals.begin(); }
    Intervals::const_iterator end() const { return m_intervals.end(); }

    /// Which time the provider's candles bear.
    EAggrTimeResult GetAggregationTime() const { return m_aggregationTime; }
    void SetAggregationTime(EAggrTimeResult a_aggregationTime) { m_aggregationTime = a_aggregationTime; }
    unsigned int GetMultiplicity() const { return m_multiplicity; }
    void SetMultiplicity(unsigned int a_multiplicity) { m_multiplicity = a_multiplicity; }

    /// Dates on hand from which candles of that interval can be made: those of the interval itself, else those of the
    /// first entry of a finer one. First in the provider's order, which need not be the nearest. Empty for none.
    std::optional<RangeData::Dates> GetDates(EInterval a_interval) const;
    /// RangeData::SetDates on the entry of that very interval. False where there is none or the dates are refused.
    bool SetDates(EInterval a_interval, NDateTime a_from, NDateTime a_to);

    /// Something is offered, and if that includes history, every range is valid and the multiplicity fits. The
    /// multiplicity is checked against the first interval alone: providers list their main interval first, and some
    /// keep a coarser one with a lower bound after it.
    bool IsValid() const;

private:
    void DeserializeIntervalsContainer(const Settings& a_settings);

    EAggrTimeResult m_aggregationTime = ELastRecordTime;
    Intervals m_intervals;
    std::uint32_t m_multiplicity = 1;
};
