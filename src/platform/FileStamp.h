#pragma once

#include "platform/Export.h"

#include <filesystem>
#include <optional>
#include <string>

namespace kalvento::internal {

/// What tells a file from itself before a change: a text that is another one once the file was written, replaced or moved
/// here. Empty where the name leads to no regular file.
KALVENTO_API std::optional<std::string> FileStamp(const std::filesystem::path& a_path);

} // namespace kalvento::internal
