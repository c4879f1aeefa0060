#include "platform/ChildProcess.h"

#include "platform/Descriptors.h"
#include "platform/SystemCall.h"

#include <fcntl.h>
#include <linux/close_range.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <utility>

namespace kalvento::internal {

namespace {

constexpr char S_goOn = '+';

struct Pipe {
    UniqueFd reader;
    UniqueFd writer;
};

std::optional<Pipe> MakePipe()
{
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        return std::nullopt;
    return Pipe{UniqueFd(ends[0]), UniqueFd(ends[1])};
}

// By number: the C library's header of these calls declares no C linkage.
int OpenProcessFd(pid_t a_process)
{
    return static_cast<int>(::syscall(SYS_pidfd_open, a_process, 0));
}

bool SignalProcess(int a_processFd, int a_signal)
{
    return ::syscall(SYS_pidfd_send_signal, a_processFd, a_signal, nullptr, 0) == 0;
}

// Calls only what is allowed after a fork in a process of many threads. Either the whole value or nothing passes: a
// pipe does not split so few bytes.
template<class Value>
bool SendValue(int a_fd, const Value& a_value)
{
    return Retry([&] { return ::write(a_fd, &a_value, sizeof(a_value)); }) ==
           static_cast<ssize_t>(sizeof(a_value));
}

template<class Value>
bool ReceiveValue(int a_fd, Value& a_value)
{
    return Retry([&] { return ::read(a_fd, &a_value, sizeof(a_value)); }) ==
           static_cast<ssize_t>(sizeof(a_value));
}

[[noreturn]] void RunProgram(const std::string& a_program, char* const* a_arguments, int a_failure)
{
    // The program must not start deaf: ignored and blocked signals would pass over to it.
    for (const int number : {SIGPIPE, SIGXFSZ, SIGCHLD, SIGINT, SIGTERM, SIGHUP, SIGQUIT})
        ::signal(number, SIG_DFL);
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    ::close_range(3, ~0U, CLOSE_RANGE_CLOEXEC);
    ::execvp(a_program.c_str(), a_arguments);
    const int error = errno;
    SendValue(a_failure, error);
    ::_exit(127);
}

// Starts the program, tells its number, and lives until the caller has a hold on it: as long as we are its parent and
// don't wait for it, that number can't pass to another process.
[[noreturn]] void RunParent(const std::string& a_program, char* const* a_arguments, const Pipe& a_number,
                            const Pipe& a_failure, const Pipe& a_done)
{
    const pid_t program = ::fork();
    if (program == 0)
        RunProgram(a_program, a_arguments, a_failure.writer.Get());
    if (program < 0) {
        const int error = errno;
        SendValue(a_failure.writer.Get(), error);
    }
    SendValue(a_number.writer.Get(), program);
    ::close(a_done.writer.Get()); // or we would wait for ever for a caller that was killed
    char word = 0;
    ReceiveValue(a_done.reader.Get(), word);
    ::_exit(0);
}

} // namespace

ChildProcess::ChildProcess(UniqueFd a_process) : m_process(std::move(a_process)) {}

std::optional<ChildProcess> ChildProcess::Start(const std::string& a_program,
                                                const std::vector<std::string>& a_arguments)
{
    std::vector<std::string> texts;
    texts.reserve(a_arguments.size() + 1);
    texts.push_back(a_program);
    texts.insert(texts.end(), a_arguments.begin(), a_arguments.end());
    std::vector<char*> arguments;
    arguments.reserve(texts.size() + 1);
    for (std::string& text : texts)
        arguments.push_back(text.data());
    arguments.push_back(nullptr);

    auto number = MakePipe();
    auto failure = MakePipe();
    auto done = MakePipe();
    if (!number || !failure || !done)
        return std::nullopt;

    const pid_t parent = ::fork();
    if (parent < 0)
        return std::nullopt;
    if (parent == 0)
        RunParent(a_program, arguments.data(), *number, *failure, *done);

    number->writer.Close();
    failure->writer.Close();
    pid_t program = -1;
    const bool known = ReceiveValue(number->reader.Get(), program) && program > 0;
    UniqueFd process(known ? OpenProcessFd(program) : -1);
    const int openError = errno;
    // A word and not the end of the pipe: another thread's fork may hold a copy of our end meanwhile.
    SendValue(done->writer.Get(), S_goOn);
    int status = 0;
    Retry([&] { return ::waitpid(parent, &status, 0); });

    // The pipe ends without a word once the program runs: its end closes at the start.
    int error = 0;
    if (ReceiveValue(failure->reader.Get(), error)) {
        errno = error;
        return std::nullopt;
    }
    if (!process.IsOpen()) {
        errno = openError;
        return std::nullopt;
    }
    return ChildProcess(std::move(process));
}

bool ChildProcess::Wait(std::chrono::milliseconds a_patience) const
{
    Descriptors::Awaited process{m_process.Get()};
    return Descriptors::WaitForAny({&process, 1}, std::chrono::steady_clock::now() + a_patience);
}

bool ChildProcess::End(std::chrono::milliseconds a_patience) const
{
    if (!SignalProcess(m_process.Get(), SIGTERM))
        return false;
    return Wait(a_patience) || SignalProcess(m_process.Get(), SIGKILL);
}

} // namespace kalvento::internal
