#pragma once

#include <string>

/// Wide text under the platform's name. One wide character a code point; forms of 16-bit units convert at their boundary.
using CString = std::wstring;
