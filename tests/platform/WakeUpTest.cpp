#include "platform/WakeUp.h"
#include "platform/Descriptors.h"
#include "platform/Interruption.h"
#include "support/Testing.h"

#include <signal.h>
#include <sys/socket.h>

using namespace kalvento::internal;

namespace {

constexpr auto S_justLook = std::chrono::steady_clock::time_point::min();

bool IsReady(int a_fd)
{
    Descriptors::Awaited awaited{a_fd};
    return Descriptors::WaitForAny({&awaited, 1}, S_justLook);
}

} // namespace

TEST(WakeUpTest, StaysUpUntilItIsLowered)
{
    WakeUp wakeUp;
    EXPECT_FALSE(IsReady(wakeUp.GetFd()));
    EXPECT_FALSE(wakeUp.Lower());
    wakeUp.Raise();
    wakeUp.Raise();
    EXPECT_TRUE(IsReady(wakeUp.GetFd()));
    EXPECT_TRUE(IsReady(wakeUp.GetFd()));
    EXPECT_TRUE(wakeUp.Lower());
    EXPECT_FALSE(wakeUp.Lower());
    EXPECT_FALSE(IsReady(wakeUp.GetFd()));
}

TEST(WakeUpTest, WakesAThreadThatThenSeesWhatWasWritten)
{
    WakeUp ends[2];
    int word = 0; // no lock: the wake-ups alone order the two threads
    const auto takeTurns = [&](std::size_t a_end) {
        for (int turn = 0; turn < 100; ++turn) {
            Descriptors::Awaited awaited{ends[a_end].GetFd()};
            while (!ends[a_end].Lower())
                Descriptors::WaitForAny({&awaited, 1}, std::nullopt);
            EXPECT_EQ(word, 2 * turn + static_cast<int>(a_end));
            ++word;
            ends[1 - a_end].Raise();
        }
    };
    std::thread other([&] { takeTurns(1); });
    ends[0].Raise();
    takeTurns(0);
    other.join();
}

TEST(DescriptorsTest, TellsWhichAreReadyAndPassesOverNone)
{
    WakeUp up;
    const WakeUp down;
    up.Raise();
    std::array<int, 2> ends{};
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()), 0);
    const UniqueFd near(ends[0]);
    const UniqueFd far(ends[1]);

    std::array<Descriptors::Awaited, 5> awaited = {
        {{down.GetFd(), false, true}, {-1, false, true}, {up.GetFd()}, {near.Get()}, {near.Get(), true}}};
    EXPECT_TRUE(Descriptors::WaitForAny(awaited, std::nullopt));
    EXPECT_EQ(awaited[0].isReady, false);
    EXPECT_EQ(awaited[1].isReady, false);
    EXPECT_EQ(awaited[2].isReady, true);
    EXPECT_EQ(awaited[3].isReady, false);
    EXPECT_EQ(awaited[4].isReady, true);
    EXPECT_FALSE(Descriptors::WaitForAny(std::span(awaited).first(2),
                                         std::chrono::steady_clock::now() + std::chrono::milliseconds(1)));

    Descriptors::ShutDownSocket(near.Get());
    EXPECT_TRUE(IsReady(near.Get()));
    EXPECT_TRUE(IsReady(far.Get()));
}

TEST(InterruptionTest, SignalsArriveAtTheDescriptorOfTheirOwnTime)
{
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        SCOPED_TRACE(number);
        const Interruption interruption;
        EXPECT_FALSE(IsReady(interruption.GetFd())) << "what came to an earlier one is no news";
        EXPECT_NO_THROW(Interruption::Check());
        ::raise(number);
        {
            const Interruption inner;
            EXPECT_TRUE(IsReady(inner.GetFd())) << "it ends the work within, too";
        }
        EXPECT_TRUE(IsReady(interruption.GetFd()));
        EXPECT_EQ(Interruption::GetSignal(), number);
        EXPECT_THROW(Interruption::Check(), kalvento::internal::Interrupted);
    }
}

TEST(InterruptionTest, GivesTheHandlersBackAndLeavesAnIgnoredHangUpIgnored)
{
    const auto former = ::signal(SIGHUP, SIG_IGN);
    ::signal(SIGINT, SIG_IGN);
    {
        const Interruption interruption;
        ::raise(SIGHUP);
        EXPECT_FALSE(IsReady(interruption.GetFd()));
        ::raise(SIGINT);
        EXPECT_TRUE(IsReady(interruption.GetFd()));
    }
    EXPECT_EQ(::signal(SIGINT, SIG_DFL), SIG_IGN);
    EXPECT_EQ(::signal(SIGHUP, former), SIG_IGN);
}
