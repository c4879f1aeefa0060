#pragma once

#include "kalvento/ToolContext.h"
#include "text_rows/ReadOptions.h"

#include <string>

namespace kalvento::tool {

/// What the command line says about an input of rows.
struct InputOptions : ReadOptions {
    std::string rejectFile; ///< Where lines go that were set aside; empty: nowhere.
};

} // namespace kalvento::tool
