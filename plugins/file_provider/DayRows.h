#pragma once

#include "file_provider/RowCache.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <vector>

namespace kalvento::files {

/// Rows of one instrument (or of its book) on the day that is played: up to which row they are there after each second.
class DayRows {
public:
    DayRows() = default;
    /// Reads the day's rows, and raises as RowCache does.
    DayRows(RowCache& a_cache, std::size_t a_symbol, std::int64_t a_day);

    /// The first second after that one at which there are more; empty where there is none.
    std::optional<std::int64_t> NextAfter(std::int64_t a_second) const;
    /// Those of the days before are there from the beginning.
    std::uint64_t RowsAt(std::int64_t a_second) const;
    void AddSeconds(std::set<std::int64_t>& a_seconds) const;

private:
    struct Step {
        std::int64_t second;
        std::uint64_t rowsThen;
    };
    std::vector<Step>::const_iterator Later(std::int64_t a_second) const;

    std::uint64_t m_before = 0;
    std::vector<Step> m_steps;
};

} // namespace kalvento::files
