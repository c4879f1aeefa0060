#pragma once

#include "text_rows/RowsFault.h"
#include "time/NDateTime.h"

#include <cstdint>
#include <memory>

namespace kalvento::rows {

/// What became of one line of a text that holds a row.
struct LineFate {
    enum EFate : std::uint8_t {
        EFateTaken,   ///< Handed out; told apart by the ordering counter from one before it of the same time.
        EFateRaised,  ///< Handed out with a later time than its own (EOrderRaise).
        EFateDropped, ///< Left out for its time (EOrderDrop).
        EFateOutside, ///< Outside of `from` and `to`.
        EFateBad      ///< Set aside: it can't be read, or its time can't be taken.
    };
    EFate fate = EFateTaken;
    std::uint64_t line = 0;   ///< From 1.
    std::uint32_t symbol = 0; ///< Place in RowReader::GetSymbols; meaningless for bad lines.
    NDateTime written;        ///< The line's own time in the zone of the output; zero for bad lines.
    std::shared_ptr<const RowsFault::Parts> fault; ///< Of bad lines, without the place; else null.
};

} // namespace kalvento::rows
