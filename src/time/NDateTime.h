#pragma once

#include "platform/COleDateTime.h"
#include "platform/Export.h"
#include "platform/OleDate.h"
#include "time/TimeFields.h"

#include <cstdint>
#include <string_view>
#include <type_traits>

class CTime;
class Settings;

namespace kalvento::internal {
struct NDateTimeWords;
}

/// The one timestamp: an OLE Automation date with its status, the broken-down calendar beside it, and a 16-bit counter
/// that orders rows within a second. The counter is called the millisecond but isn't a thousandth of a second.
///
/// The counter lives twice: in its field, and (from the 7-argument constructor and ShiftMilliSec) in the day number at
/// 1e-10 of a day a step. Comparisons read the field and never the fraction. Two values less than half a second apart
/// with equal counters compare equal, whatever their seconds say; `<` looks at the day numbers first, so `<` and `==`
/// can both hold for one pair. The order of all records depends on these rules.
///
/// A bad calendar input gives status invalid and never a raise: test IsValid. A plain value of 24 bytes, stored in
/// files byte for byte; copies are free, one thread at a time.
class KALVENTO_API NDateTime {
public:
    /// A counter step is 1 / Denominator of a day in the day number.
    static constexpr double Denominator = 10000000000.0;
    /// Modulus for reading a counter back out of a day number.
    static constexpr unsigned int DenominatorElement = 100000;
    static constexpr unsigned int MaxMilisecond = 65535;
    static constexpr std::string_view XML_DATETIME = "DateTime";
    static constexpr std::string_view XML_MILISECOND = "Millisecond";

    /// All fields zero, status valid: the value of Empty(). Its date reads 0-0-0 though its day number is 1899-12-30.
    constexpr NDateTime() = default;
    /// Midnight of a date. The fields keep what was given (cut to their bits) even where the status is invalid.
    NDateTime(unsigned long a_year, unsigned long a_month, unsigned long a_day);
    /// A date with a time; a_millisecond is the counter, cut to 16 bits, and goes into the day number as well.
    NDateTime(unsigned long a_year, unsigned long a_month, unsigned long a_day, unsigned long a_hour,
              unsigned long a_minute, unsigned long a_second, unsigned long a_millisecond);
    /// Reads what SerializeState wrote.
    explicit NDateTime(const Settings& a_settings);

    /// The all-zero value, one for the process.
    static const NDateTime& Empty();
    /// From a raw day number, rounded to the nearest second. The counter field takes the digits below the fifth decimal
    /// of the fraction, whatever they mean; the day number of the result holds no counter.
    static NDateTime FromDouble(double a_dayNumber);
    /// The calendar parts of a valid date with counter 0; any other status gives zero parts and status invalid.
    static NDateTime FromCOle(const COleDateTime& a_value);

    unsigned long GetYear() const { return kalvento::internal::YearField::Of(m_calendar); }
    unsigned long GetMonth() const { return kalvento::internal::MonthField::Of(m_calendar); }
    unsigned long GetDay() const { return kalvento::internal::DayField::Of(m_calendar); }
    unsigned long GetHour() const { return kalvento::internal::HourField::Of(m_calendar); }
    unsigned long GetMinute() const { return kalvento::internal::MinuteField::Of(m_calendar); }
    unsigned long GetSecond() const { return kalvento::internal::SecondField::Of(m_clock); }
    /// The ordering counter, 0 to 65535.
    unsigned long GetMilliSec() const { return kalvento::internal::CounterField::Of(m_clock); }
    /// 1 to 366; 0 where the status is not valid.
    unsigned long GetDayOfYear() const { return kalvento::internal::DayOfYearField::Of(m_clock); }

    /// The raw day number, the counter's share included.
    double ToDouble() const { return m_value.m_dt; }
    /// Day number and status.
    COleDateTime ToOle() const { return m_value; }
    /// The same instant in whole seconds of local time. Years below 1900 give CTime(0); 1900 to 1969 and parts out of
    /// range fail with E_FAIL, a time that local time lacks with E_INVALIDARG (both as std::system_error).
    CTime ToCTime() const;

    bool IsValid() const { return m_value.GetStatus() == COleDateTime::valid; }
    /// Equal to Empty(): any valid value within half a second of day number 0 with counter 0.
    bool IsEmpty() const { return *this == Empty(); }

    /// 1 is Sunday, 7 is Saturday; -1 where the status isn't valid or the day number lies outside the calendar.
    int GetDayOfWeek() const;
    /// The day number truncated toward zero.
    int GetAbsoluteDay() const;
    /// Seconds since midnight, from the fields.
    unsigned int GetAbsoluteTime() const
    {
        return static_cast<unsigned int>((GetHour() * 60 + GetMinute()) * 60 + GetSecond());
    }
    /// Equal absolute days; the status doesn't matter.
    bool SameDay(const NDateTime& a_other) const { return GetAbsoluteDay() == a_other.GetAbsoluteDay(); }

    /// Moves by whole days; time of day and counter fields stay. On an unreadable result year, month and day become all
    /// ones.
    const NDateTime& ShiftDays(int a_days);
    /// Moves by seconds; the counter field stays. On an unreadable result all six fields become all ones.
    void ShiftSec(int a_seconds);
    /// One step of the counter: day number and field; the field wraps inside its 16 bits.
    void ShiftMilliSec();
    static double ShiftDoubleByMilliSec(double a_value, int a_steps)
    {
        return a_value + a_steps / Denominator;
    }
    /// Sets the time of day; an impossible time changes nothing. The counter's share of the day number is lost.
    void SetTime(unsigned int a_hour, unsigned int a_minute, unsigned int a_second);

    void SerializeState(Settings& a_settings) const;
    void UnSerializeState(const Settings& a_settings);

    friend bool operator==(const NDateTime& a_left, const NDateTime& a_right)
    {
        return a_left.IsNear(a_right) && a_left.CounterBits() == a_right.CounterBits();
    }
    friend bool operator!=(const NDateTime& a_left, const NDateTime& a_right) { return !(a_left == a_right); }
    friend bool operator<(const NDateTime& a_left, const NDateTime& a_right)
    {
        if (a_left.IsValid() && a_right.IsValid() &&
            OleDate::ToContinuous(a_left.m_value.m_dt) < OleDate::ToContinuous(a_right.m_value.m_dt))
            return true;
        return a_left.IsNear(a_right) && a_left.CounterBits() < a_right.CounterBits();
    }
    friend bool operator>(const NDateTime& a_left, const NDateTime& a_right)
    {
        if (a_left.IsValid() && a_right.IsValid() &&
            OleDate::ToContinuous(a_left.m_value.m_dt) > OleDate::ToContinuous(a_right.m_value.m_dt))
            return true;
        return a_left.IsNear(a_right) && a_left.CounterBits() > a_right.CounterBits();
    }
    friend bool operator<=(const NDateTime& a_left, const NDateTime& a_right)
    {
        return a_left < a_right || a_left == a_right;
    }
    friend bool operator>=(const NDateTime& a_left, const NDateTime& a_right)
    {
        return a_left > a_right || a_left == a_right;
    }

private:
    friend struct kalvento::internal::NDateTimeWords;

    // Half a second in days: values closer than this are one instant.
    static constexpr double S_halfSecond = OleDate::S_halfSecond;

    static unsigned long GetMilesecond(double a_value);

    std::uint32_t CounterBits() const { return m_clock & kalvento::internal::CounterField::S_mask; }
    bool IsNear(const NDateTime& a_other) const
    {
        const auto status = m_value.GetStatus();
        if (status != a_other.m_value.GetStatus())
            return false;
        if (status == COleDateTime::valid)
            return m_value.m_dt + S_halfSecond > a_other.m_value.m_dt &&
                   a_other.m_value.m_dt > m_value.m_dt - S_halfSecond;
        return status == COleDateTime::null;
    }

    COleDateTime m_value;
    std::uint32_t m_calendar = 0; // TimeFields.h says what lies where in these two
    std::uint32_t m_clock = 0;
};

static_assert(sizeof(NDateTime) == 24 && alignof(NDateTime) == 8 && std::is_trivially_copyable_v<NDateTime>);

/// Gives the engine the packed words of a time, for tests of many rows at once.
struct kalvento::internal::NDateTimeWords {
    static constexpr double S_halfSecond = NDateTime::S_halfSecond;

    static std::uint32_t Calendar(const NDateTime& a_time) { return a_time.m_calendar; }
    static std::uint32_t Clock(const NDateTime& a_time) { return a_time.m_clock; }
    static NDateTime Make(double a_dayNumber, std::int32_t a_status, std::uint32_t a_calendar,
                          std::uint32_t a_clock)
    {
        NDateTime time;
        time.m_value = COleDateTime(a_dayNumber, static_cast<COleDateTime::DateTimeStatus>(a_status));
        time.m_calendar = a_calendar;
        time.m_clock = a_clock;
        return time;
    }
};
