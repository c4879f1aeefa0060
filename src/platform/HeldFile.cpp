#include "platform/HeldFile.h"

#include "platform/SystemCall.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <utility>

namespace kalvento::internal {

namespace {

constexpr int S_mostNames = 100;

UniqueFd OpenOurs(const std::filesystem::path& a_path, int a_flags)
{
    return UniqueFd(Retry([&] {
        return ::open(a_path.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | a_flags, 0600);
    }));
}

} // namespace

HeldFile::HeldFile(std::filesystem::path a_path, UniqueFd a_file)
    : m_path(std::move(a_path)), m_file(std::move(a_file))
{}

// Between the opening and the lock another process may have taken the file for a dead one's, and removed it.
bool HeldFile::Hold() const
{
    struct stat held {};
    struct stat named {};
    return ::flock(m_file.Get(), LOCK_EX | LOCK_NB) == 0 && ::fstat(m_file.Get(), &held) == 0 &&
           S_ISREG(held.st_mode) && held.st_uid == ::geteuid() && ::lstat(m_path.c_str(), &named) == 0 &&
           named.st_dev == held.st_dev && named.st_ino == held.st_ino;
}

std::optional<HeldFile> HeldFile::Make(const std::filesystem::path& a_folder, std::string_view a_extension)
{
    static std::atomic<unsigned int> S_number = 0;
    for (int attempt = 0; attempt < S_mostNames; ++attempt) {
        std::string name = std::to_string(::getpid()) + '-' + std::to_string(++S_number);
        std::filesystem::path path = a_folder / name.append(a_extension);
        UniqueFd opened = OpenOurs(path, O_CREAT | O_EXCL);
        if (!opened.IsOpen() && errno != EEXIST)
            return std::nullopt;
        HeldFile file(std::move(path), std::move(opened));
        if (file.m_file.IsOpen() && file.Hold())
            return file;
    }
    return std::nullopt;
}

std::optional<HeldFile> HeldFile::Take(const std::filesystem::path& a_path)
{
    HeldFile file(a_path, OpenOurs(a_path, 0));
    if (!file.m_file.IsOpen() || !file.Hold())
        return std::nullopt;
    return file;
}

std::string HeldFile::Read() const
{
    std::string bytes(S_mostBytes + 1, '\0');
    const auto count = Retry([&] { return ::pread(m_file.Get(), bytes.data(), bytes.size(), 0); });
    bytes.resize(count < 0 || count > static_cast<ssize_t>(S_mostBytes) ? 0
                                                                        : static_cast<std::size_t>(count));
    return bytes;
}

bool HeldFile::Write(std::string_view a_bytes) const
{
    return Retry([&] { return ::ftruncate(m_file.Get(), 0); }) == 0 &&
           Retry([&] { return ::pwrite(m_file.Get(), a_bytes.data(), a_bytes.size(), 0); }) ==
               static_cast<ssize_t>(a_bytes.size());
}

void HeldFile::Remove()
{
    ::unlink(m_path.c_str());
    m_file.Close();
}

} // namespace kalvento::internal
