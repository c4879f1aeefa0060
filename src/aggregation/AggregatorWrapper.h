#pragma once
// Stands in folding/ now; plug-ins written before go on finding it here.
#include "folding/AggregatorWrapper.h" // IWYU pragma: export
