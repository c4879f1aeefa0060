#include "velo/Process.h"

#include "platform/ChildProcess.h"
#include "platform/WidePath.h"
#include "support/TemporaryFolder.h"
#include "support/Testing.h"
#include "support/Threads.h"

#include <sys/wait.h>

#include <cerrno>

namespace {

using kalvento::internal::ChildProcess;
using namespace VeloTools;

constexpr std::chrono::seconds S_patience(60);

std::ptrdiff_t CountOpenFiles()
{
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

void ExpectNoChildren()
{
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

// The arguments that a program was given, one a line, through a file that it writes.
std::string ArgumentsGiven(const std::wstring& a_arguments)
{
    const TemporaryFolder folder;
    const auto pipe = folder / "pipe";
    if (::mkfifo(pipe.c_str(), 0600) != 0)
        return "no pipe";
    const std::wstring script = L"-c \"for a in \\\"$@\\\"; do printf '%s\\n' \\\"$a\\\"; done > " +
                                WidePath::ToWide(pipe) + L"\" sh " + a_arguments;
    const auto process = Process::OpenProcess(L"sh", script);
    if (process.GetProcessHandle() == nullptr)
        return "not started";
    std::ifstream file(pipe); // opens once the program writes, ends once it does
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace

TEST(ProcessTest, ArgumentsAreSplitAsQuoted)
{
    const std::vector<std::pair<std::wstring, std::string>> cases = {
        {L"  a \t b  ", "a\nb\n"},
        {L"\"a b\" c", "a b\nc\n"},
        {L"a\"b c\"d", "ab cd\n"},
        {L"\"\" x", "\nx\n"},
        {L"\"a\\\\\" b", "a\\\nb\n"},
        {L"\"a\\\\\\\"b\"", "a\\\"b\n"},
        {L"trailing\\", "trailing\\\n"},
        {L"\"unclosed x", "unclosed x\n"},
        {L"zażółć \xDCB3", "za\xC5\xBC\xC3\xB3\xC5\x82\xC4\x87\n\xB3\n"},
        {L"$HOME *", "$HOME\n*\n"},
    };
    for (const auto& [arguments, given] : cases) {
        SCOPED_TRACE(WidePath::ToPath(arguments));
        EXPECT_EQ(ArgumentsGiven(arguments), given);
    }
}

TEST(ProcessTest, FailureGivesNullHandlesAndLeavesNothing)
{
    const auto before = CountOpenFiles();
    for (const std::wstring_view program :
         {L"/no/such/program", L"no-such-program-anywhere", L"", L"/", L"/etc/passwd"}) {
        SCOPED_TRACE(WidePath::ToPath(program));
        const auto process = Process::OpenProcess(program, L"a b");
        EXPECT_EQ(process.GetProcessHandle(), nullptr);
        EXPECT_EQ(process.GetThreadHandle(), nullptr);
        Process::CloseProcess(process);
    }
    EXPECT_EQ(CountOpenFiles(), before);
    ExpectNoChildren();
}

TEST(ProcessTest, CloseProcessEndsWhatTheResultHolds)
{
    const TemporaryFolder folder;
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    const auto before = CountOpenFiles();
    {
        // The end of the pipe tells that the program is gone.
        auto started = Process::OpenProcess(L"sh", L"-c \"exec sleep 1000 > " +
                                                       WidePath::ToWide(folder / "pipe") + L"\"");
        ASSERT_NE(started.GetProcessHandle(), nullptr);
        ASSERT_NE(started.GetThreadHandle(), nullptr);
        std::ifstream pipe(folder / "pipe");
        const Process::OpenProcessResult moved = std::move(started);
        Process::CloseProcess(moved);
        EXPECT_EQ(pipe.get(), std::ifstream::traits_type::eof());
        Process::CloseProcess(moved);
    }
    EXPECT_EQ(CountOpenFiles(), before);
    ExpectNoChildren();
}

TEST(ProcessTest, CloseHandlesLetsTheProgramRun)
{
    const TemporaryFolder folder;
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    auto process =
        Process::OpenProcess(L"sh", L"-c \"read line < " + WidePath::ToWide(folder / "pipe") +
                                        L"; echo $line > " + WidePath::ToWide(folder / "pipe") + L"\"");
    process.CloseHandles();
    EXPECT_EQ(process.GetProcessHandle(), nullptr);
    Process::CloseProcess(process);
    std::ofstream(folder / "pipe") << "alive\n";
    std::string line;
    std::ifstream(folder / "pipe") >> line;
    EXPECT_EQ(line, "alive");
}

TEST(ChildProcessTest, ForcesWhatDoesNotListen)
{
    const TemporaryFolder folder;
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    const auto deaf =
        ChildProcess::Start("sh", {"-c", "trap '' TERM; echo ready > " + (folder / "pipe").string() +
                                             "; while :; do sleep 0.01; done"});
    ASSERT_TRUE(deaf);
    std::string line;
    std::ifstream(folder / "pipe") >> line;
    EXPECT_TRUE(deaf->End(std::chrono::milliseconds(50)));
    EXPECT_TRUE(deaf->Wait(S_patience));
}

TEST(ChildProcessTest, StartsFromManyThreadsAtOnce)
{
    const auto before = CountOpenFiles();
    RunOnThreads(6, [] {
        for (int count = 0; count < 10; ++count) {
            const auto process = ChildProcess::Start("true", {});
            ASSERT_TRUE(process);
            EXPECT_TRUE(process->Wait(S_patience));
        }
    });
    EXPECT_EQ(CountOpenFiles(), before);
    ExpectNoChildren();
}
