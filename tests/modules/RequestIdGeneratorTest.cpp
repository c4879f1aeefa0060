#include "modules/RequestIdGenerator.h"

#include "support/Testing.h"
#include "support/Threads.h"

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

// Numbers that are given back are used again, but never while another holds them, whatever threads give each other to
// know.
TEST(RequestIdGeneratorTest, ANumberHasOneHolderAtATime)
{
    constexpr unsigned int perThread = 5000;
    RequestIdGenerator generator;
    std::vector<std::atomic<int>> holders(4 * perThread + 1);
    std::atomic<int> clashes = 0;
    RunOnThreads(4, [&] {
        for (unsigned int count = 0; count < perThread; ++count) {
            const unsigned int number = generator.GetNextRequestId();
            if (holders.at(number)++ != 0)
                ++clashes;
            generator.ValidateNewRequestId(number);
            if (count % 2 == 0)
                continue; // kept for good
            --holders.at(number);
            generator.GiveBackRequestId(number);
        }
    });
    EXPECT_EQ(clashes, 0);
}
