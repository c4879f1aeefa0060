#pragma once
// Stands in folding/ now; plug-ins written before go on finding it here.
#include "folding/AggregatorTools.h" // IWYU pragma: export
