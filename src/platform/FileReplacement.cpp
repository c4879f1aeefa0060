#include "platform/FileReplacement.h"

#include "platform/SystemCall.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <mutex>
#include <set>
#include <string>

namespace kalvento::internal {

namespace {

constexpr mode_t S_rights = 07777;
constexpr int S_mostLinks = 40; // what the kernel follows before it calls it a loop
constexpr int S_mostNames = 100;

UniqueFd Open(const std::filesystem::path& a_path, int a_flags)
{
    return UniqueFd(Retry([&] { return ::open(a_path.c_str(), a_flags | O_CLOEXEC, 0666); }));
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

std::filesystem::path FolderOf(const std::filesystem::path& a_path)
{
    return a_path.has_parent_path() ? a_path.parent_path() : ".";
}

constexpr std::string_view S_nameStart = ".kalvento-";
constexpr std::string_view S_nameEnd = ".tmp";

// Whoever waits with a file holds a lock on it, which the system takes away with the process, on whatever machine.
bool Lock(const UniqueFd& a_file)
{
    return Retry([&] { return ::flock(a_file.Get(), LOCK_EX | LOCK_NB); }) == 0;
}

// Removes what killed processes of this user left in the folder; once for each folder, since only others leave something.
void RemoveLeftovers(const std::filesystem::path& a_folder)
{
    static auto& S_mutex = *new std::mutex; // never destroyed: static objects may save while they die
    static auto& S_done = *new std::set<std::filesystem::path>;
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::absolute(a_folder, error);
    {
        const std::lock_guard lock(S_mutex);
        if (error || !S_done.insert(folder).second)
            return;
    }
    for (std::filesystem::directory_iterator entry(a_folder, error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        if (!name.starts_with(S_nameStart) || !name.ends_with(S_nameEnd))
            continue;
        const UniqueFd file = internal::Open(entry->path(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
        struct stat info {};
        if (file.IsOpen() && ::fstat(file.Get(), &info) == 0 && S_ISREG(info.st_mode) &&
            info.st_uid == ::geteuid() && Lock(file))
            ::unlink(entry->path().c_str());
    }
}

// The system's own name for a file that has none.
std::string NameOf(const UniqueFd& a_file)
{
    return "/proc/self/fd/" + std::to_string(a_file.Get());
}

} // namespace

FileReplacement::~FileReplacement()
{
    if (!m_path.empty())
        ::unlink(m_path.c_str());
}

std::error_code FileReplacement::Open(const std::filesystem::path& a_path, EPath a_whose)
{
    struct stat old {};
    // The system follows links that no name spells out, such as /dev/stdout to a pipe.
    if (a_whose == EPathTyped && ::stat(a_path.c_str(), &old) == 0 && !S_ISREG(old.st_mode)) {
        m_file = internal::Open(a_path, O_WRONLY);
        return ErrorUnless(m_file.IsOpen());
    }
    std::error_code error;
    m_target = a_whose == EPathTyped ? FollowLinks(a_path, error) : a_path;
    if (error)
        return error;
    const bool exists = ::lstat(m_target.c_str(), &old) == 0;
    if (!exists && errno != ENOENT)
        return ErrorUnless(false);
    if (exists && !S_ISREG(old.st_mode) && !S_ISLNK(old.st_mode))
        return std::make_error_code(std::errc::not_supported);

    RemoveLeftovers(FolderOf(m_target));
    m_file = internal::Open(FolderOf(m_target), O_WRONLY | O_TMPFILE);
    if (m_file.IsOpen())
        Lock(m_file); // where locks aren't to be had, nobody else gets one either
    // Not every file system has files without a name, and not every process has the folder that names them later.
    if (!m_file.IsOpen() || ::access(NameOf(m_file).c_str(), F_OK) != 0)
        TakeName([this](const std::filesystem::path& a_name) {
            m_file = internal::Open(a_name, O_WRONLY | O_CREAT | O_EXCL);
            struct stat info {};
            // Another process may have taken it for a leftover before it was locked.
            if (m_file.IsOpen() && Lock(m_file) && ::fstat(m_file.Get(), &info) == 0 && info.st_nlink == 0)
                errno = EEXIST;
            else if (m_file.IsOpen())
                return true;
            return false;
        });
    return ErrorUnless(m_file.IsOpen() && (!exists || !S_ISREG(old.st_mode) || TakeRightsOf(old)));
}

bool FileReplacement::TakeRightsOf(const struct stat& a_old) const
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

template<class Attempt>
bool FileReplacement::TakeName(const Attempt& a_attempt)
{
    static std::atomic<unsigned int> S_number = 0;
    for (int attempt = 0; attempt < S_mostNames; ++attempt) {
        std::filesystem::path name =
            FolderOf(m_target) / (std::string(S_nameStart) + std::to_string(::getpid()) + "-" +
                                  std::to_string(++S_number) + std::string(S_nameEnd));
        if (a_attempt(name)) {
            m_path = std::move(name);
            return true;
        }
        // A name may still be taken by what a killed process of our number left.
        if (errno != EEXIST)
            return false;
    }
    return false;
}

std::error_code FileReplacement::Write(std::string_view a_bytes)
{
    while (!a_bytes.empty()) {
        const auto written = Retry([&] { return ::write(m_file.Get(), a_bytes.data(), a_bytes.size()); });
        if (written < 0)
            return ErrorUnless(false);
        a_bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return {};
}

std::error_code FileReplacement::Flush()
{
    return ErrorUnless(m_target.empty() || Retry([this] { return ::fsync(m_file.Get()); }) == 0);
}

std::error_code FileReplacement::TakePlace()
{
    if (m_target.empty())
        return {};
    // A file has to have a name before it can take the place of another.
    const bool isNamed = !m_path.empty() || TakeName([this](const std::filesystem::path& a_name) {
        return ::linkat(AT_FDCWD, NameOf(m_file).c_str(), AT_FDCWD, a_name.c_str(), AT_SYMLINK_FOLLOW) == 0;
    });
    if (!isNamed || ::rename(m_path.c_str(), m_target.c_str()) != 0)
        return ErrorUnless(false);
    m_path.clear();
    const UniqueFd folder = internal::Open(FolderOf(m_target), O_RDONLY | O_DIRECTORY);
    // Some network file systems can't flush a folder and say so; there the rename is durable by itself or not at all.
    return ErrorUnless(folder.IsOpen() && (Retry([&] { return ::fsync(folder.Get()); }) == 0 ||
                                           errno == EINVAL || errno == EROFS));
}

} // namespace kalvento::internal
