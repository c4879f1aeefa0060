#include "platform/COleDateTime.h"

#include "platform/OleDate.h"

COleDateTime::COleDateTime(double a_dayNumber)
    : m_dt(a_dayNumber),
      m_status(a_dayNumber > OleDate::S_belowFirst && a_dayNumber < OleDate::S_aboveLast ? valid : invalid)
{}

COleDateTime::COleDateTime(int a_year, int a_month, int a_day, int a_hour, int a_minute, int a_second)
    : m_status(invalid)
{
    // A negative part becomes a huge one, which no calendar has.
    const auto number =
        OleDate::FromCalendar(static_cast<unsigned long>(a_year), static_cast<unsigned long>(a_month),
                              static_cast<unsigned long>(a_day), static_cast<unsigned long>(a_hour),
                              static_cast<unsigned long>(a_minute), static_cast<unsigned long>(a_second));
    if (!number)
        return;
    m_dt = number->value;
    m_status = valid;
}
