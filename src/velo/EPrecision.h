#pragma once

#include <cstdint>

/// A count of decimal places. Any count is a value of this type; -1 means that no precision is set.
enum EPrecision : std::int32_t {
    EPrecisionNone = -1,
    EPrecision0 = 0,
    EPrecision1 = 1,
    EPrecision2 = 2,
    EPrecision3 = 3,
    EPrecision4 = 4,
    EPrecision5 = 5,
    EPrecision6 = 6
};
