#pragma once

#include "assets/ParamsBase.h"
#include "assets/RangeData.h"
#include "platform/Export.h"
#include "time/EInterval.h"
#include "time/IntervalAndMultiplicity.h"
#include "time/NDateTime.h"

#include <string_view>

class Settings;

/// What a consumer asks for: kinds of data, what to aggregate to, dates of the history. A plain value without a lock.
class KALVENTO_API RequestParams : public ParamsBase {
public:
    static constexpr std::string_view XML_NEED_INFO_ABOUT_DATA_OPERATION = "DataOper";

    /// Asks for nothing yet. Here and below, what isn't given defaults to single ticks, all dates, no corporate
    /// operations.
    RequestParams() = default;
    explicit RequestParams(unsigned int a_kindData) : ParamsBase(a_kindData) {}
    RequestParams(unsigned int a_kindData, bool a_needsDataOperationInfo);
    /// The dates are stored unchanged; IsValid tells what they are worth.
    RequestParams(unsigned int a_kindData, EInterval a_interval, unsigned int a_multiplicity,
                  NDateTime a_from, NDateTime a_to, bool a_needsDataOperationInfo);
    RequestParams(unsigned int a_kindData, EInterval a_interval, unsigned int a_multiplicity,
                  RangeData::Dates a_dates, bool a_needsDataOperationInfo);
    /// Reads what SerializeState wrote; what is missing reads as zero.
    explicit RequestParams(const Settings& a_settings);

    void SerializeState(Settings& a_settings) const override;

    EInterval GetInterval() const { return m_intervalAndMultiplicity.GetInterval(); }
    unsigned int GetMultiplicity() const { return m_intervalAndMultiplicity.GetMultiplicity(); }
    void SetIntervalAndMultiplicity(EInterval a_interval, unsigned int a_multiplicity)
    {
        m_intervalAndMultiplicity.Set(a_interval, a_multiplicity);
    }

    RangeData::Dates GetDates() const { return m_range.GetDates(); }
    /// As RangeData::SetDates: keeps whole days, and refuses with false.
    bool SetDates(const NDateTime& a_from, const NDateTime& a_to) { return m_range.SetDates(a_from, a_to); }
    bool SetDates(const RangeData::Dates& a_dates) { return m_range.SetDates(a_dates); }

    /// The consumer wants the corporate operations by which to adjust the history.
    bool NeedsDataOperationInfo() const { return m_needsDataOperationInfo; }
    void SetNeedsDataOperationInfo(bool a_needs) { m_needsDataOperationInfo = a_needs; }

    bool IsSingleTick() const { return m_intervalAndMultiplicity.IsSingleTick(); }
    /// Something is asked for, and if that includes history, the range is valid and the multiplicity fits the interval.
    /// Without history neither of the two is checked.
    bool IsValid() const;

private:
    IntervalAndMultiplicity m_intervalAndMultiplicity = {EIntervalTick, 1};
    RangeData m_range;
    bool m_needsDataOperationInfo = false;
};
