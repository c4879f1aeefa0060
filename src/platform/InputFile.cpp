#include "platform/InputFile.h"

#include "platform/Descriptors.h"
#include "platform/Interruption.h"
#include "platform/SystemCall.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>

namespace kalvento::internal {

namespace {

InputFile::State StateOf(const struct stat& a_info)
{
    const bool isRegular = S_ISREG(a_info.st_mode);
    return {isRegular, S_ISDIR(a_info.st_mode), isRegular ? static_cast<std::uint64_t>(a_info.st_size) : 0,
            a_info.st_dev, a_info.st_ino};
}

} // namespace

std::optional<InputFile::State> InputFile::LookAt(const std::filesystem::path& a_path)
{
    struct stat info {};
    return ::stat(a_path.c_str(), &info) == 0 ? std::optional(StateOf(info)) : std::nullopt;
}

std::error_code InputFile::Open(const std::filesystem::path& a_path, bool a_mayWait)
{
    const int flags = O_RDONLY | O_CLOEXEC | (a_mayWait ? 0 : O_NONBLOCK);
    int file = ::open(a_path.c_str(), flags);
    while (file < 0 && errno == EINTR && Interruption::GetSignal() == 0)
        file = ::open(a_path.c_str(), flags);
    m_file = UniqueFd(file);
    m_mayWait = a_mayWait;
    NoteKind();
    return ErrorUnless(m_file.IsOpen());
}

std::error_code InputFile::OpenStandardInput()
{
    m_file = UniqueFd(::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0));
    m_mayWait = true;
    NoteKind();
    return ErrorUnless(m_file.IsOpen());
}

std::error_code InputFile::GetState(State& a_state) const
{
    struct stat info {};
    if (::fstat(m_file.Get(), &info) != 0)
        return ErrorUnless(false);
    a_state = StateOf(info);
    return {};
}

void InputFile::ExpectAllToBeRead() const
{
    ::posix_fadvise(m_file.Get(), 0, 0, POSIX_FADV_SEQUENTIAL);
}

void InputFile::NoteKind()
{
    const int error = errno;
    struct stat info {};
    m_mayWait = m_mayWait && m_file.IsOpen() && ::fstat(m_file.Get(), &info) == 0 && !S_ISREG(info.st_mode);
    errno = error;
}

std::error_code InputFile::Read(char* a_bytes, std::size_t a_size, std::size_t& a_count) const
{
    a_count = 0;
    if (m_mayWait) {
        std::array<Descriptors::Awaited, 2> awaited = {{{m_file.Get()}, {Interruption::GetWaitFd()}}};
        Descriptors::WaitForAny(awaited, std::nullopt);
        if (awaited[1].isReady)
            return std::make_error_code(std::errc::interrupted);
    }
    const auto count = Retry([&] { return ::read(m_file.Get(), a_bytes, a_size); });
    a_count = count < 0 ? 0 : static_cast<std::size_t>(count);
    return ErrorUnless(count >= 0);
}

} // namespace kalvento::internal
