#include "text_rows/RowSorter.h"

#include "support/Testing.h"
#include "text_rows/RowBlock.h"

#include <random>

using namespace kalvento::rows;

TEST(RowSorterTest, RowsComeOutAsOneStableSortHasThemWhateverFitsIntoMemory)
{
    struct Row {
        std::int64_t second;
        std::int32_t nanoseconds;
        double value;
    };
    std::mt19937 random(7);
    std::vector<Row> rows;
    for (int row = 0; row < 5000; ++row)
        rows.push_back({static_cast<std::int64_t>(random() % 700) - 350,
                        static_cast<std::int32_t>(random() % 2), static_cast<double>(row)});
    std::vector<Row> sorted = rows;
    std::ranges::stable_sort(sorted, {},
                             [](const Row& a_row) { return std::pair(a_row.second, a_row.nanoseconds); });

    // One word and more of a record have 40 bytes: all in memory, some runs, more runs than are merged at once.
    for (const std::size_t bytes : {1000000U, 100000U, 400U}) {
        SCOPED_TRACE(bytes);
        RowSorter sorter(1, bytes);
        RowBlock block;
        block.Reserve(1, 1, false);
        for (std::size_t row = 0; row < rows.size(); ++row) {
            block.columns[0][0] = rows[row].value;
            sorter.Add({rows[row].second, rows[row].nanoseconds, 3, static_cast<std::int64_t>(row), row + 1},
                       block, 0);
        }
        RowSorter::Head head;
        for (const Row& row : sorted) {
            ASSERT_TRUE(sorter.Next(head, block, 0));
            ASSERT_EQ(block.columns[0][0], row.value);
            ASSERT_EQ(head.line, static_cast<std::uint64_t>(row.value) + 1);
            ASSERT_EQ(head.symbol, 3U);
        }
        EXPECT_FALSE(sorter.Next(head, block, 0));
    }
}
