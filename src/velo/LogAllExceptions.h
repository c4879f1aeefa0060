#pragma once

#include "platform/Export.h"

#include <string_view>

/// Logs the exception in flight, of whatever type, with the given source and line, and does not rethrow. To be called
/// only inside a catch-all handler. Outside any handler it logs that there is no exception. Never throws.
KALVENTO_API void LogAllExceptions(std::string_view a_source, int a_line) noexcept;
