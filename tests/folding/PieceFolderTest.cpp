#include "folding/PieceFolder.h"

#include "folding/AggregatorWrapper.h"
#include "folding/FoldingTestTools.h"
#include "time/KalventoException.h"

using namespace kalvento::tests;

namespace {

// Two sums that depend on the order of their rows, and one series whose last value stays.
const std::set<DSProp> S_series = {DSProp(Price), DSProp(Volume),
                                   DSProp(Turnover, EAggrTypeSum, L"Obrót", EPrecisionNone),
                                   DSProp(TradesCount, EAggrTypeLast, L"Transakcje", EPrecisionNone)};

std::set<DSProp> CandleSeries()
{
    std::set<DSProp> series = S_series;
    series.insert({DSProp(IntervalOpen), DSProp(IntervalMax), DSProp(IntervalMin)});
    return series;
}

History Ticks(std::size_t a_rows)
{
    return HistoryOf(RandomTicks(a_rows, 5, {Turnover, TradesCount}));
}

ColumnBlock BlockOf(const History& a_rows)
{
    ColumnBlock block;
    block.rows = a_rows.GetRecordsCount();
    block.times = a_rows.TimeSeries();
    for (const auto& [series, values] : a_rows)
        block.columns.push_back(values);
    return block;
}

void ExpectSame(const ColumnBlock& a_found, const History& a_expected)
{
    History::Columns columns;
    auto values = a_found.columns.begin();
    for (const auto& [series, expected] : a_expected)
        columns.emplace_back(series, *values++);
    const IntervalAndMultiplicity interval = a_expected.GetIntervalData();
    const History all(interval.GetInterval(), interval.GetMultiplicity(), std::vector(a_found.times),
                      std::move(columns));
    EXPECT_TRUE(SameBits(Slice<History>(all, 0, a_found.rows), a_expected));
}

/// Both faces of a folder, fed with pieces of at most a_longest rows.
void ExpectSameInPieces(const History& a_rows, PieceFolder a_folder, const History& a_expected,
                        std::size_t a_longest)
{
    PieceFolder histories = a_folder;
    ColumnBlock rows;
    ColumnBlock candles;
    ColumnBlock byBlocks;
    ColumnBlock byHistories;
    std::mt19937 random(static_cast<unsigned int>(a_longest));
    const auto add = [&](History&& a_part) {
        byHistories.Append(BlockOf(a_part), 0, a_part.GetRecordsCount());
    };
    for (std::size_t row = 0; row < a_rows.GetRecordsCount();) {
        const std::size_t end = std::min(row + random() % (a_longest + 1), a_rows.GetRecordsCount());
        auto piece = Slice<History>(a_rows, row, end);
        rows.Append(BlockOf(piece), 0, end - row);
        rows.rows = a_folder.Fold(rows, false, candles);
        byBlocks.Append(candles, 0, candles.rows);
        add(histories.Add(std::move(piece)));
        row = end;
    }
    a_folder.Fold(rows, true, candles);
    byBlocks.Append(candles, 0, candles.rows);
    add(histories.Finish());
    ExpectSame(byBlocks, a_expected);
    ExpectSame(byHistories, a_expected);
}

} // namespace

TEST(PieceFolderTest, PiecesGiveTheCandlesOfTheWhole)
{
    const History ticks = Ticks(1500);
    const History byTwoMinutes = Folded(ticks, S_series, {EIntervalMinute, 2});
    for (const IntervalAndMultiplicity interval : S_candleIntervals)
        for (const EAggrTimeResult stamp :
             {EFirstRecordTime, ELastRecordTime, EWindowBegin, EMetaStockWindowEnd, EWindowBorder})
            for (const History* rows : {&ticks, &byTwoMinutes}) {
                if (!PieceFolder::Reaches(rows->GetIntervalData(), interval) ||
                    !PieceFolder::CanBear(interval, stamp))
                    continue;
                const History expected = Folded(*rows, S_series, interval, stamp);
                const PieceFolder folder(rows == &ticks ? S_series : CandleSeries(), rows->GetIntervalData(),
                                         interval, stamp);
                for (const std::size_t longest : {2U, 97U, 1500U}) {
                    SCOPED_TRACE(testing::Message() << Shown(interval) << ", stamp " << stamp << ", candles "
                                                    << (rows != &ticks) << ", pieces of " << longest);
                    ExpectSameInPieces(*rows, folder, expected, longest);
                }
                // The wrapper's candles are the same, but bear the time of their last row whatever it is told.
                History wrapped = *rows;
                EXPECT_TRUE(AggregatorWrapper(S_series, stamp, interval.GetInterval(),
                                              static_cast<unsigned short>(interval.GetMultiplicity()))
                                .AgregateHistory(wrapped));
                wrapped.SetNewTimes(expected.TimeSeries());
                EXPECT_TRUE(SameBits(wrapped, expected)) << Shown(interval) << ", stamp " << stamp;
            }
}

TEST(PieceFolderTest, RefusesWhatCannotBeFolded)
{
    const IntervalAndMultiplicity fiveMinutes(EIntervalMinute, 5);
    const std::tuple<IntervalAndMultiplicity, EAggrTimeResult, bool> table[] = {
        {{EIntervalMinute, 1}, EWindowBegin, false},
        {{EIntervalTick, 9}, ELastRecordTime, false},
        {{EIntervalWeek, 0}, ELastRecordTime, false},
        {{EIntervalYear, 70000}, EWindowBegin, false},
        {{EIntervalDay, 1}, EMetaStockWindowEnd, true}};
    for (const auto& [candles, stamp, reaches] : table) {
        EXPECT_EQ(PieceFolder::Reaches(fiveMinutes, candles), reaches);
        EXPECT_THROW(PieceFolder(CandleSeries(), fiveMinutes, candles, stamp), KalventoException);
    }
    EXPECT_THROW(PieceFolder(S_series, {EIntervalTick, 1}, {EIntervalTick, 5}, EWindowBegin),
                 KalventoException);
    EXPECT_THROW(PieceFolder({DSProp(Volume)}, {EIntervalTick, 1}, fiveMinutes), KalventoException);

    PieceFolder folder(CandleSeries(), fiveMinutes, {EIntervalHour, 1});
    EXPECT_THROW(folder.Add(Ticks(3)), std::invalid_argument) << "no open, high and low";
    EXPECT_TRUE(folder.Finish().IsEmpty());
}

TEST(PieceFolderTest, RowsOfTheIntervalGoThroughWhereAskedTo)
{
    // Two in one minute, which a fold would put together.
    History minutes = Folded(Ticks(200), S_series, {EIntervalSecond, 10});
    minutes =
        History(EIntervalMinute, 1, std::vector(minutes.TimeSeries()), {minutes.begin(), minutes.end()});
    PieceFolder folder(CandleSeries(), {EIntervalMinute, 1}, {EIntervalMinute, 1}, EWindowBegin,
                       PieceFolder::EPassSame);
    EXPECT_TRUE(SameBits(folder.Add(History(minutes)), minutes));
    EXPECT_TRUE(folder.Finish().IsEmpty());
    ColumnBlock rows = BlockOf(minutes);
    ColumnBlock candles;
    EXPECT_EQ(folder.Fold(rows, false, candles), 0U);
    ExpectSame(candles, minutes);
}
