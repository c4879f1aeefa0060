#include "text_rows/CandleFolder.h"

#include "aggregation/Aggregator.h"
#include "series/ESeriesId.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <utility>
#include <vector>

using namespace kalvento::tool;

namespace {

struct Case {
    IntervalAndMultiplicity output;
    EAggrTimeResult stamp;
};

class CandleFolderTest : public testing::Test {
protected:
    // Ticks of some weeks around the turn of a year, with gaps, crowded seconds and values whose sums depend on order.
    void MakeTicks(std::size_t a_rows)
    {
        std::mt19937_64 random(5);
        layout = {{Price, Volume, Turnover, TradesCount},
                  {EAggrTypeOhlc, EAggrTypeSum, EAggrTypeSum, EAggrTypeLast},
                  {EIntervalTick, 1},
                  false};
        rows.Reserve(a_rows, 4, false);
        NDateTime time(2023, 12, 20, 22, 0, 0, 0);
        for (rows.rows = 0; rows.rows < a_rows; ++rows.rows) {
            if (random() % 3 == 0)
                time.ShiftMilliSec();
            else
                time = Later(time, random() % 500 == 0 ? 70000 : static_cast<int>(1 + random() % 900));
            rows.times[rows.rows] = time;
            rows.columns[0][rows.rows] = 100.0 + static_cast<double>(random() % 1000) / 7.0;
            rows.columns[1][rows.rows] = static_cast<double>(random() % 100000) / 1000.0 + 0.1;
            rows.columns[2][rows.rows] = rows.columns[0][rows.rows] * rows.columns[1][rows.rows];
            rows.columns[3][rows.rows] = static_cast<double>(rows.rows);
        }
    }
    static NDateTime Later(NDateTime a_time, int a_seconds)
    {
        a_time.ShiftSec(a_seconds);
        return NDateTime(a_time.GetYear(), a_time.GetMonth(), a_time.GetDay(), a_time.GetHour(),
                         a_time.GetMinute(), a_time.GetSecond(), 0);
    }

    RowBlock FoldInPieces(const Case& a_case, std::size_t a_piece) const
    {
        CandleFolder folder(layout, a_case.output, a_case.stamp);
        RowBlock piece;
        RowBlock candles;
        RowBlock all;
        all.columns.resize(folder.GetLayout().series.size());
        std::size_t kept = 0;
        const auto take = [&] {
            all.times.insert(all.times.end(), candles.times.begin(),
                             candles.times.begin() + static_cast<long>(candles.rows));
            for (std::size_t column = 0; candles.rows > 0 && column < all.columns.size(); ++column)
                all.columns[column].insert(all.columns[column].end(), candles.columns[column].begin(),
                                           candles.columns[column].begin() + static_cast<long>(candles.rows));
            all.rows += candles.rows;
        };
        for (std::size_t begin = 0; begin < rows.rows; begin += a_piece) {
            const std::size_t count = std::min(a_piece, rows.rows - begin);
            piece.Reserve(kept + count, rows.columns.size(), false);
            std::copy_n(rows.times.begin() + static_cast<long>(begin), count,
                        piece.times.begin() + static_cast<long>(kept));
            for (std::size_t column = 0; column < rows.columns.size(); ++column)
                std::copy_n(rows.columns[column].begin() + static_cast<long>(begin), count,
                            piece.columns[column].begin() + static_cast<long>(kept));
            piece.rows = kept + count;
            kept = folder.Fold(piece, false, candles);
            take();
        }
        piece.rows = kept;
        folder.Fold(piece, true, candles);
        take();
        return all;
    }

    // The engine over all rows at once, with the stamp asked for.
    RowBlock FoldAtOnce(const Case& a_case) const
    {
        std::vector<NDateTime> times(rows.times.begin(), rows.times.begin() + static_cast<long>(rows.rows));
        std::vector<std::vector<double>> columns(3, std::vector<double>(rows.rows));
        columns.insert(columns.end(), rows.columns.begin(), rows.columns.end());
        std::vector<double*> fields;
        fields.reserve(columns.size());
        for (auto& column : columns)
            fields.push_back(column.data());
        Aggregator aggregator(a_case.output.GetInterval(),
                              static_cast<unsigned short>(a_case.output.GetMultiplicity()), a_case.stamp,
                              layout.folds);
        const auto count = aggregator.Aggregate(EIntervalTick, 1, static_cast<unsigned int>(rows.rows),
                                                times.data(), fields);
        RowBlock result;
        result.rows = count;
        result.times = times;
        // Price, volume, open, high, low, turnover, trades: the order of series.
        for (const std::size_t place : {3U, 4U, 0U, 1U, 2U, 5U, 6U})
            result.columns.push_back(columns[place]);
        return result;
    }

    static void ExpectSame(const RowBlock& a_found, const RowBlock& a_expected)
    {
        ASSERT_EQ(a_found.rows, a_expected.rows);
        ASSERT_EQ(a_found.columns.size(), a_expected.columns.size());
        for (std::size_t row = 0; row < a_found.rows; ++row) {
            ASSERT_EQ(std::memcmp(static_cast<const void*>(&a_found.times[row]),
                                  static_cast<const void*>(&a_expected.times[row]), sizeof(NDateTime)),
                      0)
                << row;
            for (std::size_t column = 0; column < a_found.columns.size(); ++column)
                ASSERT_EQ(a_found.columns[column][row], a_expected.columns[column][row])
                    << row << ' ' << column;
        }
    }

    RowLayout layout;
    RowBlock rows;
};

} // namespace

TEST_F(CandleFolderTest, PiecesGiveTheCandlesOfTheWhole)
{
    MakeTicks(6000);
    const std::vector<IntervalAndMultiplicity> intervals = {
        {EIntervalTick, 7},  {EIntervalTick, 1000}, {EIntervalSecond, 30}, {EIntervalMinute, 7},
        {EIntervalHour, 5},  {EIntervalDay, 1},     {EIntervalDay, 7},     {EIntervalWeek, 1},
        {EIntervalMonth, 1}, {EIntervalYear, 1}};
    for (const IntervalAndMultiplicity interval : intervals) {
        for (const EAggrTimeResult stamp :
             {EFirstRecordTime, ELastRecordTime, EWindowBegin, EMetaStockWindowEnd, EWindowBorder}) {
            if ((interval.IsTick() && stamp > ELastRecordTime) ||
                (interval.IsEod() && stamp == EMetaStockWindowEnd))
                continue;
            const RowBlock expected = FoldAtOnce({interval, stamp});
            for (const std::size_t piece : {1U, 2U, 13U, 997U, 6000U}) {
                SCOPED_TRACE("interval " + std::to_string(interval.GetInterval()) + " x " +
                             std::to_string(interval.GetMultiplicity()) + " stamp " + std::to_string(stamp) +
                             " piece " + std::to_string(piece));
                ExpectSame(FoldInPieces({interval, stamp}, piece), expected);
            }
        }
    }
}

TEST_F(CandleFolderTest, RefusesWhatCannotBeFolded)
{
    layout = {{Price, IntervalOpen, IntervalMax, IntervalMin},
              {EAggrTypeOhlc, EAggrTypeLast, EAggrTypeLast, EAggrTypeLast},
              {EIntervalMinute, 5},
              false};
    const std::vector<std::pair<Case, std::string>> table = {
        {{{EIntervalMinute, 1}, EWindowBegin}, "5min or longer"},
        {{{EIntervalTick, 5}, ELastRecordTime}, "5min or longer"},
        {{{EIntervalDay, 1}, EMetaStockWindowEnd}, "--stamp end"},
        {{{EIntervalYear, 70000}, EWindowBegin}, "65535"}};
    for (const auto& [fold, expected] : table) {
        SCOPED_TRACE(expected);
        try {
            CandleFolder folder(layout, fold.output, fold.stamp);
            ADD_FAILURE() << "taken";
        } catch (const ToolError& failure) {
            EXPECT_EQ(failure.GetExitCode(), EExitUsage);
            EXPECT_NE(std::string(failure.what()).find(expected), std::string::npos) << failure.what();
        }
    }
    layout = {{Price}, {EAggrTypeOhlc}, {EIntervalTick, 1}, false};
    EXPECT_THROW(CandleFolder(layout, {EIntervalTick, 5}, EWindowBegin), ToolError);
}
