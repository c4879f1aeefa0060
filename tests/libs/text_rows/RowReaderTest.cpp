#include "text_rows/RowReader.h"

#include "series/ESeriesId.h"
#include "series/Offers.h"
#include "text_rows/ByteSource.h"
#include "time/DateTimeTools.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

using namespace kalvento::rows;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

/// Gives its text in small pieces, so that lines lie across the edges of reads.
class DripSource final : public ByteSource {
public:
    DripSource(std::string a_text, std::size_t a_piece)
        : ByteSource("drip", 0), m_text(std::move(a_text)), m_piece(a_piece)
    {}
    std::size_t Read(char* a_bytes, std::size_t a_size) override
    {
        const std::size_t count = std::min({a_size, m_piece, m_text.size() - m_place});
        std::memcpy(a_bytes, m_text.data() + m_place, count);
        m_place += count;
        return count;
    }
    void Grow(const std::string& a_text) { m_text += a_text; }

private:
    std::string m_text;
    std::size_t m_piece;
    std::size_t m_place = 0;
};

class RowReaderTest : public testing::Test {
protected:
    void Read(const std::string& a_text, std::size_t a_piece = 1000000)
    {
        DripSource source(a_text, a_piece);
        reader = std::make_unique<RowReader>(source, options);
        times.clear();
        columns.assign(reader->GetLayout().series.size(), {});
        symbols.clear();
        RowBlock block;
        while (reader->Read(block, 3)) {
            times.insert(times.end(), block.times.begin(),
                         block.times.begin() + static_cast<long>(block.rows));
            for (std::size_t column = 0; column < columns.size(); ++column)
                columns[column].insert(columns[column].end(), block.columns[column].begin(),
                                       block.columns[column].begin() + static_cast<long>(block.rows));
            for (std::size_t row = 0; reader->GetLayout().hasSymbols && row < block.rows; ++row)
                symbols.push_back(reader->GetSymbols()[block.symbols[row]]);
        }
        counts = reader->GetCounts();
    }
    std::string Refusal(const std::string& a_text, EFaultKind a_kind = EFaultData)
    {
        try {
            Read(a_text);
        } catch (const RowsFault& failure) {
            EXPECT_EQ(failure.GetParts().kind, a_kind) << failure.what();
            fault = failure.GetParts();
            return failure.what();
        }
        ADD_FAILURE() << "taken: " << a_text;
        return {};
    }
    void ExpectSameBits(std::size_t a_row, const NDateTime& a_expected) const
    {
        EXPECT_EQ(std::memcmp(static_cast<const void*>(&times[a_row]), static_cast<const void*>(&a_expected),
                              sizeof(NDateTime)),
                  0)
            << "row " << a_row;
    }

    ReadOptions options;
    RowsFault::Parts fault; // of the last refusal
    std::unique_ptr<RowReader> reader;
    std::vector<NDateTime> times;
    std::vector<std::vector<double>> columns;
    std::vector<std::string> symbols;
    RowCounts counts;
};

} // namespace

TEST_F(RowReaderTest, OneShapeInManySpellings)
{
    const std::vector<std::string> texts = {
        "time,price,volume\n2024-08-08 23:54:15.342,61837.63,0.02\n2024-08-08 23:54:16,61838,1\n",
        "\xEF\xBB\xBFtime,price,volume\r\n2024-08-08 23:54:15.342,61837.63,0.02\r\n\r\n2024-08-08 23:54:16,61838,1",
        "# export\nczas;kurs;wolumen\n2024-08-08T23:54:15;61837,63;0,02\n#\n2024-08-08T23:54:16;61838;1\n",
        "volume\tside\tprice\ttime\n0.02\tbuy\t61837.63\t1723161255342\n1\tsell\t61838\t1723161256000\n",
        "Date,Time,Last,Qty\n20240808,235415,61837.63,0.02\n20240808,235416,61838.0,1\n",
        "\"time\",\"price\",\"volume\"\n\"2024-08-08 23:54:15\",\"61837.63\",\"0.02\"\n2024-08-08 23:54:16, 61838 ,1\n",
        "time|note|price|volume\n2024-08-08 23:54:15|\"a|b\"|61837.63|2e-2\n2024-08-08 23:54:16||61838|1\n"};
    for (const std::string& text : texts) {
        SCOPED_TRACE(text);
        ASSERT_NO_THROW(Read(text));
        EXPECT_THAT(reader->GetLayout().series, ElementsAre(Price, Volume));
        EXPECT_THAT(columns[0], ElementsAre(61837.63, 61838.0));
        EXPECT_THAT(columns[1], ElementsAre(0.02, 1.0));
        ASSERT_EQ(times.size(), 2U);
        ExpectSameBits(0, NDateTime(2024, 8, 8, 23, 54, 15, 0));
        ExpectSameBits(1, NDateTime(2024, 8, 8, 23, 54, 16, 0));
    }
}

TEST_F(RowReaderTest, WhereReadsEndDoesNotMatter)
{
    std::string text = "time,price,volume,note\n";
    for (int row = 0; row < 200; ++row)
        text += "2024-08-08 10:" + std::to_string(10 + row / 60) + ":" + std::to_string(10 + row % 50) + "," +
                std::to_string(row) + ".25,1," + (row % 7 == 0 ? "\"q,q\"" : "x") +
                (row % 3 == 0 ? "\r\n" : "\n");
    Read(text);
    const auto whole = std::make_pair(times, columns);
    ASSERT_EQ(times.size(), 200U);
    for (const std::size_t piece : {1U, 2U, 3U, 7U, 31U, 64U, 1000U}) {
        SCOPED_TRACE(piece);
        Read(text, piece);
        EXPECT_EQ(times, whole.first);
        EXPECT_EQ(columns, whole.second);
    }
}

// Each form is read by a fast road or by a careful one, chosen row by row: quotes force the careful one.
TEST_F(RowReaderTest, BothRoadsReadTheSame)
{
    for (const char* row :
         {"1723161255,10,0", "1723161255342,0,0", "1723161255342001,-1.5,x", "1723161255342001002,.5,",
          "2024-08-08 23:54:15.1234567891,+1,x", "2024-08-08T23:54:15Z,1e2,x", "2024-08-08,1.,x"}) {
        SCOPED_TRACE(row);
        const std::string text = row;
        const std::size_t comma = text.find(',');
        Read("time,price,note\n" + text + "\n");
        const auto plain = std::make_pair(times, columns);
        Read("time,price,note\n\"" + text.substr(0, comma) + "\"" + text.substr(comma) + "\n");
        EXPECT_EQ(times, plain.first);
        EXPECT_EQ(columns, plain.second);
    }
    Read("date,time,price\n20240808,93000,1\n20240808,\"093001.5\",2\n2024-08-09,09:30Z,3\n");
    ExpectSameBits(0, NDateTime(2024, 8, 8, 9, 30, 0, 0));
    ExpectSameBits(1, NDateTime(2024, 8, 8, 9, 30, 1, 0));
    ExpectSameBits(2, NDateTime(2024, 8, 9, 9, 30, 0, 0));
}

TEST_F(RowReaderTest, RowsOfOneSecondRiseAsLiveRowsDo)
{
    Read("time,price\n2024-08-08 10:00:00.9,1\n2024-08-08 10:00:00.95,2\n2024-08-08 10:00:00.95,3\n"
         "2024-08-08 09:59:59,4\n2024-08-08 10:00:01,5\n");
    ASSERT_EQ(times.size(), 5U);
    NDateTime previous(2024, 8, 8, 10, 0, 0, 0);
    ExpectSameBits(0, previous);
    for (std::size_t row = 1; row < 4; ++row) {
        NDateTime next(2024, 8, 8, 10, 0, 0, 0);
        ASSERT_TRUE(DateTimeTools::ShiftTimeIfNeed(previous, next));
        ExpectSameBits(row, next);
        previous = next;
    }
    ExpectSameBits(4, NDateTime(2024, 8, 8, 10, 0, 1, 0));
    EXPECT_EQ(counts.raised, 1U);
    EXPECT_EQ(counts.firstRaised, 5U);
}

TEST_F(RowReaderTest, AVeryBusySecondStaysBeforeTheNext)
{
    std::string text = "time,price\n";
    for (int row = 0; row < 70000; ++row)
        text += "2024-08-08 10:00:00,1\n";
    Read(text + "2024-08-08 10:00:01,2\n");
    ASSERT_EQ(times.size(), 70001U);
    for (std::size_t row = 1; row < times.size(); ++row)
        ASSERT_FALSE(times[row] < times[row - 1]) << row;
    EXPECT_TRUE(times[69999] < times[70000]);
    EXPECT_FALSE(times[70000] < times[69999]);
    ExpectSameBits(70000, NDateTime(2024, 8, 8, 10, 0, 1, 0));
}

// A step of the counter would move a time of those days back, so that the row counted as late and was left out.
TEST_F(RowReaderTest, RowsBeforeTheFirstDayNumberStayInOrder)
{
    Read(
        "time,price\n1012-04-04 06:00:00,1\n1012-04-04 06:00:00,2\n1899-12-29 18:00:00,3\n1899-12-29 17:00:00,4\n"
        "1899-12-30,5\n1899-12-30,6\n");
    ASSERT_EQ(times.size(), 6U);
    for (std::size_t row = 1; row < times.size(); ++row)
        EXPECT_FALSE(times[row] < times[row - 1]) << row;
    EXPECT_TRUE(times[4] < times[5]);
}

TEST_F(RowReaderTest, OrderRules)
{
    const std::string text =
        "time,price\n2024-08-08 10:00:00.5,1\n2024-08-08 10:00:00.6,2\n2024-08-08 10:00:00.6,3\n"
        "2024-08-08 10:00:00.4,4\n2024-08-08 10:00:02,5\n";
    options.order = EOrderDrop;
    Read(text);
    EXPECT_THAT(columns[0], ElementsAre(1.0, 2.0, 5.0));
    EXPECT_EQ(counts.dropped, 2U);
    options.order = EOrderRefuse;
    EXPECT_THAT(Refusal(text), HasSubstr("drip:4:1: the time equals the one before"));
    EXPECT_THAT(Refusal("time,price\n2024-08-08,1\n2024-08-07,1\n"), HasSubstr("drip:3:1: the time falls"));
}

TEST_F(RowReaderTest, ZonesMoveWindowsAndRows)
{
    options.outputZone = "America/New_York";
    Read("time,price\n2011-03-11 14:30:00,1\n2011-03-14 13:30:00,2\n2011-03-14T09:30:30-04:00,3\n");
    ExpectSameBits(0, NDateTime(2011, 3, 11, 9, 30, 0, 0));
    ExpectSameBits(1, NDateTime(2011, 3, 14, 9, 30, 0, 0));
    ExpectSameBits(2, NDateTime(2011, 3, 14, 9, 30, 30, 0));
    options.zone = "Europe/Warsaw";
    options.outputZone = "UTC";
    options.from = options.to = "2024-08-07";
    Read(
        "time,price\n2024-08-07 01:59:59,1\n2024-08-07 02:00:00,2\n2024-08-08 01:59:59,3\n2024-08-08 02:00:00,4\n");
    EXPECT_THAT(columns[0], ElementsAre(2.0, 3.0));
    EXPECT_EQ(counts.outside, 2U);
    options.zone = "Europe/Atlantis";
    EXPECT_THAT(Refusal("time,price\n", EFaultOptions), HasSubstr("Europe/Warsaw or UTC"));
}

TEST_F(RowReaderTest, CandlesKnowTheirIntervalAndStamp)
{
    const std::string text = "time,open,high,low,close,volume\n2024-08-08 10:05:00,1,4,0.5,2,10\n"
                             "2024-08-08 10:15:00,2,2,2,2,1\n2024-08-08 10:20:00,2,2,2,2,1\n";
    Read(text);
    EXPECT_THAT(reader->GetLayout().series,
                ElementsAre(Price, Volume, IntervalOpen, IntervalMax, IntervalMin));
    EXPECT_TRUE(reader->GetLayout().interval.Equals(EIntervalMinute, 5));
    options.stampedWithEnd = true;
    Read(text);
    ExpectSameBits(0, NDateTime(2024, 8, 8, 10, 0, 0, 0));
    EXPECT_THAT(Refusal("time,open,high,low,close\n2024-08-08,1,1,1,1\n2024-08-09,1,1,1,1\n", EFaultOptions),
                HasSubstr("found 1d"));
    EXPECT_THAT(Refusal("time,price\n2024-08-08,1\n", EFaultOptions), HasSubstr("found tick"));
    EXPECT_EQ(fault.wrong, EOptionStampedWithEnd);
    options.stampedWithEnd = false;
    Read(
        "Data,Otwarcie,Najwyzszy,Najnizszy,Zamkniecie,Wolumen\n2024-08-08,1,4,0.5,2,10\n2024-08-09,1,4,0.5,2,10\n");
    EXPECT_THAT(reader->GetLayout().series,
                ElementsAre(Price, Volume, IntervalOpen, IntervalMax, IntervalMin));
    EXPECT_TRUE(reader->GetLayout().interval.Equals(EIntervalDay, 1));
}

TEST_F(RowReaderTest, SymbolsHaveTheirOwnOrder)
{
    options.symbolColumn = "sym";
    Read("time,sym,price\n2024-08-08 10:00:00,A,1\n2024-08-08 09:00:00,B,2\n2024-08-08 10:00:00,\"A\",3\n"
         "2024-08-08 09:00:01,B,4\n");
    EXPECT_THAT(symbols, ElementsAre("A", "B", "A", "B"));
    ExpectSameBits(1, NDateTime(2024, 8, 8, 9, 0, 0, 0));
    EXPECT_EQ(times[2].GetMilliSec(), 1U);
    EXPECT_EQ(counts.raised, 0U);
}

TEST_F(RowReaderTest, ColumnsByNameAndByPlace)
{
    options.columns = {{"time", "When"}, {"price", "Px"}};
    Read("When,Px,close\n2024-08-08,1,9\n");
    EXPECT_THAT(columns[0], ElementsAre(1.0));
    options.columns = {{"time", "2"}, {"kurs", "1"}};
    options.header = false;
    Read("1;2024-08-08\n1,5;2024-08-09\n");
    EXPECT_THAT(columns[0], ElementsAre(1.0, 1.5));
    options.columns = {{"time", "3"}, {"price", "1"}};
    EXPECT_THAT(Refusal("1;2024-08-08\n", EFaultOptions), HasSubstr("a place from 1 to 2"));
    options.columns = {{"nonsense", "1"}};
    EXPECT_THAT(Refusal("1;2024-08-08\n", EFaultOptions), HasSubstr("accepted are time, date"));
}

TEST_F(RowReaderTest, RefusalsNameThePlaceAndWhatWouldBeTaken)
{
    const std::vector<std::pair<std::string, std::string>> table = {
        {"", "expected a header line"},
        {"a,b\n", "no column of times"},
        {"time,x\n", "no column of prices"},
        {"time,open,price\n", "open, high, low and close"},
        {"time,price,last\n", "two columns mean price"},
        {"time,price\n2024-08-08 10:00,abc\n",
         "drip:2:18: found \"abc\" in column \"price\", expected a number"},
        {"time,price\n2024-08-08 10:00,\n", "drip:2:18: found \"\""},
        {"time,price\n\n#\n2024-02-30,1\n",
         "drip:4:1: found \"2024-02-30\" in column \"time\", expected a time"},
        {"time,price\n2024-08-08\n", "drip:2:11: found 1 columns, expected at least 2"},
        {"time,price\n2024-08-08,\"1\n", "drip:2:12: a quote is left open"},
        {"time,price\n2024-08-08,1e999\n", "found \"1e999\""},
        {"time,price\n2024-08-08,\x01\n", "found \"\\x01\""},
        {std::string("\0\0\0\0", 4), "zero byte"}};
    for (const auto& [text, expected] : table) {
        SCOPED_TRACE(text);
        EXPECT_THAT(Refusal(text), HasSubstr(expected));
    }
    options.strict = true;
    EXPECT_THAT(Refusal("time,price,side\n"), HasSubstr("columns that mean nothing: side"));
    EXPECT_EQ(fault.help, EOptionStrict);
}

TEST_F(RowReaderTest, ABookGoesByTheFirstOfItsColumns)
{
    options.pricesFrom = Offers::Series;
    Read("time,price,kupi,sprzedaj\n2024-08-08,9,1,2\n");
    EXPECT_EQ(reader->GetLayout().priceMeans, Bid1);
    EXPECT_THAT(columns[0], ElementsAre(1.0));
}

TEST_F(RowReaderTest, BadLinesAreSetAsideAndTheRestIsWhole)
{
    options.badLines = EBadLinesReject;
    Read("time,price,volume\n2024-08-08,1,1\nrubbish\n2024-08-09,x,1\n2024-08-10,3,\n2024-08-11,4,1\n");
    EXPECT_THAT(columns[0], ElementsAre(1.0, 4.0));
    EXPECT_EQ(counts.bad, 3U);
    EXPECT_EQ(counts.rows, 2U);
}

TEST_F(RowReaderTest, AGrowingSourceGoesOnWhereItStopped)
{
    options.growing = true;
    DripSource source("time,price\n2024-08-08 10:00:00,1\n2024-08-08 10:00:", 1000);
    RowReader following(source, options);
    RowBlock block;
    ASSERT_TRUE(following.Read(block, 10));
    EXPECT_EQ(block.rows, 1U);
    EXPECT_FALSE(following.Read(block, 10));
    source.Grow("01,2\n");
    ASSERT_TRUE(following.Read(block, 10));
    ASSERT_EQ(block.rows, 1U);
    EXPECT_EQ(block.columns[0][0], 2.0);
    EXPECT_EQ(block.times[0].GetSecond(), 1U);
}
