#include "time/NDateTime.h"

#include "platform/NearestInt.h"
#include "platform/OleDate.h"
#include "settings/Settings.h"

#include <cmath>
#include <optional>

using namespace kalvento::internal;

namespace {

// What a failed platform read leaves behind: all bits of a field.
constexpr std::uint32_t S_unread = 0xFFFFFFFFU;

constexpr std::uint32_t S_dateMask = YearField::S_mask | MonthField::S_mask | DayField::S_mask;

std::optional<OleDate::CalendarParts> Read(const COleDateTime& a_value)
{
    if (a_value.GetStatus() != COleDateTime::valid)
        return std::nullopt;
    return OleDate::ToCalendar(a_value.m_dt);
}

constexpr OleDate::CalendarParts S_unreadParts = {S_unread, S_unread, S_unread, S_unread,
                                                  S_unread, S_unread, S_unread, S_unread};

} // namespace

NDateTime::NDateTime(unsigned long a_year, unsigned long a_month, unsigned long a_day)
    : NDateTime(a_year, a_month, a_day, 0, 0, 0, 0)
{}

NDateTime::NDateTime(unsigned long a_year, unsigned long a_month, unsigned long a_day, unsigned long a_hour,
                     unsigned long a_minute, unsigned long a_second, unsigned long a_millisecond)
    : m_calendar(PackDate(a_year, a_month, a_day) | PackHourMinute(a_hour, a_minute)),
      m_clock(SecondField::Pack(a_second) | CounterField::Pack(a_millisecond))
{
    if (const auto number = OleDate::FromCalendar(a_year, a_month, a_day, a_hour, a_minute, a_second)) {
        m_value.m_dt = number->value;
        m_clock |= DayOfYearField::Pack(number->dayOfYear);
    } else {
        m_value.SetStatus(COleDateTime::invalid);
    }
    // Plain addition below day 0 as well, where it moves the value towards the start of its day.
    if (const unsigned long counter = GetMilliSec(); counter != 0)
        m_value.m_dt += static_cast<double>(counter) / Denominator;
}

NDateTime::NDateTime(const Settings& a_settings)
{
    UnSerializeState(a_settings);
}

const NDateTime& NDateTime::Empty()
{
    static const NDateTime empty;
    return empty;
}

NDateTime NDateTime::FromDouble(double a_dayNumber)
{
    const auto parts = OleDate::ToCalendar(a_dayNumber).value_or(OleDate::CalendarParts{});
    NDateTime time(parts.year, parts.month, parts.day, parts.hour, parts.minute, parts.second, 0);
    time.m_clock |= CounterField::Pack(GetMilesecond(a_dayNumber));
    return time;
}

NDateTime NDateTime::FromCOle(const COleDateTime& a_value)
{
    const auto parts = Read(a_value).value_or(OleDate::CalendarParts{});
    return {parts.year, parts.month, parts.day, parts.hour, parts.minute, parts.second, 0};
}

int NDateTime::GetDayOfWeek() const
{
    const auto parts = Read(m_value);
    return parts ? static_cast<int>(parts->dayOfWeek) + 1 : -1;
}

int NDateTime::GetAbsoluteDay() const
{
    return NearestInt(m_value.m_dt);
}

const NDateTime& NDateTime::ShiftDays(int a_days)
{
    if (a_days == 0)
        return *this;

    m_value.m_dt = OleDate::FromContinuous(OleDate::ToContinuous(m_value.m_dt) + a_days);
    const auto parts = Read(m_value).value_or(S_unreadParts);
    m_calendar = (m_calendar & ~S_dateMask) | PackDate(parts.year, parts.month, parts.day);
    m_clock = (m_clock & ~DayOfYearField::S_mask) | DayOfYearField::Pack(parts.dayOfYear);
    return *this;
}

void NDateTime::ShiftSec(int a_seconds)
{
    m_value.m_dt = OleDate::FromContinuous(OleDate::ToContinuous(m_value.m_dt) +
                                           a_seconds / static_cast<double>(OleDate::S_secondsOfDay));
    const auto parts = Read(m_value).value_or(S_unreadParts);
    m_calendar = PackDate(parts.year, parts.month, parts.day) | PackHourMinute(parts.hour, parts.minute);
    m_clock = SecondField::Pack(parts.second) | (m_clock & CounterField::S_mask) |
              DayOfYearField::Pack(parts.dayOfYear);
}

void NDateTime::ShiftMilliSec()
{
    m_value.m_dt += 1.0 / Denominator;
    m_clock = (m_clock & ~CounterField::S_mask) | CounterField::Pack(GetMilliSec() + 1);
}

void NDateTime::SetTime(unsigned int a_hour, unsigned int a_minute, unsigned int a_second)
{
    if (a_hour >= 24 || a_minute >= 60 || a_second >= 60)
        return;

    m_calendar = (m_calendar & S_dateMask) | PackHourMinute(a_hour, a_minute);
    m_clock = (m_clock & ~SecondField::S_mask) | SecondField::Pack(a_second);
    if (GetYear() == 0 || GetMonth() == 0 || GetDay() == 0) {
        m_value = COleDateTime(1899, 12, 30, static_cast<int>(a_hour), static_cast<int>(a_minute),
                               static_cast<int>(a_second));
        return;
    }
    // Keeps the counter's field alone: its share of the day number goes.
    const auto number = OleDate::FromCalendar(GetYear(), GetMonth(), GetDay(), a_hour, a_minute, a_second);
    m_value =
        number ? COleDateTime(number->value, COleDateTime::valid) : COleDateTime(0.0, COleDateTime::invalid);
    m_clock = (m_clock & ~DayOfYearField::S_mask) | DayOfYearField::Pack(number ? number->dayOfYear : 0);
}

void NDateTime::SerializeState(Settings& a_settings) const
{
    a_settings[XML_DATETIME] = ToDouble();
    a_settings[XML_MILISECOND] = static_cast<unsigned int>(GetMilliSec());
}

void NDateTime::UnSerializeState(const Settings& a_settings)
{
    *this = FromDouble(static_cast<double>(a_settings[XML_DATETIME]));
    // The digits of the fraction are usually time and not counter; the key holds the counter itself.
    const auto counter = static_cast<unsigned int>(a_settings[XML_MILISECOND]);
    m_clock = (m_clock & ~CounterField::S_mask) | CounterField::Pack(counter);
}

unsigned long NDateTime::GetMilesecond(double a_value)
{
    const double steps = (a_value - std::trunc(a_value)) * Denominator;
    if (std::isnan(steps))
        return 0;
    // A negative fraction wraps around 64 bits, as the platform's conversion to an unsigned number does.
    return static_cast<std::uint64_t>(static_cast<std::int64_t>(steps)) % DenominatorElement;
}
