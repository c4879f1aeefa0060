#pragma once

#include "aggregation/EAggrType.h"
#include "platform/Export.h"
#include "series/ESeriesId.h"
#include "velo/EPrecision.h"

#include <string>
#include <string_view>

class Settings;

/// The description of one series, as a chart, a table or an alert holds it. A value type: copies are independent, one
/// thread at a time; a moved-from label is empty.
///
/// Only identifiers decide equality and order, except between two indicators, which are compared by label alone. So a
/// std::set<DSProp> holds one element for each identifier, and any number of indicators of different labels.
class KALVENTO_API DSProp {
public:
    static constexpr std::string_view XML_SERIES_LABEL = "SeriesLabel";
    static constexpr std::string_view XML_SERIES_ID = "SeriesId";
    static constexpr std::string_view XML_AGGREGATION_TYPE = "AggregationType";
    static constexpr std::string_view XML_MIN_PRECISION = "MinPrecision";
    static constexpr std::string_view XML_MAX_PRECISION = "Precision";

    /// The defaults of the series. Raises std::invalid_argument for Time, VirtualSeries and every number from 56
    /// upward, which have no default precision.
    DSProp(ESeriesId a_seriesId);
    /// Both precisions take the one value.
    DSProp(ESeriesId a_seriesId, EAggrType a_aggrType, std::wstring_view a_label, EPrecision a_precision);
    DSProp(ESeriesId a_seriesId, EAggrType a_aggrType, std::wstring_view a_label, EPrecision a_minimum,
           EPrecision a_maximum);
    /// Reads what SerializeState wrote.
    explicit DSProp(const Settings& a_settings);

    ESeriesId GetSeriesID() const { return m_seriesId; }
    EAggrType GetAggrType() const { return m_aggrType; }
    const std::wstring& GetLabel() const { return m_label; }
    EPrecision GetMinPrecision() const { return m_minPrecision; }
    EPrecision GetMaxPrecision() const { return m_maxPrecision; }

    /// Sets both precisions. Constant, so that it reaches the elements of a set, whose order precisions don't touch.
    void SetPrecision(EPrecision a_precision) const { SetPrecision(a_precision, a_precision); }
    void SetPrecision(EPrecision a_minimum, EPrecision a_maximum) const
    {
        m_minPrecision = a_minimum;
        m_maxPrecision = a_maximum;
    }

    /// True for the three series that aggregation makes: IntervalOpen, IntervalMax, IntervalMin.
    bool IsAggregationSeries() const;

    /// Compares the labels alone, whatever the identifiers.
    bool EqualsLabels(const DSProp& a_other) const { return m_label == a_other.m_label; }

    void SerializeState(Settings& a_settings) const;
    void UnSerializeState(const Settings& a_settings);

    friend bool operator==(const DSProp& a_left, const DSProp& a_right)
    {
        if (a_left.m_seriesId == Indicator && a_right.m_seriesId == Indicator)
            return a_left.m_label == a_right.m_label;
        return a_left.m_seriesId == a_right.m_seriesId;
    }
    friend bool operator!=(const DSProp& a_left, const DSProp& a_right) { return !(a_left == a_right); }
    friend bool operator<(const DSProp& a_left, const DSProp& a_right)
    {
        if (a_left.m_seriesId == Indicator && a_right.m_seriesId == Indicator)
            return a_left.m_label < a_right.m_label;
        return a_left.m_seriesId < a_right.m_seriesId;
    }

private:
    ESeriesId m_seriesId;
    EAggrType m_aggrType;
    std::wstring m_label;
    mutable EPrecision m_minPrecision;
    mutable EPrecision m_maxPrecision;
};
