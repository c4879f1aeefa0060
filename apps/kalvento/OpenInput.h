#pragma once

#include "kalvento/ToolContext.h"
#include "text_rows/ByteSource.h"
#include "text_rows/GrowingSource.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace kalvento::tool {

/// Rows that are read at once: they lie in the second cache of a core until they are worked on.
inline constexpr std::size_t S_blockRows = 8192;

// A path, or "-" for the context's input, which then outlives the source. They raise RowsFault; a read of
// OpenInput's raises Interrupted after a signal.

std::unique_ptr<ByteSource> OpenInput(const std::string& a_path, ToolContext& a_context);
std::unique_ptr<GrowingSource> OpenGrowingInput(const std::string& a_path, ToolContext& a_context);

/// Several inputs of one run, to be opened one after the other by OpenInput: they may be more than a process may have
/// open.
struct Inputs {
    std::vector<std::string> paths;
    std::uint64_t size = 0; ///< Bytes of all; 0 where the size of one isn't known.
};
/// Raises RowsFault for a path that can't be opened. A file given twice is told; a_dropRepeated: and left out.
Inputs FindInputs(const std::vector<std::string>& a_paths, bool a_dropRepeated, ToolContext& a_context);

} // namespace kalvento::tool
