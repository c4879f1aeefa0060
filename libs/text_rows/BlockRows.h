#pragma once

#include "series/DataSeriesSet.h"
#include "text_rows/RowLayout.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace kalvento::rows {

class ByteSource;
struct RowBlock;
struct RowCounts;

/// The rows of a binary series block, which is read whole.
class BlockRows {
public:
    /// Whether bytes begin like a series block.
    static bool Recognise(std::string_view a_start);

    /// a_start: bytes of the source that were read already. Raises RowsFault (EFaultData) for a damaged block and for
    /// one without prices.
    BlockRows(std::string_view a_start, ByteSource& a_source);

    /// Interval and series; the folds are still to be planned.
    RowLayout GetLayout() const;
    /// As RowReader::Read. a_from, a_to: as RowOrder has them.
    bool Read(RowBlock& a_block, std::size_t a_limit, std::size_t a_keep,
              const std::optional<std::int64_t>& a_from, const std::optional<std::int64_t>& a_to,
              RowCounts& a_counts);

private:
    DataSeriesSet m_rows = DataSeriesSet(EIntervalTick, 1);
    std::size_t m_next = 0;
};

} // namespace kalvento::rows
