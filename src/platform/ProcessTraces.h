#pragma once

#include "platform/Export.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <utility>

/// What code that was run has left behind in this process.
namespace kalvento::internal::ProcessTraces {

/// The threads there are now, at least 1.
KALVENTO_API std::size_t CountThreads();

/// What each open descriptor leads to: the numbers of device and file.
using OpenFiles = std::map<int, std::pair<std::uint64_t, std::uint64_t>>;
KALVENTO_API OpenFiles GetOpenFiles();

} // namespace kalvento::internal::ProcessTraces
