#include "platform/FileStamp.h"

#include <sys/stat.h>

namespace kalvento::internal {

namespace {

std::string TextOf(const timespec& a_time)
{
    return std::to_string(a_time.tv_sec) + '.' + std::to_string(a_time.tv_nsec);
}

} // namespace

std::optional<std::string> FileStamp(const std::filesystem::path& a_path)
{
    struct stat state {};
    if (::stat(a_path.c_str(), &state) != 0 || !S_ISREG(state.st_mode))
        return std::nullopt;
    // The time of the last change of the file's entry can't be set back, unlike that of its bytes.
    return std::to_string(state.st_ino) + ' ' + std::to_string(state.st_size) + ' ' + TextOf(state.st_mtim) +
           ' ' + TextOf(state.st_ctim);
}

} // namespace kalvento::internal
