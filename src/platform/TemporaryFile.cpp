#include "platform/TemporaryFile.h"

#include "platform/SystemCall.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>

namespace kalvento::internal {

namespace {

[[noreturn]] void Fail(int a_error, const char* a_action)
{
    throw std::system_error(a_error, std::generic_category(),
                            std::string("a temporary file (in TMPDIR, /var/tmp or /tmp) can't be ") +
                                a_action);
}

UniqueFd OpenIn(const std::string& a_folder)
{
    UniqueFd file(Retry([&] { return ::open(a_folder.c_str(), O_RDWR | O_TMPFILE | O_CLOEXEC, 0600); }));
    if (file.IsOpen())
        return file;
    // Not every file system has files without a name.
    std::string name = a_folder + "/kalvento-XXXXXX";
    file = UniqueFd(::mkostemp(name.data(), O_CLOEXEC));
    if (file.IsOpen())
        ::unlink(name.c_str());
    return file;
}

} // namespace

TemporaryFile::TemporaryFile()
{
    if (const char* const wanted = std::getenv("TMPDIR"); wanted != nullptr && *wanted != '\0')
        m_file = OpenIn(wanted);
    for (const char* folder : {"/var/tmp", "/tmp"})
        if (!m_file.IsOpen())
            m_file = OpenIn(folder);
    if (!m_file.IsOpen())
        Fail(errno, "made");
}

void TemporaryFile::Append(const void* a_bytes, std::size_t a_size)
{
    const char* bytes = static_cast<const char*>(a_bytes);
    for (std::size_t left = a_size; left > 0;) {
        const auto written = Retry([&] { return ::write(m_file.Get(), bytes, left); });
        if (written < 0)
            Fail(errno, "written");
        bytes += written;
        left -= static_cast<std::size_t>(written);
        m_size += static_cast<std::uint64_t>(written);
    }
}

void TemporaryFile::ReadAt(std::uint64_t a_place, void* a_bytes, std::size_t a_size) const
{
    char* bytes = static_cast<char*>(a_bytes);
    for (std::size_t done = 0; done < a_size;) {
        const auto place = static_cast<off_t>(a_place + done);
        const auto count = Retry([&] { return ::pread(m_file.Get(), bytes + done, a_size - done, place); });
        if (count <= 0)
            Fail(count < 0 ? errno : EIO, "read");
        done += static_cast<std::size_t>(count);
    }
}

} // namespace kalvento::internal
