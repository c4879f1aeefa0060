#include "history_operations/SingleHistoryOperation.h"

#include "settings/Settings.h"

namespace {

// The numbers come with the data; the sources of these two kinds send the divisor.
bool TakesEffectInverted(SingleHistoryOperation::Type a_type)
{
    return a_type == 4 || a_type == 14;
}

} // namespace

SingleHistoryOperation::SingleHistoryOperation(int a_id, const NDateTime& a_date, Type a_type,
                                               double a_factor)
    : m_id(a_id), m_date(a_date), m_type(a_type), m_factor(a_factor)
{}

SingleHistoryOperation::SingleHistoryOperation(const Settings& a_settings)
    : m_id(a_settings[XML_ID]),
      m_date(a_settings[XML_DATE]),
      m_type(static_cast<Type>(static_cast<int>(a_settings[XML_TYPE]))),
      m_factor(a_settings[XML_CORRECTION_FACTOR])
{}

double SingleHistoryOperation::GetFactor() const
{
    return TakesEffectInverted(m_type) ? 1.0 / m_factor : m_factor;
}

void SingleHistoryOperation::SerializeState(Settings& a_settings) const
{
    a_settings[XML_ID] = m_id;
    a_settings[XML_CORRECTION_FACTOR] = m_factor;
    a_settings[XML_TYPE] = static_cast<int>(m_type);
    m_date.SerializeState(a_settings[XML_DATE]);
}
