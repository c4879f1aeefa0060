#pragma once

#include "platform/Export.h"

#include <cstdint>
#include <string_view>

/// The part of the market that an asset is quoted in.
namespace AssetSegment {

/// Small numbers of our own: several codes of the data feed fall on one value.
enum Value : std::uint32_t {
    SegmentUnknown = 0,
    SegmentInstruments = 1,
    SegmentIndices = 2,
    SegmentDerivatives = 3
};

/// SegmentUnknown for an empty code, the null text and any code that isn't known. More than four characters raise
/// std::length_error.
KALVENTO_API Value ToSegmentValue(std::string_view a_code);

} // namespace AssetSegment
