#include "time/IntervalAndMultiplicity.h"

#include "settings/Settings.h"
#include "time/MaxMultiplicity.h"

using kalvento::internal::GetMaxMultiplicity;

IntervalAndMultiplicity::IntervalAndMultiplicity(const Settings& a_settings)
    : m_interval(static_cast<EInterval>(static_cast<int>(a_settings[XML_INTERVAL]))),
      m_multiplicity(static_cast<unsigned int>(a_settings[XML_MULTIPLICITY]))
{}

void IntervalAndMultiplicity::SerializeState(Settings& a_settings) const
{
    a_settings[XML_INTERVAL] = static_cast<unsigned int>(m_interval);
    a_settings[XML_MULTIPLICITY] = m_multiplicity;
}

bool IntervalAndMultiplicity::IsValid() const
{
    return m_interval != EIntervalEmpty && m_multiplicity > 0 &&
           m_multiplicity <= GetMaxMultiplicity(m_interval);
}

bool IntervalAndMultiplicity::IsAggregated() const
{
    return m_interval >= EIntervalSecond && m_multiplicity > 0 &&
           m_multiplicity <= GetMaxMultiplicity(m_interval);
}
