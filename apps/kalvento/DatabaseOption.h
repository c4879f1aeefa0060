#pragma once

#include "sql_store/SqlAddress.h"

#include <string>

namespace kalvento::tool {

/// The value of --database. Raises ToolError (EExitUsage) for what can't be read and for what holds a password; nothing of
/// the text is repeated.
SqlAddress DatabaseOption(const std::string& a_text);

} // namespace kalvento::tool
