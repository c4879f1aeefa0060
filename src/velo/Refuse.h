#pragma once

#include "velo/Log.h"

#include <string_view>

namespace kalvento::internal {

/// Writes a line to the log, as Log::Write. Always false, for operations that tell their failure by it.
inline bool Refuse(std::string_view a_place, int a_line, std::string_view a_message)
{
    VeloTools::Log::Instance().Write(a_place, a_line, a_message);
    return false;
}

} // namespace kalvento::internal
