#include "text_rows/RowReader.h"

#include "series/Offers.h"
#include "support/Testing.h"
#include "text_rows/ByteSource.h"
#include "time/DateTimeTools.h"

using namespace kalvento::rows;

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
        RowBlock block;
        while (reader->Read(block, 3)) {
            times.insert(times.end(), block.times.begin(),
                         block.times.begin() + static_cast<long>(block.rows));
            for (std::size_t column = 0; column < columns.size(); ++column)
                columns[column].insert(columns[column].end(), block.columns[column].begin(),
                                       block.columns[column].begin() + static_cast<long>(block.rows));
        }
        counts = reader->GetCounts();
    }
    void ExpectSameBits(std::size_t a_row, const NDateTime& a_expected) const
    {
        EXPECT_EQ(std::memcmp(static_cast<const void*>(&times[a_row]), static_cast<const void*>(&a_expected),
                              sizeof(NDateTime)),
                  0)
            << "row " << a_row;
    }

    ReadOptions options;
    std::unique_ptr<RowReader> reader;
    std::vector<NDateTime> times;
    std::vector<std::vector<double>> columns;
    RowCounts counts;
};

} // namespace

TEST_F(RowReaderTest, WhereReadsEndDoesNotMatter)
{
    options.order = EOrderRaise; // many of the rows are late
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

TEST_F(RowReaderTest, ABookGoesByTheFirstOfItsColumns)
{
    options.pricesFrom = Offers::Series;
    Read("time,price,kupi,sprzedaj\n2024-08-08,9,1,2\n");
    EXPECT_EQ(reader->GetLayout().priceMeans, Bid1);
    EXPECT_EQ(columns[0], std::vector{1.0});
    EXPECT_THROW(Read(std::string("\0\0\0\0", 4)), RowsFault);
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

TEST_F(RowReaderTest, TheNewestFirstComesOutAsTheOldestFirst)
{
    std::string forward;
    std::string backward;
    for (int row = 0; row < 3000; ++row) {
        const std::string line = "2024-08-" + std::to_string(10 + row / 300) + " 10:00:0" +
                                 std::to_string(row / 50 % 6) + "," + std::to_string(row) + "\n";
        forward += line;
        backward.insert(0, line);
    }
    Read("time,price\n" + forward);
    const auto expected = std::make_pair(times, columns);
    Read("time,price\n" + backward);
    EXPECT_EQ(times, expected.first);
    EXPECT_EQ(columns, expected.second);
    EXPECT_EQ(counts.misplaced, 0U);
}

// A few late rows are usual; an input of another order is none that was asked for.
TEST_F(RowReaderTest, AboveOneLateRowInAThousandTheInputIsRefused)
{
    const auto textOf = [](int a_rows, int a_late) {
        std::string text = "time,price\n2024-08-08 10:00:00,1\n2024-08-08 12:00:00,1\n";
        for (int row = 2; row < a_rows; ++row)
            text += row < 2 + a_late ? "2024-08-08 11:00:00,1\n" : "2024-08-08 12:00:01,1\n";
        return text;
    };
    EXPECT_NO_THROW(Read(textOf(10, 3)));
    EXPECT_EQ(counts.raised, 3U);
    EXPECT_THROW(Read(textOf(10, 4)), RowsFault);
    EXPECT_NO_THROW(Read(textOf(5000, 5)));
    EXPECT_THROW(Read(textOf(5000, 6)), RowsFault);
    options.order = EOrderRaise;
    EXPECT_NO_THROW(Read(textOf(10, 6)));
}
