#pragma once
// Lives in folding/ now; older plug-ins still find it here.
#include "folding/AggregatorTools.h" // IWYU pragma: export
