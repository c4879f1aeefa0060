#include "alerts/AlertArgumentSourceChart.h"

#include "alerts/WhiteSpace.h"
#include "platform/CodePage.h"
#include "settings/Settings.h"
#include "time/KalventoException.h"
#include "velo/String.h"

namespace {

// It has no constant: only this class reads and writes the key.
constexpr std::string_view S_windowId = "windowId";

} // namespace

AlertArgumentSourceChart::ChartParameters::ChartParameters(const Settings& a_settings)
    : interval(static_cast<EInterval>(static_cast<unsigned int>(a_settings[Interval]))),
      isin(static_cast<const std::string&>(a_settings[Isin])),
      multiplicity(a_settings[Multiplicity]),
      sessionCount(a_settings[SessionCount])
{
    constexpr std::string_view place = "AlertArgumentSourceChart::ChartParameters::ChartParameters";
    if (kalvento::internal::IsWhiteSpaceOnly(isin))
        throw KalventoException(place, __LINE__, "Isin symbolu dla wykresu jest pusty"_cp1250);
    if (interval == EIntervalEmpty)
        throw KalventoException(place, __LINE__, "Interwał wykresu jest niepoprawny"_cp1250);
    if (multiplicity == 0)
        throw KalventoException(place, __LINE__, "Krotność interwału wykresu jest niepoprawna"_cp1250);
}

void AlertArgumentSourceChart::ChartParameters::Serialize(Settings& a_settings) const
{
    a_settings[Interval] = static_cast<unsigned int>(interval);
    a_settings[Isin] = isin;
    a_settings[Multiplicity] = multiplicity;
    a_settings[SessionCount] = sessionCount;
}

AlertArgumentSourceChart::SeriesMapping::SeriesMapping(const Settings& a_settings)
    : newSeriesId(static_cast<ESeriesId>(static_cast<unsigned int>(a_settings[NewSeriesId]))),
      basePointerIndex(a_settings[BasePointerIndex]),
      basePointerOutputSeriesIndex(a_settings[BasePointerOutputSeriesIndex])
{}

AlertArgumentSourceChart::SeriesMapping::SeriesMapping(ESeriesId a_newSeriesId,
                                                       unsigned long long a_basePointerIndex,
                                                       unsigned long long a_basePointerOutputSeriesIndex)
    : newSeriesId(a_newSeriesId),
      basePointerIndex(a_basePointerIndex),
      basePointerOutputSeriesIndex(a_basePointerOutputSeriesIndex)
{}

void AlertArgumentSourceChart::SeriesMapping::Serialize(Settings& a_settings) const
{
    a_settings[NewSeriesId] = static_cast<unsigned int>(newSeriesId);
    a_settings[BasePointerIndex] = basePointerIndex;
    a_settings[BasePointerOutputSeriesIndex] = basePointerOutputSeriesIndex;
}

AlertArgumentSourceChart::Indicator::Indicator(const Settings& a_settings)
    : type(a_settings[IndicatorType]),
      request(a_settings[IndicatorRequestId]),
      scriptInfo(a_settings[IndicatorScript])
{
    const Settings& values = a_settings[IndicatorParamsValues];
    parameters.assign(values.begin_unnamed(), values.end_unnamed());
    if (const Settings& mapping = a_settings[SeriesMappingLabel]; mapping.Exists())
        seriesMapping.emplace(mapping);
}

void AlertArgumentSourceChart::Indicator::Serialize(Settings& a_settings) const
{
    a_settings[IndicatorType] = type;
    a_settings[IndicatorRequestId] = request;
    a_settings[IndicatorScript] = VeloTools::String::WideToAnsi(scriptInfo);
    Settings& values = a_settings[IndicatorParamsValues];
    for (const double value : parameters)
        values.AddUnnamed() = value;
    if (seriesMapping)
        seriesMapping->Serialize(a_settings[SeriesMappingLabel]);
}

AlertArgumentSourceChart::AlertArgumentSourceChart(const Settings& a_settings)
    : parameters(a_settings[GroupParameters])
{
    const Settings& children = a_settings[GroupIndicators];
    indicators.reserve(children.GetUnnamedVariablesCount());
    for (auto child = children.begin_unnamed(); child != children.end_unnamed(); ++child)
        indicators.emplace_back(*child);
    if (const Settings& window = a_settings[S_windowId]; window.Exists())
        windowId = static_cast<long long>(window);
}

void AlertArgumentSourceChart::SerializeState(Settings& a_settings) const
{
    parameters.Serialize(a_settings[GroupParameters]);
    Settings& children = a_settings[GroupIndicators];
    for (const Indicator& indicator : indicators)
        indicator.Serialize(children.AddUnnamed());
    if (windowId)
        a_settings[S_windowId] = *windowId;
}
