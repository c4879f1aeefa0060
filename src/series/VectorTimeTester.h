#pragma once

#include "platform/Export.h"
#include "time/NDateTime.h"

#include <vector>

/// Checks on a time column that arrives from outside. Nothing is repaired.
namespace VectorTimeTester {

/// Times in order, equal neighbours allowed; with a_day (may be null) the block must also begin and end on that date.
/// Fewer than two times always pass, whatever their date. False with a line in the log.
KALVENTO_API bool CheckIntegrity(const std::vector<NDateTime>& a_times, const NDateTime* a_day);

/// True when no time lies on a day from a_from to a_to, both included, so that a change of range leaves the data
/// untouched. Days are day numbers truncated toward zero.
KALVENTO_API bool ChangeRange(const std::vector<NDateTime>& a_times, NDateTime a_from, NDateTime a_to);

} // namespace VectorTimeTester
