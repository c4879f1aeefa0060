#pragma once

#include "time/NDateTime.h"

namespace kalvento::internal {

/// The beginning of the day; the beginning of all time, which has no calendar date, as it is.
inline NDateTime MidnightOf(const NDateTime& a_time)
{
    return a_time.GetMonth() == 0 ? a_time : NDateTime(a_time.GetYear(), a_time.GetMonth(), a_time.GetDay());
}

} // namespace kalvento::internal
