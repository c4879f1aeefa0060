#pragma once

#include "text_rows/RowBlock.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <unordered_set>
#include <vector>

namespace kalvento::rows {

/// Finds rows that repeat another one of the same symbol and time in every value. They come in the order of their times
/// within each symbol; only the rows of one time are remembered.
class RepeatFinder {
public:
    bool IsRepeat(std::uint32_t a_symbol, std::int64_t a_seconds, std::int32_t a_nanoseconds,
                  const RowBlock& a_block, std::size_t a_row, std::size_t a_columns)
    {
        if (a_symbol >= m_groups.size())
            m_groups.resize(a_symbol + 1);
        Group& group = m_groups[a_symbol];
        if (group.seconds != a_seconds || group.nanoseconds != a_nanoseconds) {
            group.seconds = a_seconds;
            group.nanoseconds = a_nanoseconds;
            group.rows.clear();
        }
        return !group.rows.insert(HashOf(a_block, a_row, a_columns)).second;
    }

private:
    struct Group {
        std::int64_t seconds = std::numeric_limits<std::int64_t>::min();
        std::int32_t nanoseconds = 0;
        std::unordered_set<std::uint64_t> rows;
    };

    static std::uint64_t HashOf(const RowBlock& a_block, std::size_t a_row, std::size_t a_columns)
    {
        std::uint64_t hash = a_columns;
        for (std::size_t column = 0; column < a_columns; ++column) {
            hash =
                (hash ^ std::bit_cast<std::uint64_t>(a_block.columns[column][a_row])) * 0x9E3779B97F4A7C15U;
            hash ^= hash >> 32U;
        }
        return hash;
    }

    std::vector<Group> m_groups; // by symbol
};

} // namespace kalvento::rows
