#include "kalvento/OutputTarget.h"

#include "platform/OutputBuffer.h"

#include <ostream>

namespace kalvento::tool {

namespace {

void Check(const std::error_code& a_error, const std::string& a_path, const char* a_action)
{
    if (a_error)
        throw ToolError(EExitFailure, a_path + ": can't be " + a_action + ": " + a_error.message());
}

} // namespace

void CheckStandardOutput(const ToolContext& a_context)
{
    if (a_context.out)
        return;
    const std::error_code error = internal::OutputBuffer::ErrorOf(a_context.out);
    if (!error || error == std::errc::broken_pipe)
        throw OutputClosed();
    Check(error, "standard output", "written");
}

OutputTarget::OutputTarget(const std::string& a_path, ToolContext& a_context) : m_context(a_context)
{
    if (a_path.empty() || a_path == "-")
        return;
    m_path = a_path;
    Check(m_file.Open(m_path, internal::FileReplacement::EPathTyped), m_path, "written");
}

void OutputTarget::Write(std::string_view a_bytes)
{
    if (m_path.empty()) {
        m_context.out.write(a_bytes.data(), static_cast<std::streamsize>(a_bytes.size()));
        CheckStandardOutput(m_context);
        return;
    }
    Check(m_file.Write(a_bytes), m_path, "written");
}

void OutputTarget::Commit()
{
    if (m_path.empty()) {
        m_context.out.flush();
        CheckStandardOutput(m_context);
        return;
    }
    Check(m_file.Flush(), m_path, "written");
    Check(m_file.TakePlace(), m_path, "put in place");
}

} // namespace kalvento::tool
