#pragma once
// Lives in folding/ now; older plug-ins still find it here.
#include "folding/AggregatorWrapper.h" // IWYU pragma: export
