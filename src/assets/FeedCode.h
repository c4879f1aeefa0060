#pragma once

#include <string_view>

namespace kalvento::internal {

/// The number that a code of the data feed packs into; 0 for an empty code and for the text that means a missing one.
/// More than four characters raise std::length_error.
unsigned int PackFeedCode(std::string_view a_code);

} // namespace kalvento::internal
