#include "text_rows/OutputTarget.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <ostream>
#include <sys/stat.h>
#include <unistd.h>

namespace kalvento::tool {

namespace {

[[noreturn]] void Fail(const std::string& a_path, const char* a_action)
{
    throw ToolError(EExitFailure, a_path + ": can't be " + a_action + ": " + std::strerror(errno));
}

// Devices and pipes can't be replaced by a file of their name: they are written as they are.
bool IsSpecial(const std::string& a_path)
{
    struct stat status {};
    return stat(a_path.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
}

} // namespace

OutputTarget::OutputTarget(const std::string& a_path, ToolContext& a_context) : m_context(a_context)
{
    if (a_path.empty() || a_path == "-")
        return;
    m_path = a_path;
    if (IsSpecial(m_path)) {
        m_file = open(m_path.c_str(), O_WRONLY | O_CLOEXEC);
        if (m_file < 0)
            Fail(m_path, "written");
        return;
    }
    m_beside = m_path + ".part-" + std::to_string(getpid());
    m_file = open(m_beside.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (m_file < 0)
        Fail(m_path, "written");
}

OutputTarget::~OutputTarget()
{
    if (m_file >= 0)
        close(m_file);
    if (!m_beside.empty())
        unlink(m_beside.c_str());
}

void OutputTarget::Write(std::string_view a_bytes)
{
    if (m_path.empty()) {
        m_context.out.write(a_bytes.data(), static_cast<std::streamsize>(a_bytes.size()));
        if (!m_context.out)
            throw OutputClosed();
        return;
    }
    while (!a_bytes.empty()) {
        const ssize_t count = write(m_file, a_bytes.data(), a_bytes.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            Fail(m_path, "written");
        a_bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

void OutputTarget::Commit()
{
    if (m_path.empty()) {
        m_context.out.flush();
        if (!m_context.out)
            throw OutputClosed();
        return;
    }
    if (m_beside.empty())
        return;
    if (fsync(m_file) != 0 || close(m_file) != 0) {
        m_file = -1;
        Fail(m_path, "written");
    }
    m_file = -1;
    if (rename(m_beside.c_str(), m_path.c_str()) != 0)
        Fail(m_path, "put in place");
    m_beside.clear();
}

} // namespace kalvento::tool
