#pragma once

#include "platform/Export.h"

#include <string>
#include <string_view>

/// Short codes packed into a number: up to four characters, the first one in the highest byte in use.
namespace VeloTools::CharIntConverter {

/// 0 gives the empty code. A zero byte below the highest byte in use is a zero character of the code.
KALVENTO_API std::string ToString(unsigned int a_value);

/// More than four characters raise std::length_error. Characters are widened with their sign, so one from 0x80 up fills
/// the bytes above it; codes are ASCII, where that makes no difference and ToString is the inverse.
KALVENTO_API unsigned int ToInt(std::string_view a_code);

} // namespace VeloTools::CharIntConverter
