#pragma once

#include "platform/Export.h"

#include <filesystem>
#include <string>
#include <string_view>

/// Paths between wide text and the file system, whose names are bytes, by convention UTF-8. A byte that is not part of
/// valid UTF-8 stands in wide text as U+DC80 to U+DCFF, so that every file name survives the way there and back.
/// (The standard's own conversion of a wide path raises on such names.)
namespace WidePath {

KALVENTO_API std::filesystem::path ToPath(std::wstring_view a_path);
KALVENTO_API std::wstring ToWide(const std::filesystem::path& a_path);

} // namespace WidePath
