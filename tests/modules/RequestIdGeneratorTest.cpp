#include "modules/RequestIdGenerator.h"

#include "support/Testing.h"

TEST(RequestIdGeneratorTest, OnlyTheLastNumberComesBack)
{
    RequestIdGenerator generator;
    generator.GiveBackRequestId(0);
    EXPECT_EQ(generator.GetNextRequestId(), 1U);
    EXPECT_EQ(generator.GetNextRequestId(), 2U);
    EXPECT_EQ(generator.GetNextRequestId(), 3U);
    generator.GiveBackRequestId(2);
    EXPECT_EQ(generator.GetNextRequestId(), 4U);
    generator.GiveBackRequestId(4);
    generator.GiveBackRequestId(4);
    EXPECT_EQ(generator.GetNextRequestId(), 4U);
    generator.GiveBackRequestId(5);
    EXPECT_EQ(generator.GetNextRequestId(), 5U);
}

TEST(RequestIdGeneratorTest, KnownNumbersAreNeverGivenOutAgain)
{
    RequestIdGenerator generator;
    generator.ValidateNewRequestId(10);
    EXPECT_EQ(generator.GetNextRequestId(), 11U);
    generator.ValidateNewRequestId(5);
    EXPECT_EQ(generator.GetNextRequestId(), 12U);
    generator.ResetRequestId();
    EXPECT_EQ(generator.GetNextRequestId(), 1U);
}

// Several threads at once: no number twice, none left out, whatever they give each other to know.
TEST(RequestIdGeneratorTest, ThreadsNeverShareANumber)
{
    constexpr unsigned int threadCount = 4;
    constexpr unsigned int perThread = 5000;
    RequestIdGenerator generator;
    std::vector<std::vector<unsigned int>> given(threadCount);
    std::vector<std::thread> threads;
    threads.reserve(threadCount);
    for (auto& mine : given)
        threads.emplace_back([&generator, &mine] {
            for (unsigned int count = 0; count < perThread; ++count) {
                mine.push_back(generator.GetNextRequestId());
                generator.ValidateNewRequestId(mine.front());
            }
        });
    for (auto& thread : threads)
        thread.join();

    std::vector<unsigned int> all;
    for (const auto& mine : given) {
        EXPECT_TRUE(std::is_sorted(mine.begin(), mine.end()));
        all.insert(all.end(), mine.begin(), mine.end());
    }
    std::sort(all.begin(), all.end());
    std::vector<unsigned int> expected(std::size_t{threadCount} * perThread);
    std::iota(expected.begin(), expected.end(), 1U);
    EXPECT_EQ(all, expected);
}

// Numbers that are given back are used again, but never while another holds them.
TEST(RequestIdGeneratorTest, ANumberHasOneHolderAtATime)
{
    constexpr unsigned int perThread = 5000;
    RequestIdGenerator generator;
    std::vector<std::atomic<int>> holders(4 * perThread + 1);
    std::atomic<int> clashes = 0;
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int thread = 0; thread < 4; ++thread)
        threads.emplace_back([&] {
            for (unsigned int count = 0; count < perThread; ++count) {
                const unsigned int number = generator.GetNextRequestId();
                if (holders.at(number)++ != 0)
                    ++clashes;
                --holders.at(number);
                generator.GiveBackRequestId(number);
            }
        });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(clashes, 0);
}
