#include "modules/RequestParams.h"

#include "settings/Settings.h"

RequestParams::RequestParams(unsigned int a_kindData, bool a_needsDataOperationInfo)
    : ParamsBase(a_kindData), m_needsDataOperationInfo(a_needsDataOperationInfo)
{}

RequestParams::RequestParams(unsigned int a_kindData, EInterval a_interval, unsigned int a_multiplicity,
                             NDateTime a_from, NDateTime a_to, bool a_needsDataOperationInfo)
    : ParamsBase(a_kindData),
      m_intervalAndMultiplicity(a_interval, a_multiplicity),
      m_range(a_from, a_to),
      m_needsDataOperationInfo(a_needsDataOperationInfo)
{}

RequestParams::RequestParams(unsigned int a_kindData, EInterval a_interval, unsigned int a_multiplicity,
                             RangeData::Dates a_dates, bool a_needsDataOperationInfo)
    : RequestParams(a_kindData, a_interval, a_multiplicity, a_dates.from, a_dates.to,
                    a_needsDataOperationInfo)
{}

RequestParams::RequestParams(const Settings& a_settings)
    : ParamsBase(a_settings),
      m_intervalAndMultiplicity(a_settings),
      m_range(a_settings),
      m_needsDataOperationInfo(static_cast<bool>(a_settings[XML_NEED_INFO_ABOUT_DATA_OPERATION]))
{}

void RequestParams::SerializeState(Settings& a_settings) const
{
    ParamsBase::SerializeState(a_settings);
    m_intervalAndMultiplicity.SerializeState(a_settings);
    m_range.SerializeState(a_settings);
    a_settings[XML_NEED_INFO_ABOUT_DATA_OPERATION] = m_needsDataOperationInfo;
}

bool RequestParams::IsValid() const
{
    if (!IsSetHistory())
        return GetKindData() != 0;
    return m_range.Validate() && m_intervalAndMultiplicity.IsValid();
}
