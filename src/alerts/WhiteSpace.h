#pragma once

#include <string_view>

namespace kalvento::internal {

/// No character but the six of white space in ASCII, as in the "C" locale; true for an empty text.
inline bool IsWhiteSpaceOnly(std::string_view a_text)
{
    return a_text.find_first_not_of(" \t\n\v\f\r") == std::string_view::npos;
}

} // namespace kalvento::internal
