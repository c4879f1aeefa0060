#include "kalvento/RowFolding.h"

#include "folding/AggregatorTools.h"
#include "text_rows/IntervalNotation.h"
#include "text_rows/RowSeries.h"

namespace kalvento::tool {

PieceFolder FolderOf(const RowLayout& a_rows, IntervalAndMultiplicity a_candles, EAggrTimeResult a_stamp)
{
    const IntervalAndMultiplicity rows = a_rows.interval;
    if (!AggregatorTools::IsAggregationPossible(rows.GetInterval(), rows.GetMultiplicity(),
                                                a_candles.GetInterval(), a_candles.GetMultiplicity()))
        throw ToolError(EExitUsage, "rows of " + FormatInterval(rows) + " can't be folded into " +
                                        FormatInterval(a_candles) + "; expected --interval " +
                                        FormatInterval(rows) + " or longer");
    if (!PieceFolder::Reaches(rows, a_candles))
        throw ToolError(EExitUsage, "--interval: found " + FormatInterval(a_candles) +
                                        ", the folding goes up to 65535 of a unit");
    if (!PieceFolder::CanBear(a_candles, a_stamp))
        throw ToolError(EExitUsage,
                        a_candles.IsTick()
                            ? "--stamp: ticks have no window in time; expected first or last"
                            : "--stamp end: only candles shorter than a day bear the end of their window; "
                              "expected first, last, begin or border");
    return {PropertiesOf(a_rows), rows, a_candles, a_stamp,
            a_candles.IsSingleTick() ? PieceFolder::EPassSame : PieceFolder::EFoldSame};
}

RowLayout CandleLayout(const RowLayout& a_rows, IntervalAndMultiplicity a_candles,
                       const PieceFolder& a_folder)
{
    RowLayout layout;
    layout.series = a_folder.GetSeries();
    layout.interval = a_candles;
    layout.hasSymbols = a_rows.hasSymbols;
    layout.fractionDigits = a_candles.IsSingleTick() ? a_rows.fractionDigits : 0;
    return layout;
}

} // namespace kalvento::tool
