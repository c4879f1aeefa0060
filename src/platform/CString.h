#pragma once

#include <string>

/// Wide text under the platform's name. One wide character is one code point; forms of 16-bit units convert at their
/// boundary.
using CString = std::wstring;
