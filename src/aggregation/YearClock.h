#pragma once

#include "time/NDateTime.h"

#include <cstdint>

namespace kalvento::internal {

/// A whole number cut to 32 bits, as the calendar arithmetic of windows of a day and longer has it: numbers outside any
/// calendar end in an invalid time and not in undefined behaviour.
inline int CutToInt(std::int64_t a_value)
{
    return static_cast<int>(static_cast<std::uint32_t>(a_value));
}

inline NDateTime DateOf(std::int64_t a_year, std::int64_t a_month, std::int64_t a_day)
{
    return {static_cast<std::uint32_t>(a_year), static_cast<std::uint32_t>(a_month),
            static_cast<std::uint32_t>(a_day)};
}

/// a_date moved on by a_days as a date at 00:00:00, but no further than 31 December of a_year.
inline NDateTime MovedWithinYear(NDateTime a_date, std::int64_t a_days, unsigned long a_year)
{
    a_date.ShiftDays(CutToInt(a_days));
    if (a_date.GetYear() != a_year)
        return DateOf(static_cast<std::int64_t>(a_year), 12, 31);
    return {a_date.GetYear(), a_date.GetMonth(), a_date.GetDay()};
}

/// The number of a window from a place counted in unsigned 32 bits. A place "before the first" (month 0, day of year 0)
/// wraps round to the greatest number, as in the stored candles of such rows.
inline int WindowNumber(unsigned long a_oneBasedPlace, unsigned short a_multiplicity)
{
    return static_cast<int>((static_cast<std::uint32_t>(a_oneBasedPlace) - 1U) / a_multiplicity);
}

} // namespace kalvento::internal
