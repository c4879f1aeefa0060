#pragma once

#include "platform/Export.h"

#include <cstdint>
#include <string>
#include <string_view>

/// What kind of instrument an asset is.
namespace AssetCategory {

/// The numbers are the codes of the data feed themselves, packed by VeloTools::CharIntConverter.
enum Value : std::uint32_t {
    CategoryUnknown = 0,
    CategoryShare = 65,
    CategoryFuture = 70,
    CategoryIndex = 73,
    CategoryBond = 79,
    CategoryTracker = 84,
    CategoryWarrant = 87,
    CategoryOptionX = 88,
    CategoryOptionY = 89
};

/// CategoryUnknown for an empty code, the null text and any code that isn't known. More than four characters raise
/// std::length_error.
KALVENTO_API Value ToCategoyValue(std::string_view a_code);

/// Polish text for the user; empty for a number outside the table. Both kinds of options have the same text.
KALVENTO_API std::wstring ValueToLabel(Value a_value);

} // namespace AssetCategory
