#include "platform/StandardStreams.h"

#include "platform/OutputBuffer.h"
#include "platform/UniqueFd.h"
#include "support/Testing.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

using namespace kalvento::internal;

namespace {

/// Puts another file in the place of a standard stream as long as it lives.
class Stand {
public:
    Stand(int a_stream, int a_file) : m_stream(a_stream), m_old(::dup(a_stream)) { ::dup2(a_file, a_stream); }
    ~Stand() { ::dup2(m_old.Get(), m_stream); }
    Stand(const Stand&) = delete;
    Stand& operator=(const Stand&) = delete;

private:
    const int m_stream;
    const UniqueFd m_old;
};

} // namespace

TEST(StandardStreamsTest, KnowATerminalAndItsSize)
{
    const UniqueFd host(::posix_openpt(O_RDWR | O_NOCTTY));
    if (!host.IsOpen() || ::grantpt(host.Get()) != 0 || ::unlockpt(host.Get()) != 0)
        GTEST_SKIP() << "this system gives no terminals";
    const UniqueFd terminal(::open(::ptsname(host.Get()), O_RDWR | O_NOCTTY));
    ASSERT_TRUE(terminal.IsOpen());
    const Stand output(StandardStreams::EOutput, terminal.Get());
    EXPECT_TRUE(StandardStreams::IsTerminal(StandardStreams::EOutput));
    EXPECT_EQ(StandardStreams::GetTerminalSize(), std::nullopt) << "nobody has told it yet";
    const winsize size{50, 132, 0, 0};
    ASSERT_EQ(::ioctl(host.Get(), TIOCSWINSZ, &size), 0);
    EXPECT_EQ(StandardStreams::GetTerminalSize(), std::pair(132, 50));
}

TEST(StandardStreamsTest, KnowAPipeAndWhetherItHolds)
{
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe(ends.data()), 0);
    const UniqueFd reader(ends[0]);
    UniqueFd writer(ends[1]);
    const Stand input(StandardStreams::EInput, reader.Get());
    const Stand output(StandardStreams::EOutput, writer.Get());
    EXPECT_FALSE(StandardStreams::IsTerminal(StandardStreams::EInput));
    EXPECT_EQ(StandardStreams::GetTerminalSize(), std::nullopt);
    EXPECT_FALSE(StandardStreams::HasInput());
    ASSERT_EQ(::write(writer.Get(), "x", 1), 1);
    EXPECT_TRUE(StandardStreams::HasInput());
}

// What was written first arrives, the reason of the first failure stays, and nothing comes after a gap.
TEST(OutputBufferTest, TellsAFullDiskFromAReaderThatWent)
{
    StandardStreams::LetWritesFail();
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe2(ends.data(), O_NONBLOCK | O_CLOEXEC), 0);
    UniqueFd reader(ends[0]);
    const UniqueFd writer(ends[1]);
    const UniqueFd full(::open("/dev/full", O_WRONLY));
    OutputBuffer toPipe(writer.Get(), false);
    OutputBuffer toFull(full.Get(), true);
    std::ostream piped(&toPipe);
    std::ostream refused(&toFull);
    EXPECT_TRUE(piped << "first" << std::flush);
    std::array<char, 8> bytes{};
    EXPECT_EQ(::read(reader.Get(), bytes.data(), bytes.size()), 5);
    EXPECT_EQ(OutputBuffer::ErrorOf(piped), std::error_code());
    reader.Close();
    EXPECT_FALSE(piped << std::string(200000, 'x') << std::flush);
    EXPECT_EQ(OutputBuffer::ErrorOf(piped), std::errc::broken_pipe);
    EXPECT_FALSE(refused << "x" << std::flush);
    EXPECT_EQ(OutputBuffer::ErrorOf(refused), std::errc::no_space_on_device);
    EXPECT_EQ(OutputBuffer::ErrorOf(std::ostringstream()), std::error_code());
}
