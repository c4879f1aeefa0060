#pragma once

#include "platform/Export.h"

#include <string>
#include <system_error>

namespace kalvento::internal {

/// What the operating system answered, in Polish and CP1250, for the log and the user: "brak miejsca na dysku". What has
/// no text here is named by its number. The system's own messages come in the language and the code page of the process.
KALVENTO_API std::string ErrorText(const std::error_code& a_error);

} // namespace kalvento::internal
