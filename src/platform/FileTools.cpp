#include "platform/FileTools.h"

#include "platform/FileReplacement.h"
#include "platform/InputFile.h"
#include "platform/SystemCall.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <ctime>

namespace FileTools {

namespace {

using kalvento::internal::FileReplacement;
using kalvento::internal::InputFile;

constexpr int S_mostNames = 100;

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
    InputFile file;
    InputFile::State state;
    a_error = file.Open(a_path, false);
    if (!a_error)
        a_error = file.GetState(state);
    if (!a_error && !state.isRegular)
        a_error = std::make_error_code(std::errc::not_supported);
    if (!a_error && state.size > a_mostBytes)
        a_error = std::make_error_code(std::errc::file_too_large);
    if (a_error)
        return std::nullopt;

    // The size is a hint only: the file may grow meanwhile, and some files of the kernel say 0.
    std::string bytes;
    const auto hint = static_cast<std::size_t>(state.size);
    std::size_t filled = 0;
    for (std::size_t count = 1; count > 0 && filled <= a_mostBytes; filled += count) {
        if (filled == bytes.size())
            bytes.resize(std::min(std::max({hint + 1, 2 * filled, std::size_t{4096}}), a_mostBytes + 1));
        a_error = file.Read(bytes.data() + filled, bytes.size() - filled, count);
        if (a_error)
            return std::nullopt;
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
    FileReplacement file;
    a_error = file.Open(a_path, FileReplacement::EPathOwn);
    if (!a_error)
        a_error = file.Write(a_bytes);
    if (!a_error)
        a_error = file.Flush();
    if (!a_error)
        a_error = file.TakePlace();
    return !a_error;
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
        a_error = kalvento::internal::ErrorUnless(false);
        if (a_error != std::errc::file_exists)
            return std::nullopt;
    }
    return std::nullopt;
}

} // namespace FileTools
