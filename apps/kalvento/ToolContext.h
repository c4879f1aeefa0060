#pragma once

#include "text_rows/ToolContext.h"

namespace kalvento::tool {

using namespace kalvento::rows;

} // namespace kalvento::tool
