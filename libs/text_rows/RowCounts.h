#pragma once

#include <cstdint>

namespace kalvento::rows {

/// What became of the lines of an input.
struct RowCounts {
    std::uint64_t rows = 0;    ///< Handed out.
    std::uint64_t bad = 0;     ///< Set aside, unreadable.
    std::uint64_t dropped = 0; ///< Left out for their time (EOrderDrop).
    /// Moved up past a later time before them (EOrderRaise); equal times don't count.
    std::uint64_t raised = 0;
    std::uint64_t firstRaised = 0; ///< The line (text, from 1) or row (block, from 0) of the first of them.
    std::uint64_t misplaced = 0;   ///< Put in their places by sorting.
    std::uint64_t firstMisplaced = 0; ///< The line of the first of them.
    /// Repeat the row before exactly, or any of the same time where rows are sorted or left out for that.
    std::uint64_t repeated = 0;
    std::uint64_t outside = 0; ///< Outside of `from` and `to`.

    /// Those of another input; the first lines stay.
    void Add(const RowCounts& a_other)
    {
        rows += a_other.rows;
        bad += a_other.bad;
        dropped += a_other.dropped;
        raised += a_other.raised;
        misplaced += a_other.misplaced;
        repeated += a_other.repeated;
        outside += a_other.outside;
    }
};

} // namespace kalvento::rows
