#pragma once

#include "aggregation/EAggrTimeResult.h"
#include "folding/PieceFolder.h"
#include "kalvento/ToolContext.h"
#include "text_rows/RowLayout.h"
#include "time/IntervalAndMultiplicity.h"

namespace kalvento::tool {

/// Folds rows of that layout; single ticks asked for as single ticks go through. Raises ToolError (EExitUsage) for an
/// interval that the rows can't be folded into, and for a time that its candles can't bear.
PieceFolder FolderOf(const RowLayout& a_rows, IntervalAndMultiplicity a_candles, EAggrTimeResult a_stamp);

/// The shape of what comes out of it.
RowLayout CandleLayout(const RowLayout& a_rows, IntervalAndMultiplicity a_candles,
                       const PieceFolder& a_folder);

} // namespace kalvento::tool
