#pragma once

#include "kalvento/OutputTarget.h"
#include "series/DataSeriesSet.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace kalvento::tool {

/// A binary series block as it was read, good or not.
struct BlockFile {
    std::string name;
    DataSeriesSet set{EIntervalEmpty, 0};
    std::uint64_t size = 0;    ///< Bytes of the input.
    std::uint64_t surplus = 0; ///< Bytes after the block's end.
    bool endsEarly = false;    ///< The input ended inside the block; what was missing reads as zero.

    /// Where the time of a row (from 0) lies in the file, in bytes from its start.
    std::uint64_t TimePlace(std::size_t a_row) const;
};

/// Whether a file begins like a block. "-" and what can't be read don't.
bool IsBlockFile(const std::string& a_path);

/// Reads a block from a file or, for "-", from the context's input. A block that ends early is read as far as it goes.
/// Raises ToolError: EExitNoInput for what can't be opened, EExitBadData for what isn't a block of version 1.
BlockFile ReadBlockFile(const std::string& a_path, ToolContext& a_context);

/// Writes a block to a target, which is then to be committed by its owner.
void WriteBlock(const DataSeriesSet& a_set, OutputTarget& a_target);

/// The first time that isn't valid or is earlier than the one before, as "row 17 (byte 1234): ..." with rows from 1;
/// empty when there is none.
std::optional<std::string> FindBadTime(const BlockFile& a_block);

} // namespace kalvento::tool
