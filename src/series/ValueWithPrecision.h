#pragma once

#include "velo/EPrecision.h"

/// A value together with the decimal places to show it with. Copied and moved as a whole.
struct ValueWithPrecision {
    double value = 0.0;
    EPrecision minPrecision = EPrecisionNone;
    EPrecision maxPrecision = EPrecisionNone;
};
