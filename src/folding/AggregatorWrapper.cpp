#include "folding/AggregatorWrapper.h"

#include "aggregation/Aggregator.h"
#include "folding/AggregatorTools.h"
#include "platform/CodePage.h"
#include "series/FieldAim.h"
#include "series/History.h"
#include "series/Record.h"
#include "series/Synchronization.h"
#include "settings/Settings.h"
#include "velo/LogAllExceptions.h"
#include "velo/Refuse.h"

#include <algorithm>
#include <stdexcept>

using kalvento::internal::Refuse;

namespace {

constexpr std::size_t S_candleSeriesCount = 3;

constexpr const char* S_placeRecord = "AggregatorWrapper::AggregateRecord";
constexpr const char* S_placeSynchro = "AggregatorWrapper::AgregateSynchro";
constexpr const char* S_placeHistory = "AggregatorWrapper::AgregateHistory";
constexpr const char* S_placeCurrent = "AggregatorWrapper::SetCurrentRecord";

constexpr const char* S_noMainSeries = "Nie znaleziono głównego typu agregującego w rekordzie"_cp1250;
constexpr const char* S_wrongRecordCount = "Ilść serii w rekordzie jest inna niż zainicializowana"_cp1250;
constexpr const char* S_repeatedSeries =
    "Serie w rekordzie powtarzają się lub brakuje serii: open, max, min"_cp1250;
constexpr const char* S_noInterval = "Brak informacji o interwale oraz krotnosci odebranych danych"_cp1250;
constexpr const char* S_wrongDirection = "Agregacja nie jest możliwa dla obecnych interwałów"_cp1250;

bool IsReachable(IntervalAndMultiplicity a_input, const Aggregator& a_aggregator)
{
    return AggregatorTools::IsAggregationPossible(a_input.GetInterval(), a_input.GetMultiplicity(),
                                                  a_aggregator.GetOutputInterval(),
                                                  a_aggregator.GetOutputIntervalMultiple());
}

} // namespace

AggregatorWrapper::AggregatorWrapper(const std::set<DSProp>& a_dsProps, EAggrTimeResult a_timeResult,
                                     EInterval a_interval, unsigned short a_multiplicity)
    : m_mainSeries(AggregatorTools::GetMainAggregationSeries(a_dsProps).GetSeriesID()),
      m_aggregationTime(a_timeResult),
      m_types(AggregatorTools::PrepareAggregationTypes(a_dsProps)),
      m_fields(a_dsProps.size() + S_candleSeriesCount, nullptr),
      m_aggregator(std::make_unique<Aggregator>(a_interval, a_multiplicity, ELastRecordTime, m_types))
{
    if (!ValidateSeriesList(a_dsProps))
        throw std::invalid_argument("Niepoprawny argument: a_dsProps"_cp1250);
}

AggregatorWrapper::AggregatorWrapper(const std::set<DSProp>& a_dsProps, const Settings& a_settings)
    : AggregatorWrapper(a_dsProps,
                        static_cast<EAggrTimeResult>(static_cast<int>(a_settings[XML_AGGREGATION_TIME])),
                        static_cast<EInterval>(static_cast<int>(a_settings[XML_INTERVAL_ID])),
                        static_cast<unsigned short>(static_cast<unsigned int>(a_settings[XML_MULTIPLICITY])))
{}

AggregatorWrapper::AggregatorWrapper(const AggregatorWrapper& a_other)
    : m_mainSeries(a_other.m_mainSeries),
      m_aggregationTime(a_other.m_aggregationTime),
      m_types(a_other.m_types),
      m_fields(a_other.m_fields.size(), nullptr),
      m_aggregator(a_other.m_aggregator ? std::make_unique<Aggregator>(*a_other.m_aggregator) : nullptr)
{}

AggregatorWrapper& AggregatorWrapper::operator=(const AggregatorWrapper& a_other)
{
    if (this != &a_other)
        *this = AggregatorWrapper(a_other);
    return *this;
}

AggregatorWrapper::AggregatorWrapper(AggregatorWrapper&&) noexcept = default;
AggregatorWrapper& AggregatorWrapper::operator=(AggregatorWrapper&&) noexcept = default;
AggregatorWrapper::~AggregatorWrapper() = default;

bool AggregatorWrapper::AggregateRecord(Record& a_record, bool& a_sameWindow)
{
    try {
        if (a_record.SeriesCount() + S_candleSeriesCount != m_fields.size())
            return Refuse(S_placeRecord, __LINE__, S_wrongRecordCount);
        const Record::Shape shape = a_record.GetShape(m_mainSeries);
        if (shape.mainCount == 0)
            return Refuse(S_placeRecord, __LINE__, S_noMainSeries);
        if (shape.mainCount > 1)
            return Refuse(S_placeRecord, __LINE__, S_repeatedSeries);

        a_record.AddAggregationSeries(shape);
        PrepareRecordSeries(a_record);
        NDateTime time = a_record.GetTime();
        a_sameWindow = m_aggregator->SumWithWindow(&time, &m_fields, false);
        return true;
    } catch (...) {
        LogAllExceptions(S_placeRecord, __LINE__);
        return false;
    }
}

bool AggregatorWrapper::AgregateSynchro(Synchronization& a_synchro)
{
    try {
        const IntervalAndMultiplicity input = a_synchro.GetIntervalData();
        if (!input.IsValid())
            return Refuse(S_placeSynchro, __LINE__, S_noInterval);
        if (!m_aggregator || !IsReachable(input, *m_aggregator))
            return Refuse(S_placeSynchro, __LINE__, S_wrongDirection);
        if (a_synchro.SeriesCount() + S_candleSeriesCount != m_fields.size())
            return Refuse(S_placeSynchro, __LINE__, S_wrongRecordCount);
        if (a_synchro.find(m_mainSeries) == a_synchro.end())
            return Refuse(S_placeSynchro, __LINE__, S_noMainSeries);

        if (input.IsSingleTick()) {
            if (!a_synchro.AgregateTicks(m_mainSeries, *m_aggregator, m_fields))
                return false;
        } else {
            a_synchro.AddAggregationSeries();
            if (!a_synchro.AgregateData(m_mainSeries, *m_aggregator, m_fields))
                return false;
        }
        Record lastCandle = a_synchro.GetLastRecord();
        return SetCurrentRecord(lastCandle);
    } catch (...) {
        LogAllExceptions(S_placeSynchro, __LINE__);
        return false;
    }
}

bool AggregatorWrapper::AgregateHistory(History& a_history)
{
    try {
        if (!a_history.IsValid())
            return Refuse(S_placeHistory, __LINE__, "Nie można zagregować podanej historii"_cp1250);
        const IntervalAndMultiplicity input = a_history.GetIntervalData();
        if (!input.IsValid())
            return Refuse(S_placeHistory, __LINE__, S_noInterval);
        if (!m_aggregator || !IsReachable(input, *m_aggregator))
            return Refuse(S_placeHistory, __LINE__, S_wrongDirection);
        if (a_history.find(m_mainSeries) == a_history.end())
            return Refuse(S_placeHistory, __LINE__,
                          "Nie znaleziono głównej serii agregującej w rekordzie"_cp1250);

        const bool isTickShape = a_history.IsSingleTickHistory();
        if (a_history.SeriesCount() + (isTickShape ? S_candleSeriesCount : 0) != m_fields.size())
            return Refuse(S_placeHistory, __LINE__,
                          "Ilść serii w historii jest inna niż zainicializowana"_cp1250);
        return isTickShape ? a_history.AgregateTicks(m_mainSeries, *m_aggregator, m_fields)
                           : a_history.AgregateData(m_mainSeries, *m_aggregator, m_fields);
    } catch (...) {
        LogAllExceptions(S_placeHistory, __LINE__);
        return false;
    }
}

bool AggregatorWrapper::SetCurrentRecord(Record& a_record)
{
    try {
        if (a_record.SeriesCount() != m_fields.size())
            return Refuse(S_placeCurrent, __LINE__,
                          "Ilość serii w zagregowanym rekordzie jest inna niż zainicializowana"_cp1250);
        if (!a_record.HasSeries(m_mainSeries))
            return Refuse(S_placeCurrent, __LINE__, S_noMainSeries);
        if (!PrepareRecordSeries(a_record))
            return Refuse(S_placeCurrent, __LINE__, S_repeatedSeries);

        NDateTime time = a_record.GetTime();
        m_aggregator->SetCurrentRecord(&time, &m_fields);
        return true;
    } catch (...) {
        LogAllExceptions(S_placeCurrent, __LINE__);
        return false;
    }
}

void AggregatorWrapper::ClearLastValue()
{
    if (m_aggregator)
        m_aggregator->ClearLastValue();
}

void AggregatorWrapper::GetWindowLimits(const NDateTime& a_time, NDateTime* a_begin, NDateTime* a_end) const
{
    if (m_aggregator)
        m_aggregator->GetWindowLimits(a_time, a_begin, a_end);
}

EInterval AggregatorWrapper::GetOutputInterval() const
{
    return m_aggregator ? m_aggregator->GetOutputInterval() : EIntervalEmpty;
}

unsigned int AggregatorWrapper::GetOutputMultiplicity() const
{
    return m_aggregator ? m_aggregator->GetOutputIntervalMultiple() : 0U;
}

bool AggregatorWrapper::HaveTheSameIntevals(const AggregatorWrapper& a_other) const
{
    return GetOutputInterval() == a_other.GetOutputInterval() &&
           GetOutputMultiplicity() == a_other.GetOutputMultiplicity();
}

void AggregatorWrapper::SerializeState(Settings& a_settings) const
{
    a_settings[XML_INTERVAL_ID] = static_cast<int>(GetOutputInterval());
    a_settings[XML_MULTIPLICITY] = GetOutputMultiplicity();
    a_settings[XML_AGGREGATION_TIME] = static_cast<int>(m_aggregationTime);
}

bool AggregatorWrapper::ValidateSeriesList(const std::set<DSProp>& a_dsProps) const
{
    constexpr const char* place = "AggregatorWrapper::ValidateSeriesList";
    if (a_dsProps.empty())
        return Refuse(place, __LINE__, "Nie podano serii dla rekordu"_cp1250);
    if (std::ranges::any_of(a_dsProps, &DSProp::IsAggregationSeries))
        return Refuse(
            place, __LINE__,
            "Rekord zawierający serię: IntervalOpen, IntervalMax, IntervalMin jest nieobsługiwany"_cp1250);
    return true;
}

// The set that gave the types and the record both ascend by identifier, so the other fields meet their types.
bool AggregatorWrapper::PrepareRecordSeries(Record& a_record)
{
    kalvento::internal::FieldAim aim(m_mainSeries, m_fields);
    for (auto& [seriesId, value] : a_record)
        aim.Aim(seriesId, &value);
    return aim.IsComplete();
}
