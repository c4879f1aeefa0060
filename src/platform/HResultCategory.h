#pragma once

#include "platform/Export.h"

#include <cstdint>
#include <system_error>

/// Failures that carry a platform result number: std::system_error with the number as the code's value, cast to int.
namespace HResult {

inline constexpr std::uint32_t S_fail = 0x80004005;       ///< E_FAIL: unspecified failure.
inline constexpr std::uint32_t S_invalidArg = 0x80070057; ///< E_INVALIDARG: an argument is out of range.

/// The category of such codes, one for the process.
KALVENTO_API const std::error_category& Category();

/// a_result: one of the numbers above, or any other such number.
inline std::error_code MakeCode(std::uint32_t a_result)
{
    return {static_cast<int>(a_result), Category()};
}

} // namespace HResult
