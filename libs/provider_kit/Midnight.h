#pragma once

#include "time/NDateTime.h"

namespace kalvento::internal {

/// The beginning of the day; the beginning of all time, which has no calendar date, as it is.
NDateTime MidnightOf(const NDateTime& a_time);

} // namespace kalvento::internal
