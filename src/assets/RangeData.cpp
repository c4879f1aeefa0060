#include "assets/RangeData.h"

#include "settings/Settings.h"
#include "time/DateTimeTools.h"

namespace {

// Later than any session that is ever asked for, and still a date that every platform can show.
NDateTime EndOfTime()
{
    return {2099, 12, 31};
}

} // namespace

RangeData::RangeData() : m_to(EndOfTime()) {}

RangeData::RangeData(const NDateTime& a_from) : m_from(a_from), m_to(EndOfTime()) {}

RangeData::RangeData(const Settings& a_settings)
{
    m_from.UnSerializeState(a_settings[XML_FROM]);
    m_to.UnSerializeState(a_settings[XML_TO]);
}

bool RangeData::SetDates(const NDateTime& a_from, const NDateTime& a_to)
{
    const NDateTime from = DateTimeTools::GetDate(a_from);
    const NDateTime to = DateTimeTools::GetDate(a_to);
    // False for an invalid date as well: it is neither earlier than another nor equal to it.
    if (!(from <= to))
        return false;
    m_from = from;
    m_to = to;
    return true;
}

bool RangeData::SetDateFrom(const NDateTime& a_from)
{
    const NDateTime from = DateTimeTools::GetDate(a_from);
    if (!from.IsValid() || from > m_to)
        return false;
    m_from = from;
    return true;
}

bool RangeData::SetDateTo(const NDateTime& a_to)
{
    const NDateTime to = DateTimeTools::GetDate(a_to);
    if (!to.IsValid() || to < m_from)
        return false;
    m_to = to;
    return true;
}

void RangeData::GetMinRangeData(RangeData& a_other) const
{
    if (m_from > a_other.m_from)
        a_other.m_from = m_from;
    if (m_to < a_other.m_to)
        a_other.m_to = m_to;
}

void RangeData::SerializeState(Settings& a_settings) const
{
    m_from.SerializeState(a_settings[XML_FROM]);
    m_to.SerializeState(a_settings[XML_TO]);
}
