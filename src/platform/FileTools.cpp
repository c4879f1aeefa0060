#include "platform/FileTools.h"

#include "platform/UniqueFd.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <ctime>

namespace FileTools {

namespace {

using kalvento::internal::UniqueFd;

constexpr mode_t S_rights = 07777;
constexpr int S_mostLinks = 40; // what the kernel follows before it calls it a loop
constexpr int S_mostNames = 100;

std::error_code LastError()
{
    return {errno, std::generic_category()};
}

template<class Call>
auto Retry(Call a_call)
{
    auto result = a_call();
    while (result < 0 && errno == EINTR)
        result = a_call();
    return result;
}

UniqueFd Open(const std::filesystem::path& a_path, int a_flags, mode_t a_mode = 0)
{
    return UniqueFd(Retry([&] { return ::open(a_path.c_str(), a_flags | O_CLOEXEC, a_mode); }));
}

// Where a chain of symbolic links ends; its last link may lead to a file that doesn't exist yet.
std::filesystem::path FollowLinks(std::filesystem::path a_path, std::error_code& a_error)
{
    for (int link = 0; link < S_mostLinks; ++link) {
        struct stat info {};
        if (::lstat(a_path.c_str(), &info) != 0 || !S_ISLNK(info.st_mode))
            return a_path;
        const std::filesystem::path target = std::filesystem::read_symlink(a_path, a_error);
        if (a_error)
            return {};
        a_path = a_path.parent_path() / target;
    }
    a_error = std::make_error_code(std::errc::too_many_symbolic_link_levels);
    return {};
}

// A file that dies unless it was renamed.
class TemporaryFile {
public:
    // Without a name as long as it is written, where the system can: then a kill leaves nothing behind.
    TemporaryFile(std::filesystem::path a_folder, bool a_named) : m_folder(std::move(a_folder))
    {
        if (!a_named)
            m_file = Open(m_folder, O_WRONLY | O_TMPFILE, 0666);
        else
            TakeName([this] {
                m_file = Open(m_path, O_WRONLY | O_CREAT | O_EXCL, 0666);
                return m_file.IsOpen();
            });
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile()
    {
        const int cause = errno; // why we die is what the caller reports
        m_file.Close();
        if (m_waiting)
            ::unlink(m_path.c_str());
        errno = cause;
    }

    bool IsOpen() const { return m_file.IsOpen(); }

    bool TakeRightsOf(const struct stat& a_old) const
    {
        struct stat mine {};
        if (::fstat(m_file.Get(), &mine) != 0)
            return false;
        mode_t rights = a_old.st_mode & S_rights;
        const bool sameOwner = mine.st_uid == a_old.st_uid && mine.st_gid == a_old.st_gid;
        // Only the superuser may give files away. A file that becomes ours must not carry its right to act as its owner.
        if (!sameOwner && ::fchown(m_file.Get(), a_old.st_uid, a_old.st_gid) != 0)
            rights &= ~static_cast<mode_t>(S_ISUID | S_ISGID);
        return ::fchmod(m_file.Get(), rights) == 0;
    }

    bool Write(std::string_view a_bytes) const
    {
        while (!a_bytes.empty()) {
            const auto written = Retry([&] { return ::write(m_file.Get(), a_bytes.data(), a_bytes.size()); });
            if (written < 0)
                return false;
            a_bytes.remove_prefix(static_cast<std::size_t>(written));
        }
        return true;
    }

    bool Flush() const
    {
        return Retry([&] { return ::fsync(m_file.Get()); }) == 0;
    }

    // A file has to have a name before it can take the place of another.
    bool GiveName()
    {
        const std::string unnamed = "/proc/self/fd/" + std::to_string(m_file.Get());
        return m_waiting || TakeName([&] {
                   return ::linkat(AT_FDCWD, unnamed.c_str(), AT_FDCWD, m_path.c_str(), AT_SYMLINK_FOLLOW) ==
                          0;
               });
    }

    bool Rename(const std::filesystem::path& a_target)
    {
        if (::rename(m_path.c_str(), a_target.c_str()) != 0)
            return false;
        m_waiting = false;
        return true;
    }

private:
    template<class Attempt>
    bool TakeName(const Attempt& a_attempt)
    {
        static std::atomic<std::uint64_t> S_number = 0;
        for (int attempt = 0; attempt < S_mostNames && !m_waiting; ++attempt) {
            m_path = m_folder /
                     (".kalvento-" + std::to_string(::getpid()) + "-" + std::to_string(++S_number) + ".tmp");
            m_waiting = a_attempt();
            // A name may be taken by what a killed process with our number left.
            if (!m_waiting && errno != EEXIST)
                return false;
        }
        return m_waiting;
    }

    const std::filesystem::path m_folder;
    std::filesystem::path m_path;
    UniqueFd m_file;
    bool m_waiting = false; // there is a file of that name, and it is ours
};

bool FlushFolder(const std::filesystem::path& a_folder)
{
    const UniqueFd folder = Open(a_folder, O_RDONLY | O_DIRECTORY);
    if (!folder.IsOpen())
        return false;
    // Some network file systems can't flush a folder and say so; there the rename is durable by itself or not at all.
    return Retry([&] { return ::fsync(folder.Get()); }) == 0 || errno == EINVAL || errno == EROFS;
}

bool Replace(const std::filesystem::path& a_target, std::string_view a_bytes)
{
    struct stat old {};
    const bool exists = ::stat(a_target.c_str(), &old) == 0;
    if (exists && !S_ISREG(old.st_mode)) {
        errno = ENOTSUP;
        return false;
    }
    const std::filesystem::path folder = a_target.has_parent_path() ? a_target.parent_path() : ".";
    for (const bool named : {false, true}) {
        TemporaryFile file(folder, named);
        // Not every file system has files without a name, nor every process the folder that names them later.
        if (!named && !file.IsOpen())
            continue;
        if (!file.IsOpen() || (exists && !file.TakeRightsOf(old)) || !file.Write(a_bytes) || !file.Flush())
            return false;
        if (!file.GiveName() && !named)
            continue;
        return file.Rename(a_target) && FlushFolder(folder);
    }
    return false;
}

// Never over a file that is there already.
bool RenameOnly(const std::filesystem::path& a_from, const std::filesystem::path& a_to)
{
    if (::renameat2(AT_FDCWD, a_from.c_str(), AT_FDCWD, a_to.c_str(), RENAME_NOREPLACE) == 0)
        return true;
    // Some network file systems don't know the flag.
    if (errno != EINVAL && errno != ENOSYS)
        return false;
    struct stat taken {};
    if (::lstat(a_to.c_str(), &taken) == 0) {
        errno = EEXIST;
        return false;
    }
    return errno == ENOENT && ::rename(a_from.c_str(), a_to.c_str()) == 0;
}

} // namespace

std::optional<std::string> ReadFile(const std::filesystem::path& a_path, std::size_t a_mostBytes,
                                    std::error_code& a_error)
{
    a_error.clear();
    const UniqueFd file = Open(a_path, O_RDONLY | O_NONBLOCK);
    struct stat info {};
    if (!file.IsOpen() || ::fstat(file.Get(), &info) != 0) {
        a_error = LastError();
        return std::nullopt;
    }
    if (!S_ISREG(info.st_mode)) {
        a_error = std::make_error_code(std::errc::not_supported);
        return std::nullopt;
    }

    if (info.st_size > 0 && static_cast<std::size_t>(info.st_size) > a_mostBytes) {
        a_error = std::make_error_code(std::errc::file_too_large);
        return std::nullopt;
    }

    // The size is a hint only: the file may grow meanwhile, and some files of the kernel say 0.
    std::string bytes;
    const auto hint = static_cast<std::size_t>(std::max<off_t>(info.st_size, 0));
    std::size_t filled = 0;
    while (true) {
        if (filled == bytes.size()) {
            if (filled > a_mostBytes)
                break;
            bytes.resize(std::min(std::max({hint + 1, 2 * filled, std::size_t{4096}}), a_mostBytes + 1));
        }
        const auto got =
            Retry([&] { return ::read(file.Get(), bytes.data() + filled, bytes.size() - filled); });
        if (got < 0) {
            a_error = LastError();
            return std::nullopt;
        }
        if (got == 0)
            break;
        filled += static_cast<std::size_t>(got);
    }
    if (filled > a_mostBytes) {
        a_error = std::make_error_code(std::errc::file_too_large);
        return std::nullopt;
    }
    bytes.resize(filled);
    return bytes;
}

bool ReplaceFile(const std::filesystem::path& a_path, std::string_view a_bytes, std::error_code& a_error)
{
    a_error.clear();
    const std::filesystem::path target = FollowLinks(a_path, a_error);
    if (a_error)
        return false;
    if (!Replace(target, a_bytes)) {
        a_error = LastError();
        return false;
    }
    return true;
}

std::optional<std::filesystem::path> KeepAside(const std::filesystem::path& a_path,
                                               std::chrono::system_clock::time_point a_when,
                                               std::error_code& a_error)
{
    a_error.clear();
    const std::time_t seconds = std::chrono::system_clock::to_time_t(a_when);
    std::tm local{};
    char stamp[32];
    if (::localtime_r(&seconds, &local) == nullptr ||
        std::strftime(stamp, sizeof(stamp), ".damaged-%Y%m%d-%H%M%S", &local) == 0) {
        a_error = std::make_error_code(std::errc::value_too_large);
        return std::nullopt;
    }
    for (int attempt = 1; attempt <= S_mostNames; ++attempt) {
        std::filesystem::path aside = a_path;
        aside += stamp;
        if (attempt > 1)
            aside += "-" + std::to_string(attempt);
        if (RenameOnly(a_path, aside)) {
            a_error.clear();
            return aside;
        }
        a_error = LastError();
        if (a_error != std::errc::file_exists)
            return std::nullopt;
    }
    return std::nullopt;
}

} // namespace FileTools
