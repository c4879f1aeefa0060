#pragma once

#include "platform/Export.h"
#include "series/ESeriesId.h"
#include "time/EInterval.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

class Settings;

/// A full description of the chart behind an alert's argument, down to the indicators and their parameters, so that the
/// value can be computed where there is no chart. A value type: copies are independent, one thread at a time.
///
/// Its stored form is a Settings tree. Whatever writes expects an empty node: values without keys are appended.
class KALVENTO_API AlertArgumentSourceChart {
public:
    static constexpr std::string_view GroupParameters = "parameters";
    static constexpr std::string_view GroupIndicators = "indicators";
    static constexpr std::string_view Interval = "interval";
    static constexpr std::string_view Isin = "isin";
    static constexpr std::string_view Multiplicity = "multiplicity";
    static constexpr std::string_view SessionCount = "session_count";
    static constexpr std::string_view IndicatorType = "type";
    static constexpr std::string_view IndicatorRequestId = "request";
    static constexpr std::string_view IndicatorScript = "script_info";
    static constexpr std::string_view IndicatorParamsValues = "parameters"; ///< Inside an indicator.
    static constexpr std::string_view SeriesMappingLabel = "series_mapping";
    static constexpr std::string_view NewSeriesId = "new_series_id";
    static constexpr std::string_view BasePointerIndex = "base_pointer_index";
    static constexpr std::string_view BasePointerOutputSeriesIndex = "base_pointer_output_series_index";

    /// What the chart shows.
    struct KALVENTO_API ChartParameters {
        ChartParameters() = default;
        /// Reads and checks: an isin of white space, an empty interval and a multiplicity of 0 raise KalventoException,
        /// tested in this order.
        explicit ChartParameters(const Settings& a_settings);
        /// Writes without a check.
        void Serialize(Settings& a_settings) const;

        EInterval interval = EIntervalEmpty;
        std::string isin;
        unsigned int multiplicity = 0;
        unsigned int sessionCount = 0; ///< How many sessions the chart shows.
    };

    /// Where an indicator's output goes.
    struct KALVENTO_API SeriesMapping {
        explicit SeriesMapping(const Settings& a_settings);
        SeriesMapping(ESeriesId a_newSeriesId, unsigned long long a_basePointerIndex,
                      unsigned long long a_basePointerOutputSeriesIndex);
        void Serialize(Settings& a_settings) const;

        ESeriesId newSeriesId;                           ///< Identifier of the output series.
        unsigned long long basePointerIndex;             ///< The base pointer to which the series belongs.
        unsigned long long basePointerOutputSeriesIndex; ///< The output of that pointer.
    };

    /// One indicator of the chart.
    struct KALVENTO_API Indicator {
        Indicator() = default;
        explicit Indicator(const Settings& a_settings);
        /// The script loses what CP1250 lacks.
        void Serialize(Settings& a_settings) const;

        int type = 0; ///< Kind of indicator; the chart modules know the numbers.
        unsigned int request = 0;
        std::vector<double> parameters;
        std::wstring scriptInfo;
        std::optional<SeriesMapping> seriesMapping;
    };

    AlertArgumentSourceChart() = default;
    /// Reads what SerializeState wrote; raises as ChartParameters does.
    explicit AlertArgumentSourceChart(const Settings& a_settings);
    /// Writes without a check.
    void SerializeState(Settings& a_settings) const;

    ChartParameters parameters;
    std::vector<Indicator> indicators;
    std::optional<long long> windowId;
};
