#include "platform/FileWatch.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <array>

namespace kalvento::internal {

FileWatch::FileWatch(const std::filesystem::path& a_path)
    : m_notices(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
{
    if (!m_notices.IsOpen())
        return;
    ::inotify_add_watch(m_notices.Get(), a_path.c_str(),
                        IN_MODIFY | IN_ATTRIB | IN_MOVE_SELF | IN_DELETE_SELF);
    // A new file of the same name is news of the folder.
    const auto folder = a_path.has_parent_path() ? a_path.parent_path() : ".";
    ::inotify_add_watch(m_notices.Get(), folder.c_str(), IN_CREATE | IN_MOVED_TO);
}

void FileWatch::Drain() const
{
    std::array<char, 4096> notices;
    while (m_notices.IsOpen() && ::read(m_notices.Get(), notices.data(), notices.size()) > 0)
        continue;
}

} // namespace kalvento::internal
