#include "platform/RunProgram.h"

#include "platform/Descriptors.h"
#include "platform/SystemCall.h"
#include "platform/UniqueFd.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <optional>
#include <utility>

extern char** environ;

namespace kalvento::internal {

namespace {

constexpr int S_firstFree = 10; // above those that the program gets
constexpr std::chrono::milliseconds S_round(100);

// Out of the way of the numbers that the program's descriptors get.
UniqueFd MoveUp(UniqueFd a_fd)
{
    return UniqueFd(a_fd.IsOpen() ? ::fcntl(a_fd.Get(), F_DUPFD_CLOEXEC, S_firstFree) : -1);
}

// A file in memory: whoever reads it late or never holds nobody up.
UniqueFd FileOf(std::string_view a_bytes)
{
    UniqueFd file = MoveUp(UniqueFd(::memfd_create("kalvento", MFD_CLOEXEC)));
    while (file.IsOpen() && !a_bytes.empty()) {
        const auto written = Retry([&] { return ::write(file.Get(), a_bytes.data(), a_bytes.size()); });
        if (written < 0)
            return {};
        a_bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    if (file.IsOpen() && ::lseek(file.Get(), 0, SEEK_SET) != 0)
        return {};
    return file;
}

// What the started program finds: its streams, a session of its own, and no signal that ours ignores or blocks.
class Start {
public:
    Start()
    {
        ::posix_spawn_file_actions_init(&m_actions);
        ::posix_spawnattr_init(&m_attributes);
    }
    Start(const Start&) = delete;
    Start& operator=(const Start&) = delete;
    ~Start()
    {
        ::posix_spawn_file_actions_destroy(&m_actions);
        ::posix_spawnattr_destroy(&m_attributes);
    }

    int Spawn(const std::filesystem::path& a_program, int a_input, int a_answer, pid_t& a_process)
    {
        sigset_t all;
        sigset_t none;
        ::sigfillset(&all);
        ::sigemptyset(&none);
        ::posix_spawnattr_setsigdefault(&m_attributes, &all);
        ::posix_spawnattr_setsigmask(&m_attributes, &none);
        ::posix_spawnattr_setflags(&m_attributes,
                                   POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
        ::posix_spawn_file_actions_adddup2(&m_actions, a_input, STDIN_FILENO);
        ::posix_spawn_file_actions_addopen(&m_actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        ::posix_spawn_file_actions_addopen(&m_actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        ::posix_spawn_file_actions_adddup2(&m_actions, a_answer, S_answerFd);
        ::posix_spawn_file_actions_addclosefrom_np(&m_actions, S_answerFd + 1);
        std::string program = a_program.native();
        std::array<char*, 2> arguments = {program.data(), nullptr};
        return ::posix_spawn(&a_process, program.c_str(), &m_actions, &m_attributes, arguments.data(),
                             environ);
    }

private:
    posix_spawn_file_actions_t m_actions{};
    posix_spawnattr_t m_attributes{};
};

// Whether it has ended by then. A process without a handle (an old kernel) is asked from time to time.
bool AwaitEnd(const UniqueFd& a_process, std::chrono::milliseconds a_patience,
              const std::function<bool()>& a_mayGoOn)
{
    const auto deadline = std::chrono::steady_clock::now() + a_patience;
    for (auto now = std::chrono::steady_clock::now(); now < deadline && a_mayGoOn();
         now = std::chrono::steady_clock::now()) {
        Descriptors::Awaited end{a_process.Get()};
        if (Descriptors::WaitForAny({&end, 1}, std::min(deadline, now + S_round)))
            return true;
    }
    return false;
}

// What has come; a process that the program has left behind may hold the other end for ever.
std::string ReadWaiting(int a_fd)
{
    std::string bytes(S_mostAnswer, '\0');
    std::size_t filled = 0;
    while (filled < bytes.size()) {
        const auto count = Retry([&] { return ::read(a_fd, bytes.data() + filled, bytes.size() - filled); });
        if (count <= 0)
            break;
        filled += static_cast<std::size_t>(count);
    }
    bytes.resize(filled);
    return bytes;
}

} // namespace

ProgramEnd RunProgram(const std::filesystem::path& a_program, std::string_view a_input,
                      std::chrono::milliseconds a_patience, const std::function<bool()>& a_mayGoOn)
{
    const UniqueFd input = FileOf(a_input);
    std::array<int, 2> ends = {-1, -1};
    const bool isPiped = ::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) == 0;
    const UniqueFd reader = MoveUp(UniqueFd(ends[0]));
    UniqueFd writer = MoveUp(UniqueFd(ends[1]));
    if (!input.IsOpen() || !isPiped || !reader.IsOpen() || !writer.IsOpen())
        return {ProgramEnd::ENotStarted, errno, {}};

    pid_t process = -1;
    const int error = Start().Spawn(a_program, input.Get(), writer.Get(), process);
    if (error != 0)
        return {ProgramEnd::ENotStarted, error, {}};
    writer.Close();
    // By number: the C library's header of this call declares no C linkage.
    const UniqueFd handle(static_cast<int>(::syscall(SYS_pidfd_open, process, 0)));
    const bool isInTime = handle.IsOpen() && AwaitEnd(handle, a_patience, a_mayGoOn);
    ::kill(-process, SIGKILL); // and all that it has started, as long as we hold its number

    ProgramEnd end;
    int status = 0;
    Retry([&] { return ::waitpid(process, &status, 0); });
    const bool isKilled = WIFSIGNALED(status);
    end.how = isKilled ? ProgramEnd::EKilled : ProgramEnd::EExited;
    end.number = isKilled ? WTERMSIG(status) : WEXITSTATUS(status);
    if (!isInTime)
        end.how = a_mayGoOn() ? ProgramEnd::EOverdue : ProgramEnd::EGivenUp;
    end.answer = ReadWaiting(reader.Get());
    return end;
}

bool EndWithParent()
{
    const rlimit none{0, 0};
    return ::setrlimit(RLIMIT_CORE, &none) == 0 && ::fcntl(S_answerFd, F_SETFD, FD_CLOEXEC) == 0 &&
           ::prctl(PR_SET_PDEATHSIG, SIGKILL) == 0;
}

bool WriteAnswer(std::string_view a_bytes)
{
    return Retry([&] { return ::write(S_answerFd, a_bytes.data(), a_bytes.size()); }) ==
           static_cast<ssize_t>(a_bytes.size());
}

} // namespace kalvento::internal
