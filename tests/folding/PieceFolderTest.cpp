#include "folding/PieceFolder.h"

#include "series/SeriesTestTools.h"
#include "support/Testing.h"
#include "time/KalventoException.h"

using namespace kalvento::tests;

namespace {

std::set<DSProp> TickSeries()
{
    return {DSProp(Price), DSProp(Volume), DSProp(Turnover, EAggrTypeSum, L"Obrót", EPrecisionNone),
            DSProp(TradesCount, EAggrTypeLast, L"Transakcje", EPrecisionNone)};
}

std::set<DSProp> CandleSeries()
{
    std::set<DSProp> series = TickSeries();
    series.insert({DSProp(IntervalOpen), DSProp(IntervalMax), DSProp(IntervalMin)});
    return series;
}

// Ticks of some weeks around the turn of a year, with gaps, crowded seconds and sums that depend on the order.
History Ticks(std::size_t a_rows)
{
    std::mt19937_64 random(5);
    std::vector<NDateTime> times;
    History::Columns columns = {{Price, {}}, {Volume, {}}, {Turnover, {}}, {TradesCount, {}}};
    NDateTime time(2023, 12, 20, 22, 0, 0, 0);
    for (std::size_t row = 0; row < a_rows; ++row) {
        if (random() % 3 == 0) {
            time.ShiftMilliSec();
        } else {
            time.ShiftSec(random() % 500 == 0 ? 70000 : static_cast<int>(1 + random() % 900));
            time = NDateTime(time.GetYear(), time.GetMonth(), time.GetDay(), time.GetHour(), time.GetMinute(),
                             time.GetSecond(), 0);
        }
        times.push_back(time);
        columns[0].second.push_back(100.0 + static_cast<double>(random() % 1000) / 7.0);
        columns[1].second.push_back(static_cast<double>(random() % 100000) / 1000.0 + 0.1);
        columns[2].second.push_back(columns[0].second.back() * columns[1].second.back());
        columns[3].second.push_back(static_cast<double>(row));
    }
    return {EIntervalTick, 1, std::move(times), std::move(columns)};
}

// The engine over all rows at once.
History FoldAtOnce(const History& a_rows, IntervalAndMultiplicity a_candles, EAggrTimeResult a_stamp)
{
    History rows = a_rows;
    const IntervalAndMultiplicity interval = rows.GetIntervalData();
    if (interval.IsSingleTick())
        rows.AddAggregationSeries();
    std::vector<NDateTime> times = std::as_const(rows).TimeSeries();
    std::vector<double*> fields;
    for (const ESeriesId series :
         {IntervalOpen, IntervalMax, IntervalMin, Price, Volume, Turnover, TradesCount})
        fields.push_back(rows.find(series)->second.data());
    Aggregator engine(a_candles.GetInterval(), static_cast<unsigned short>(a_candles.GetMultiplicity()),
                      a_stamp, {EAggrTypeOhlc, EAggrTypeSum, EAggrTypeSum, EAggrTypeLast});
    const auto count =
        engine.Aggregate(interval.GetInterval(), static_cast<unsigned short>(interval.GetMultiplicity()),
                         static_cast<unsigned int>(times.size()), times.data(), fields);
    times.resize(count);
    History::Columns columns(rows.begin(), rows.end());
    for (auto& column : columns)
        column.second.resize(count);
    return {a_candles.GetInterval(), a_candles.GetMultiplicity(), std::move(times), std::move(columns)};
}

History Slice(const History& a_rows, std::size_t a_first, std::size_t a_last)
{
    const auto cut = [&](const auto& a_values) {
        return std::vector(a_values.begin() + static_cast<std::ptrdiff_t>(a_first),
                           a_values.begin() + static_cast<std::ptrdiff_t>(a_last));
    };
    History::Columns columns;
    for (const auto& [series, values] : a_rows)
        columns.emplace_back(series, cut(values));
    const IntervalAndMultiplicity interval = a_rows.GetIntervalData();
    return {interval.GetInterval(), interval.GetMultiplicity(), cut(a_rows.TimeSeries()), std::move(columns)};
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
    EXPECT_TRUE(SameBits(Slice(all, 0, a_found.rows), a_expected));
}

/// Both faces of a folder, fed with pieces of at most a_longest rows.
void ExpectSameInPieces(const History& a_rows, IntervalAndMultiplicity a_candles, EAggrTimeResult a_stamp,
                        std::size_t a_longest)
{
    const bool ticks = a_rows.GetIntervalData().IsSingleTick();
    const PieceFolder made(ticks ? TickSeries() : CandleSeries(), a_rows.GetIntervalData(), a_candles,
                           a_stamp);
    PieceFolder blocks = made;
    PieceFolder histories = made;
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
        History piece = Slice(a_rows, row, end);
        rows.Append(BlockOf(piece), 0, end - row);
        rows.rows = blocks.Fold(rows, false, candles);
        byBlocks.Append(candles, 0, candles.rows);
        add(histories.Add(std::move(piece)));
        row = end;
    }
    blocks.Fold(rows, true, candles);
    byBlocks.Append(candles, 0, candles.rows);
    add(histories.Finish());

    const History expected = FoldAtOnce(a_rows, a_candles, a_stamp);
    ExpectSame(byBlocks, expected);
    ExpectSame(byHistories, expected);
}

} // namespace

TEST(PieceFolderTest, PiecesGiveTheCandlesOfTheWhole)
{
    const History ticks = Ticks(1500);
    const History byTwoMinutes = FoldAtOnce(ticks, {EIntervalMinute, 2}, ELastRecordTime);
    for (const IntervalAndMultiplicity interval :
         {IntervalAndMultiplicity(EIntervalTick, 1), IntervalAndMultiplicity(EIntervalTick, 7),
          IntervalAndMultiplicity(EIntervalTick, 1000), IntervalAndMultiplicity(EIntervalSecond, 30),
          IntervalAndMultiplicity(EIntervalMinute, 2), IntervalAndMultiplicity(EIntervalMinute, 7),
          IntervalAndMultiplicity(EIntervalHour, 5), IntervalAndMultiplicity(EIntervalDay, 1),
          IntervalAndMultiplicity(EIntervalDay, 7), IntervalAndMultiplicity(EIntervalWeek, 1),
          IntervalAndMultiplicity(EIntervalMonth, 1), IntervalAndMultiplicity(EIntervalYear, 1)})
        for (const EAggrTimeResult stamp :
             {EFirstRecordTime, ELastRecordTime, EWindowBegin, EMetaStockWindowEnd, EWindowBorder})
            for (const History* rows : {&ticks, &byTwoMinutes})
                for (const std::size_t longest : {2U, 97U, 1500U}) {
                    if (!PieceFolder::Reaches(rows->GetIntervalData(), interval) ||
                        !PieceFolder::CanBear(interval, stamp))
                        continue;
                    SCOPED_TRACE(testing::Message()
                                 << interval.GetInterval() << " x " << interval.GetMultiplicity()
                                 << ", stamp " << stamp << ", candles " << (rows != &ticks) << ", pieces of "
                                 << longest);
                    ExpectSameInPieces(*rows, interval, stamp, longest);
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
    EXPECT_THROW(PieceFolder(TickSeries(), {EIntervalTick, 1}, {EIntervalTick, 5}, EWindowBegin),
                 KalventoException);
    EXPECT_THROW(PieceFolder({DSProp(Volume)}, {EIntervalTick, 1}, fiveMinutes), KalventoException);

    PieceFolder folder(CandleSeries(), fiveMinutes, {EIntervalHour, 1});
    EXPECT_THROW(folder.Add(Ticks(3)), std::invalid_argument) << "no open, high and low";
    EXPECT_TRUE(folder.Finish().IsEmpty());
}

TEST(PieceFolderTest, RowsOfTheIntervalGoThroughWhereAskedTo)
{
    // Two in one minute, which a fold would put together.
    History minutes = FoldAtOnce(Ticks(200), {EIntervalSecond, 10}, ELastRecordTime);
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
