#pragma once

#include <cstdint>

/// Additional fields of an instrument that are reached by the same kind of key as a series. The numbers lie far from
/// those of ESeriesId, so that one integer can stand for either. They are stored: append, never renumber.
enum EAdditFields : std::uint32_t {
    EAdditPrice = 1016,
    EAdditVolume = 1017,
    EAdditMultiplier = 1023,
    EAdditTime = 1024,
    EAdditNominal = 1028
};
