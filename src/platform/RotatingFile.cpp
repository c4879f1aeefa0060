#include "platform/RotatingFile.h"

#include "platform/SystemCall.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <utility>

namespace kalvento::internal {

namespace {

constexpr ::uid_t S_superuser = 0;

} // namespace

RotatingFile::RotatingFile(std::filesystem::path a_path, std::uint64_t a_mostBytes, std::size_t a_older)
    : m_path(std::move(a_path)), m_mostBytes(a_mostBytes), m_older(a_older)
{}

std::filesystem::path RotatingFile::NameOf(std::size_t a_age) const
{
    if (a_age == 0)
        return m_path;
    std::filesystem::path name = m_path;
    name.replace_extension('.' + std::to_string(a_age) + m_path.extension().string());
    return name;
}

std::error_code RotatingFile::Open()
{
    const auto denied = std::make_error_code(std::errc::permission_denied);
    struct stat name {};
    if (::lstat(m_path.c_str(), &name) == 0 && S_ISLNK(name.st_mode) && name.st_uid != ::geteuid() &&
        name.st_uid != S_superuser)
        return denied;
    UniqueFd file(Retry([&] {
        return ::open(m_path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0644);
    }));
    struct stat state {};
    if (!file.IsOpen() || ::fstat(file.Get(), &state) != 0)
        return ErrorUnless(false);
    if (S_ISREG(state.st_mode) && (state.st_uid != ::geteuid() || state.st_nlink > 1))
        return denied;
    m_file = std::move(file);
    return {};
}

// Another process may have renamed it.
bool RotatingFile::IsStillThere() const
{
    struct stat named {};
    struct stat open {};
    return m_file.IsOpen() && ::fstat(m_file.Get(), &open) == 0 && ::stat(m_path.c_str(), &named) == 0 &&
           named.st_dev == open.st_dev && named.st_ino == open.st_ino;
}

// Of several processes that find the file full one renames; the others wait for it and then find another file.
std::error_code RotatingFile::MakeWay()
{
    if (Retry([&] { return ::flock(m_file.Get(), LOCK_EX); }) != 0)
        return ErrorUnless(false);
    std::error_code error;
    if (IsStillThere()) {
        for (std::size_t age = m_older; age > 1; --age)
            std::filesystem::rename(NameOf(age - 1), NameOf(age), error);
        error.clear(); // not all of them need be there
        std::filesystem::rename(m_path, NameOf(1), error);
    }
    if (!error)
        return Open(); // which lets go of the old file and its lock
    ::flock(m_file.Get(), LOCK_UN);
    return {}; // rather too large a file than none
}

std::error_code RotatingFile::Write(std::string_view a_line)
{
    if (!IsStillThere())
        if (const std::error_code error = Open())
            return error;
    struct stat state {};
    if (::fstat(m_file.Get(), &state) != 0)
        return ErrorUnless(false);
    const auto size = static_cast<std::uint64_t>(state.st_size);
    if (S_ISREG(state.st_mode) && size > 0 && size + a_line.size() > m_mostBytes)
        if (const std::error_code error = MakeWay())
            return error;
    while (!a_line.empty()) {
        const auto written = Retry([&] { return ::write(m_file.Get(), a_line.data(), a_line.size()); });
        if (written < 0)
            return ErrorUnless(false);
        a_line.remove_prefix(static_cast<std::size_t>(written));
    }
    return {};
}

} // namespace kalvento::internal
