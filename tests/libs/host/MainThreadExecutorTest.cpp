#include "host/MainThreadExecutor.h"

#include "support/Testing.h"

#include <poll.h>

namespace kalvento::host {
namespace {

bool IsReadable(int a_fd)
{
    pollfd event{a_fd, POLLIN, 0};
    return ::poll(&event, 1, 0) == 1;
}

TEST(MainThreadExecutorTest, EachThreadsFunctionsComeInTheirOrder)
{
    constexpr int threads = 3;
    constexpr int each = 500;
    MainThreadExecutor executor;
    std::vector<std::pair<int, int>> came;
    std::vector<std::thread> posting;
    posting.reserve(threads);
    for (int number = 0; number < threads; ++number)
        posting.emplace_back([&, number] {
            for (int turn = 0; turn < each; ++turn)
                executor.Post([&, number, turn] { came.emplace_back(number, turn); });
        });
    EXPECT_TRUE(executor.RunUntil([&] { return came.size() == std::size_t{threads} * each; }));
    for (auto& thread : posting)
        thread.join();

    std::array<int, threads> next{};
    for (const auto& [number, turn] : came)
        ASSERT_EQ(turn, next[static_cast<std::size_t>(number)]++) << "thread " << number;
    EXPECT_FALSE(IsReadable(executor.GetFd()));
}

TEST(MainThreadExecutorTest, DescriptorIsReadableExactlyWhileSomethingWaits)
{
    MainThreadExecutor executor;
    EXPECT_FALSE(IsReadable(executor.GetFd()));
    int calls = 0;
    executor.Post([&] {
        executor.Post([&] { ++calls; });
        throw std::runtime_error("logged, and no reason to leave the next one out");
    });
    executor.Post([&] { ++calls; });
    EXPECT_TRUE(IsReadable(executor.GetFd()));
    executor.RunPending();
    EXPECT_EQ(calls, 1);
    EXPECT_TRUE(IsReadable(executor.GetFd())) << "what was posted meanwhile waits for the next turn";
    executor.RunPending();
    EXPECT_EQ(calls, 2);
    EXPECT_FALSE(IsReadable(executor.GetFd()));
}

TEST(MainThreadExecutorTest, ANestedLoopKeepsTheOrder)
{
    MainThreadExecutor executor;
    std::vector<int> came;
    executor.Post([&] {
        executor.Post([&] { came.push_back(3); });
        came.push_back(1);
        executor.RunPending();
    });
    executor.Post([&] { came.push_back(2); });
    executor.RunPending();
    EXPECT_EQ(came, (std::vector{1, 2, 3}));
}

TEST(MainThreadExecutorTest, CloseDestroysWhatWaitsAndWhatComes)
{
    MainThreadExecutor executor;
    const auto owned = std::make_shared<int>(0);
    executor.Post([owned] { ++*owned; });
    executor.Close();
    EXPECT_FALSE(IsReadable(executor.GetFd()));
    executor.Post([owned] { ++*owned; });
    executor.RunPending();
    EXPECT_EQ(*owned, 0);
    EXPECT_EQ(owned.use_count(), 1);
    EXPECT_FALSE(executor.RunUntil([] { return false; })) << "nothing can come any more";
}

TEST(MainThreadExecutorTest, AWorkerGetsItsAnswerFromTheMainThread)
{
    MainThreadExecutor executor;
    const auto main = std::this_thread::get_id();
    std::atomic<bool> isOver = false;
    std::thread worker([&] {
        EXPECT_EQ(executor.CallAndWait([&] { return std::this_thread::get_id() == main; }), true);
        EXPECT_EQ(executor.CallAndWait([]() -> int { throw std::runtime_error("no answer"); }), std::nullopt);
        isOver = true;
        executor.Post([] {});
    });
    EXPECT_TRUE(executor.RunUntil([&] { return isOver.load(); }));
    worker.join();
    EXPECT_EQ(executor.CallAndWait([] { return 5; }), 5)
        << "here at once: waiting for oneself would be for ever";
}

// The main thread joins the worker without serving it: the shutdown of every module with a thread.
TEST(MainThreadExecutorTest, ShutdownFreesAWaitingWorker)
{
    for (const bool close : {false, true}) {
        SCOPED_TRACE(close ? "Close" : "EndWaiting");
        MainThreadExecutor executor;
        bool isCalled = false;
        std::thread worker([&] {
            EXPECT_EQ(executor.CallAndWait([&] { return isCalled = true; }), std::nullopt);
            EXPECT_EQ(executor.CallAndWait([&] { return isCalled = true; }), std::nullopt) << "nor later";
        });
        while (!close && !IsReadable(executor.GetFd()))
            std::this_thread::yield();
        close ? executor.Close() : executor.EndWaiting();
        worker.join();
        executor.RunPending();
        EXPECT_FALSE(isCalled) << "the caller's stack has gone";
    }
}

} // namespace
} // namespace kalvento::host
