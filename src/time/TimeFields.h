#pragma once

#include <cstdint>

/// Where the parts of an NDateTime lie in its two packed words. Nothing outside of the time's own headers should need a shift.
namespace kalvento::internal {

template<unsigned Shift, unsigned Width>
struct TimeField {
    static constexpr std::uint32_t S_greatest = (1U << Width) - 1;
    static constexpr std::uint32_t S_mask = S_greatest << Shift;
    static constexpr std::uint32_t S_one = 1U << Shift; ///< Added to a word, moves the field on by one.

    static constexpr std::uint32_t Of(std::uint32_t a_word) { return (a_word >> Shift) & S_greatest; }
    /// What doesn't fit is cut off.
    static constexpr std::uint32_t Pack(unsigned long a_value)
    {
        return static_cast<std::uint32_t>(a_value & S_greatest) << Shift;
    }
};

// The calendar word.
using YearField = TimeField<0, 12>;
using MonthField = TimeField<12, 4>;
using DayField = TimeField<16, 5>;
using HourField = TimeField<21, 5>;
using MinuteField = TimeField<26, 6>;
// The clock word; its top bit stays clear.
using SecondField = TimeField<0, 6>;
using CounterField = TimeField<6, 16>;
using DayOfYearField = TimeField<22, 9>;

constexpr std::uint32_t PackDate(unsigned long a_year, unsigned long a_month, unsigned long a_day)
{
    return YearField::Pack(a_year) | MonthField::Pack(a_month) | DayField::Pack(a_day);
}

constexpr std::uint32_t PackHourMinute(unsigned long a_hour, unsigned long a_minute)
{
    return HourField::Pack(a_hour) | MinuteField::Pack(a_minute);
}

} // namespace kalvento::internal
